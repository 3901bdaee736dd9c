// The decoding: the set of non-conflicting candidate genes of highest total score.
//
// Method. Every candidate gene g (an ORF from a start codon, or an open end, to its stop or the
// record end) gets a score S(g), the log-odds of "g is a gene with this start" against "these
// bases are non-coding", in nats:
//   S = C + T + R + log(1 - exp(-L / CDEC)) - log(NDEC)
// C, the coding term: the sum over the gene's bases, between the start codon and the stop codon,
//   of log P_cod(base | the ORDM bases before it, its codon position) - log P_non(base | the same),
//   with the COD1 and COD2 chains mixed as CD1P e^C1 + CD2P e^C2 (the share of atypical genes).
// T, the start term: log P(codon | start) from ATG_..CTG_ (renormalised to sum 1) against the
//   codon's probability in non-coding DNA; 0 for an open start.
// R, the RBS term (models with RBSM/RBSD): log(1 - h + h * sum over spacers s of P(s) * LR(site
//   ending s bases before the start)), LR the position matrix against the background letters and
//   h the share of genes assumed to have a site (0.5).
// The length term makes genes shorter than about CDEC bases rarer; log(NDEC) is the price of a
//   gene start, since a gene may begin after any of the NDEC bases of the mean non-coding
//   stretch. Genes shorter than MINC or longer than MAXC are not candidates.
// The rival frames: the same bases read in the other two frames of the strand and the three of
//   the other strand give coding sums C_r; the gene's score is S - log(1 + sum_r e^C_r), the odds
//   against "non-coding or a gene in another frame". A shadow (an ORF inside a gene on the other
//   strand, which often reads as coding against non-coding) loses about the gene's own sum; a
//   gene whose rival frames read as non-coding loses almost nothing.
// The atypical class: when the file repeats COD1 as COD2, the CD2P share of genes that the
//   typical chain does not describe gets its own score, log CD2P + T + R - log(NDEC) +
//   (C_own - max_r C_r) / 4, and a candidate keeps the better of the two.
// The start prior ranks the starts of one ORF (Candidates.cpp): each base downstream of the
//   ORF's first start costs three quarters of the model's mean non-coding log-odds per base.
// The decoder keeps the candidates with S > 0 of both strands, sorts them by right end and picks
// the set of highest total by weighted interval scheduling (Schedule.cpp): neighbours may share
// up to 60 bases, each base beyond four costing 0.05 nats, and two starts of one ORF (which share
// the stop) never both appear. The confidence is
// the logistic of the best total against the best total of a set that holds another start of
// the gene's stop instead, or no gene there: a second pass from the right gives, for each
// candidate, the best set that holds it.

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "predict/Predict.h"
#include "predict/Schedule.h"

namespace genetrain {

namespace {

// The stretches of the record between runs of at least maxNRun unknown letters.
std::vector<std::pair<std::int64_t, std::int64_t>> Pieces(std::span<const std::uint8_t> codes,
                                                          std::int64_t maxNRun) {
  std::vector<std::pair<std::int64_t, std::int64_t>> pieces;
  const auto n = static_cast<std::int64_t>(codes.size());
  std::int64_t begin = 0, i = 0;
  while (i < n) {
    if (IsBase(codes[static_cast<std::size_t>(i)])) {
      ++i;
      continue;
    }
    std::int64_t j = i;
    while (j < n && !IsBase(codes[static_cast<std::size_t>(j)])) ++j;
    if (j - i >= std::max<std::int64_t>(1, maxNRun)) {
      if (i > begin) pieces.emplace_back(begin, i);
      begin = j;
    }
    i = j;
  }
  if (n > begin) pieces.emplace_back(begin, n);
  return pieces;
}

// log(1 + sum of e^x over the rivals) without overflow.
double LogOnePlusSumExp(std::span<const double> rivals) {
  double top = 0;
  for (const double x : rivals) top = std::max(top, x);
  double sum = std::exp(-top);
  for (const double x : rivals) sum += std::exp(x - top);
  return top + std::log(sum);
}

// The coding sums of a candidate's bases in its own frame and in the five rival frames: the
// other two of its strand and the three of the other strand.
struct FrameContest {
  double own = 0;
  std::array<double, 5> rivals{};
};

FrameContest Contest(const Candidate& c, const FrameSums& own, const FrameSums& other,
                     std::int64_t n) {
  const std::int64_t lo = c.begin + (c.openBegin ? 0 : 3);
  const std::int64_t hi = c.end - (c.openEnd ? 0 : 3);
  const auto frame = static_cast<int>(c.begin % 3);
  FrameContest contest;
  std::size_t k = 0;
  for (int f = 0; f < 3; ++f) {
    if (f == frame) {
      contest.own = own.Sum(f, lo, hi);
    } else {
      contest.rivals[k++] = own.Sum(f, lo, hi);
    }
    contest.rivals[k++] = other.Sum(f, n - hi, n - lo);
  }
  return contest;
}

// Read against the typical chain, an atypical gene (of other codon usage, often of other GC, as
// in islands of transferred genes) scores below non-coding in every frame, but its own frame
// still beats the others: codon periodicity survives a change of composition. With no separate
// COD2 chain, the atypical class (share CD2P) is scored by that contrast, tempered to a quarter:
// the best of five rival frames is an order statistic, and full weight would let non-coding
// stretches through whenever one frame leads by chance. The contrast compares frames of the same
// bases, so it does not depend on the GC content.
constexpr double kAtypicalContrastWeight = 0.25;

double GeneScore(const GeneModel& model, const Candidate& c, const FrameContest& contest) {
  // The odds against "non-coding or a gene in another frame".
  double score = c.score - LogOnePlusSumExp(contest.rivals);
  if (!model.separateCod2 && model.cod2Share > 0) {
    const double bestRival = *std::max_element(contest.rivals.begin(), contest.rivals.end());
    const double atypical = std::log(model.cod2Share) + c.startScore + c.rbsScore -
                            std::log(model.nonCodingDecay) +
                            kAtypicalContrastWeight * (contest.own - bestRival);
    score = std::max(score, atypical);
  }
  return score;
}

// The candidates of one strand of a piece of `n` bases that score above non-coding, as genes in
// the record's coordinates.
void AddStrand(const GeneModel& model, const std::vector<Candidate>& candidates, std::int64_t n,
               std::int64_t offset, Strand strand, const FrameSums& own, const FrameSums& other,
               std::vector<PredictedGene>& genes) {
  for (const Candidate& c : candidates) {
    PredictedGene gene;
    gene.score = GeneScore(model, c, Contest(c, own, other, n));
    if (gene.score <= 0) continue;
    gene.strand = strand;
    if (strand == Strand::kDirect) {
      gene.left = offset + c.begin;
      gene.right = offset + c.end - 1;
      gene.openLeft = c.openBegin;
      gene.openRight = c.openEnd;
    } else {
      gene.left = offset + n - c.end;
      gene.right = offset + n - 1 - c.begin;
      gene.openLeft = c.openEnd;
      gene.openRight = c.openBegin;
    }
    gene.startCodon = c.startCodon;
    gene.codingScore = c.codingScore;
    gene.startScore = c.startScore;
    gene.rbsScore = c.rbsScore;
    gene.rbsSpacer = c.rbsSpacer;
    genes.push_back(gene);
  }
}

// The stop end and strand of a gene, which identify its ORF.
std::int64_t Key(const PredictedGene& gene) {
  return gene.strand == Strand::kDirect ? 2 * gene.right : 2 * gene.left + 1;
}

// The confidence of a chosen gene: the best gene set, which holds it, against the best set that
// holds another start of its ORF instead, or none (the same set without the gene), as a
// probability. A longer start that scores more on its own but pushes out a neighbour is weighed
// with the neighbour it costs.
void SetConfidences(const std::vector<PredictedGene>& candidates, const Schedule& schedule,
                    std::vector<PredictedGene>& genes) {
  std::unordered_map<std::int64_t, std::size_t> byStop;
  std::vector<double> rival(genes.size());
  for (std::size_t g = 0; g < genes.size(); ++g) {
    byStop[Key(genes[g])] = g;
    rival[g] = schedule.total - genes[g].score;
  }
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const auto found = byStop.find(Key(candidates[i]));
    if (found == byStop.end() || schedule.chosen[found->second] == i) continue;
    rival[found->second] = std::max(rival[found->second], schedule.throughBest[i]);
  }
  for (std::size_t g = 0; g < genes.size(); ++g) {
    genes[g].confidence = 100.0 / (1.0 + std::exp(rival[g] - schedule.total));
  }
}

std::string SiteBases(std::span<const std::uint8_t> codes, const PredictedGene& gene,
                      std::size_t width) {
  std::string site;
  const auto spacer = static_cast<std::int64_t>(gene.rbsSpacer);
  const auto w = static_cast<std::int64_t>(width);
  for (std::int64_t k = w - 1; k >= 0; --k) {
    // k bases before the site's last one, read on the gene's strand.
    const std::int64_t pos =
        gene.strand == Strand::kDirect ? gene.left - 1 - spacer - k : gene.right + 1 + spacer + k;
    if (pos < 0 || pos >= static_cast<std::int64_t>(codes.size())) return {};
    const std::uint8_t code = codes[static_cast<std::size_t>(pos)];
    site += BaseLetter(gene.strand == Strand::kDirect ? code : Complement(code));
  }
  return site;
}

}  // namespace

std::vector<PredictedGene> PredictGenes(const GeneModel& model, std::span<const std::uint8_t> codes,
                                        const PredictSettings& settings) {
  std::vector<PredictedGene> candidates;
  std::vector<std::uint8_t> reverse;
  for (const auto& [begin, end] : Pieces(codes, settings.maxNRun)) {
    const auto piece =
        codes.subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
    const auto n = static_cast<std::int64_t>(piece.size());
    // Each strand's words serve its frame sums and its scan, and go before the other strand's
    // are made: memory holds the frame sums of both strands and the words of one.
    std::vector<std::uint32_t> words = EndingWords(piece, model.order);
    const FrameSums direct(model, words);
    const std::vector<Candidate> directCandidates = ScanStrand(model, piece, words, settings);
    reverse.assign(piece.begin(), piece.end());
    ReverseComplement(reverse);
    words = EndingWords(reverse, model.order);
    const FrameSums opposite(model, words);
    const std::vector<Candidate> reverseCandidates = ScanStrand(model, reverse, words, settings);
    std::vector<std::uint32_t>().swap(words);
    AddStrand(model, directCandidates, n, begin, Strand::kDirect, direct, opposite, candidates);
    AddStrand(model, reverseCandidates, n, begin, Strand::kReverse, opposite, direct, candidates);
  }
  std::sort(candidates.begin(), candidates.end(),
            [](const PredictedGene& a, const PredictedGene& b) {
              return a.right != b.right ? a.right < b.right : a.left < b.left;
            });
  const Schedule schedule = BestGeneSet(candidates, settings.overlap);
  std::vector<PredictedGene> genes;
  for (const std::size_t i : schedule.chosen) genes.push_back(candidates[i]);
  SetConfidences(candidates, schedule, genes);
  for (std::size_t g = 0; g < genes.size(); ++g) {
    if (genes[g].rbsSpacer >= 0) {
      genes[g].rbsMotif = SiteBases(codes, genes[g], model.rbsMatrix.size());
    }
  }
  return genes;
}

}  // namespace genetrain
