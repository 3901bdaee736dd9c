// Candidate genes of one strand: every ORF from an allowed start codon to its stop, and the genes
// that run off either end, each scored against the non-coding chain.

#include <algorithm>
#include <cmath>

#include "predict/Predict.h"

namespace genetrain {

std::vector<std::uint32_t> EndingWords(std::span<const std::uint8_t> seq, int order) {
  std::vector<std::uint32_t> words(seq.size(), kNoWord);
  const std::uint32_t mask = (std::uint32_t{1} << (2 * (order + 1))) - 1;
  std::uint32_t index = 0;
  int known = 0;
  for (std::size_t i = 0; i < seq.size(); ++i) {
    if (IsBase(seq[i])) {
      index = ((index << 2) | seq[i]) & mask;
      ++known;
    } else {
      known = 0;
    }
    if (known > order) words[i] = index;
  }
  return words;
}

namespace {

unsigned CodonAt(std::span<const std::uint8_t> seq, std::size_t i) {
  if (!IsBase(seq[i]) || !IsBase(seq[i + 1]) || !IsBase(seq[i + 2])) return kNoCodon;
  return CodonIndex(seq[i], seq[i + 1], seq[i + 2]);
}

// log(w1 e^a + w2 e^b) without overflow.
double MixLog(double w1, double a, double w2, double b) {
  if (w2 <= 0) return a;
  if (w1 <= 0) return b;
  const double top = std::max(a, b);
  return top + std::log(w1 * std::exp(a - top) + w2 * std::exp(b - top));
}

class StrandScorer {
 public:
  StrandScorer(const GeneModel& model, std::span<const std::uint8_t> seq,
               std::span<const std::uint32_t> words, const PredictSettings& settings)
      : model_(model), seq_(seq), settings_(settings), words_(words) {
    for (unsigned codon = 0; codon < 64; ++codon) {
      const double q = model.background[codon >> 4] * model.background[(codon >> 2) & 3] *
                       model.background[codon & 3];
      startOdds_[codon] = model.starts[codon] ? model.startLogProb[codon] - std::log(q) : 0;
    }
    geneCost_ = std::log(model.nonCodingDecay);
    // The first codons of a gene read only weakly as coding (their log-odds per base lies near 0),
    // while non-coding sequence reads at nonCodingDensity. A stretch between two starts whose
    // log-odds per base lies above three quarters of nonCodingDensity is taken as the head of the
    // gene; the start codons and the RBS decide the rest. The threshold follows the model's own
    // separation of coding and non-coding, whatever the GC content. Halfway (0.5) and all the way
    // (1.0) were each worse on the starts of six genomes taken together (docs/genefind.md).
    startPrior_ = -0.75 * model.nonCodingDensity;
  }

  void ScanFrame(int frame, std::vector<Candidate>& out);

 private:
  struct OpenStart {
    std::int64_t begin;
    double cum1, cum2;
    unsigned codon;
  };

  double BaseOdds(const std::vector<float>* tables, std::size_t i, int frame) const {
    const std::uint32_t word = words_[i];
    if (word == kNoWord) return 0;
    return tables[(i + 3 - static_cast<std::size_t>(frame)) % 3][word];
  }
  void Emit(const OpenStart& start, std::int64_t end, double cum1, double cum2, bool openEnd,
            std::vector<Candidate>& out) const;
  void AddOrf(std::vector<Candidate>& orf, std::vector<Candidate>& out) const;
  double RbsScore(std::int64_t begin, std::int32_t& spacer) const;

  const GeneModel& model_;
  std::span<const std::uint8_t> seq_;
  const PredictSettings& settings_;
  std::span<const std::uint32_t> words_;
  std::array<double, 64> startOdds_{};
  double geneCost_ = 0;
  double startPrior_ = 0;
};

// The RBS term: the likelihood ratio of the upstream window, a site at each spacer weighted by the
// spacer distribution, mixed with the share of genes without a site; the best site's spacer.
double StrandScorer::RbsScore(std::int64_t begin, std::int32_t& spacer) const {
  spacer = -1;
  if (!model_.HasRbs()) return 0;
  const auto width = static_cast<std::int64_t>(model_.rbsMatrix.size());
  double sum = 0, best = 0;
  for (std::size_t s = 0; s < model_.rbsSpacerLog.size(); ++s) {
    const std::int64_t last = begin - 1 - static_cast<std::int64_t>(s);
    if (last - width + 1 < 0) break;
    double site = model_.rbsSpacerLog[s];
    for (std::int64_t r = 0; r < width; ++r) {
      const std::uint8_t base = seq_[static_cast<std::size_t>(last - r)];
      site += IsBase(base) ? model_.rbsMatrix[static_cast<std::size_t>(r)][base] : 0.0;
    }
    const double ratio = std::exp(site);
    sum += ratio;
    if (ratio > best && site - model_.rbsSpacerLog[s] > 0) {
      best = ratio;
      spacer = static_cast<std::int32_t>(s);
    }
  }
  return std::log((1 - settings_.rbsSiteShare) + settings_.rbsSiteShare * sum);
}

void StrandScorer::Emit(const OpenStart& start, std::int64_t end, double cum1, double cum2,
                        bool openEnd, std::vector<Candidate>& out) const {
  const std::int64_t length = end - start.begin;
  if (length < model_.minGeneLength || length > model_.maxGeneLength) return;
  Candidate gene;
  gene.begin = start.begin;
  gene.end = end;
  gene.openBegin = start.codon == kNoCodon;
  gene.openEnd = openEnd;
  gene.startCodon = start.codon;
  gene.codingScore =
      MixLog(model_.cod1Share, cum1 - start.cum1, model_.cod2Share, cum2 - start.cum2);
  if (!gene.openBegin) {
    gene.startScore = startOdds_[start.codon];
    gene.rbsScore = RbsScore(start.begin, gene.rbsSpacer);
  }
  const double lengthTerm =
      std::log1p(-std::exp(-static_cast<double>(length) / model_.codingDecay));
  gene.score = gene.codingScore + gene.startScore + gene.rbsScore + lengthTerm - geneCost_;
  out.push_back(gene);
}

// The start prior over one ORF's candidates, the most upstream first: each base a start lies
// downstream of the first costs startPrior_ nats, so the gene is extended over a stretch unless it
// reads more non-coding than the threshold. The prior only ranks the starts: the ORF's best
// candidate keeps the best score of the ORF without it, so whether the ORF is a gene at all is
// decided as before.
void StrandScorer::AddOrf(std::vector<Candidate>& orf, std::vector<Candidate>& out) const {
  if (orf.empty()) return;
  double bestWithout = orf.front().score, bestWith = orf.front().score;
  for (Candidate& c : orf) {
    bestWithout = std::max(bestWithout, c.score);
    c.score -= startPrior_ * static_cast<double>(c.begin - orf.front().begin);
    bestWith = std::max(bestWith, c.score);
  }
  for (Candidate& c : orf) {
    c.score += bestWithout - bestWith;
    out.push_back(c);
  }
  orf.clear();
}

// Walks the codons of one frame, keeping the coding sums from the frame's first base; each start
// remembers the sums after its codon, so that a gene's coding score is one difference when its
// stop (or the sequence end) is reached.
void StrandScorer::ScanFrame(int frame, std::vector<Candidate>& out) {
  const auto n = static_cast<std::int64_t>(seq_.size());
  const std::vector<float>* cod2 = model_.separateCod2 ? model_.cod2.data() : model_.cod1.data();
  std::vector<OpenStart> starts;
  std::vector<Candidate> orf;
  starts.push_back({frame, 0, 0, kNoCodon});  // the gene that runs in from the sequence start
  double cum1 = 0, cum2 = 0;
  std::int64_t c = frame;
  for (; c + 3 <= n; c += 3) {
    const unsigned codon = CodonAt(seq_, static_cast<std::size_t>(c));
    if (codon != kNoCodon && model_.stops[codon]) {
      for (const OpenStart& start : starts) Emit(start, c + 3, cum1, cum2, false, orf);
      AddOrf(orf, out);
      starts.clear();
    }
    for (std::int64_t i = c; i < c + 3; ++i) {
      cum1 += BaseOdds(model_.cod1.data(), static_cast<std::size_t>(i), frame);
      if (model_.separateCod2) cum2 += BaseOdds(cod2, static_cast<std::size_t>(i), frame);
    }
    if (!model_.separateCod2) cum2 = cum1;
    // The start codon itself is left out of the coding sum, as the estimator left it out.
    if (codon != kNoCodon && model_.starts[codon]) starts.push_back({c, cum1, cum2, codon});
  }
  for (const OpenStart& start : starts) Emit(start, c, cum1, cum2, true, orf);
  AddOrf(orf, out);
}

}  // namespace

double CodingLogOdds(const GeneModel& model, std::span<const std::uint8_t> seq,
                     int firstCodonPosition) {
  const std::vector<std::uint32_t> words = EndingWords(seq, model.order);
  double sum = 0;
  for (std::size_t i = 0; i < seq.size(); ++i) {
    if (words[i] == kNoWord) continue;
    sum += model.cod1[(i + static_cast<std::size_t>(firstCodonPosition)) % 3][words[i]];
  }
  return sum;
}

FrameSums::FrameSums(const GeneModel& model, std::span<const std::uint32_t> words) {
  const auto odds = [&](std::size_t i, std::size_t codonPosition) -> double {
    return words[i] == kNoWord ? 0.0 : model.cod1[codonPosition][words[i]];
  };
  for (std::size_t frame = 0; frame < 3; ++frame) {
    std::vector<float>& prefix = prefix_[frame];
    prefix.assign(1, 0.0f);
    double sum = 0;
    for (std::size_t c = frame; c + 3 <= words.size(); c += 3) {
      sum += odds(c, 0) + odds(c + 1, 1) + odds(c + 2, 2);
      prefix.push_back(static_cast<float>(sum));
    }
  }
}

double FrameSums::Sum(int frame, std::int64_t begin, std::int64_t end) const {
  const std::vector<float>& prefix = prefix_[static_cast<std::size_t>(frame)];
  const std::int64_t first = std::max<std::int64_t>(0, (begin - frame + 2) / 3);
  const std::int64_t last =
      std::min<std::int64_t>(static_cast<std::int64_t>(prefix.size()) - 1, (end - frame) / 3);
  if (last <= first) return 0;
  return static_cast<double>(prefix[static_cast<std::size_t>(last)]) -
         static_cast<double>(prefix[static_cast<std::size_t>(first)]);
}

std::vector<Candidate> ScanStrand(const GeneModel& model, std::span<const std::uint8_t> strandSeq,
                                  std::span<const std::uint32_t> words,
                                  const PredictSettings& settings) {
  std::vector<Candidate> out;
  if (strandSeq.size() < 3) return out;
  StrandScorer scorer(model, strandSeq, words, settings);
  for (int frame = 0; frame < 3; ++frame) scorer.ScanFrame(frame, out);
  return out;
}

std::vector<Candidate> ScanStrand(const GeneModel& model, std::span<const std::uint8_t> strandSeq,
                                  const PredictSettings& settings) {
  return ScanStrand(model, strandSeq, EndingWords(strandSeq, model.order), settings);
}

}  // namespace genetrain
