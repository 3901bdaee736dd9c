// Unsupervised and supervised training of a model. See docs/genefind.md, "train".

#include "train/Train.h"

#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <set>

#include "common/Message.h"
#include "genes/Orf.h"
#include "predict/GeneModel.h"
#include "seq/LetterTables.h"

namespace genetrain {

namespace {

CodonSet StopsOf(int geneticCode) {
  CodonSet stops{kCodonTAA, kCodonTAG};
  if (geneticCode != 4) stops.Add(kCodonTGA);
  return stops;
}

constexpr CodonSet kStarts{kCodonATG, kCodonGTG, kCodonTTG};

// The first gene set: the long open reading frames (the core's ORF search: from the first start
// codon after a stop to the next stop, both ends closed), longest first, each kept when it shares
// at most 60 bases with those kept before. Most long ORFs of a prokaryote are genes, so the
// chains estimated from them already tell coding from non-coding; the rounds that follow clean
// them of the rest. The length bar drops until the set holds enough genes to fill a chain.
std::vector<TrainingGene> LongOrfs(const TrainingGenome& genome, int geneticCode) {
  std::vector<TrainingGene> orfs;  // of at least 300 bases, the lowest bar
  for (std::size_t r = 0; r < genome.Records().size(); ++r) {
    ORF search;
    search.SetCodons(kStarts, StopsOf(geneticCode));
    search.BuildCodonArray(CodeSeq(genome.Records()[r]));
    // The search counts the bases between the start and stop codons.
    search.SearchDirect(300 - 6);
    search.SearchReverse(300 - 6);
    const std::int64_t offset = genome.Offset(r);
    for (const GENE& orf : search.orfs) {
      // Codon positions are those of a codon's last base.
      if (orf.left_complete && orf.right_complete) {
        orfs.push_back({offset + orf.left - 2, offset + orf.right, orf.strand});
      }
    }
  }
  std::sort(orfs.begin(), orfs.end(), [](const TrainingGene& a, const TrainingGene& b) {
    return a.right - a.left > b.right - b.left;
  });
  std::vector<TrainingGene> kept;
  for (const std::int64_t minLength : {900, 600, 450, 300}) {
    std::map<std::int64_t, std::int64_t> byLeft;  // kept genes: left -> right
    kept.clear();
    for (const TrainingGene& orf : orfs) {
      if (orf.right - orf.left + 1 < minLength) break;
      auto next = byLeft.lower_bound(orf.left);
      const bool clashRight = next != byLeft.end() && next->first <= orf.right - 60;
      const bool clashLeft = next != byLeft.begin() && std::prev(next)->second >= orf.left + 60;
      if (clashRight || clashLeft) continue;
      byLeft.emplace(orf.left, orf.right);
      kept.push_back(orf);
    }
    if (kept.size() >= 200) break;
  }
  SortByLeft(kept);
  return kept;
}

std::int64_t StopKey(const TrainingGene& gene) {
  return gene.strand == Strand::kDirect ? 2 * gene.right : 2 * gene.left + 1;
}

// The share of `now` whose stop codon `before` does not hold, or of `before` that `now` lost,
// whichever is larger.
double Changed(const std::vector<TrainingGene>& before, const std::vector<TrainingGene>& now) {
  if (before.empty() || now.empty()) return 1.0;
  std::set<std::int64_t> stops;
  for (const TrainingGene& gene : before) stops.insert(StopKey(gene));
  std::int64_t shared = 0;
  for (const TrainingGene& gene : now) shared += stops.count(StopKey(gene));
  const auto larger = static_cast<double>(std::max(before.size(), now.size()));
  return 1.0 - static_cast<double>(shared) / larger;
}

std::int64_t CodingBases(const std::vector<TrainingGene>& genes) {
  std::int64_t bases = 0;
  for (const TrainingGene& gene : genes) bases += gene.right - gene.left + 1;
  return bases;
}

// One round: the model of `genes` written to `path` and read back, and the genes it predicts.
bool Round(const TrainingGenome& genome, const std::vector<TrainingGene>& genes,
           const ModelSettings& settings, const MotifSettings* motif, const std::string& path,
           ModelBuildReport& report, std::vector<TrainingGene>& predicted,
           std::vector<std::vector<PredictedGene>>* calls = nullptr) {
  GeneModel model;
  if (!BuildModel(genome, genes, settings, motif, path, report) || !LoadGeneModel(path, model)) {
    return false;
  }
  std::vector<std::vector<PredictedGene>> byRecord = PredictRecords(genome, model);
  predicted = JoinedGenes(genome, byRecord);
  if (calls != nullptr) *calls = std::move(byRecord);
  return true;
}

// A genome of 20 kb holds a dozen or more such ORFs; fewer cannot fill even a chain of order 3.
constexpr std::size_t kLeastStartGenes = 5;

// Code 4 is tried below this coding share under code 11, and chosen when it covers this much
// more of the genome.
constexpr double kCodeFourTrial = 0.8;
constexpr double kCodeFourGain = 0.1;
// Nor is code 4 taken where even it leaves most of the sequence non-coding: that is no genome
// whose genes TGA breaks (random sequence reads as "more coding" under any code with fewer stops).
constexpr double kCodeFourLeast = 0.5;

// Rounds with the motif: the first finds it in the upstream regions of genes called without one,
// whose starts it then moves.
constexpr int kMotifRounds = 2;

}  // namespace

std::vector<std::vector<PredictedGene>> PredictRecords(const TrainingGenome& genome,
                                                       const GeneModel& model) {
  std::vector<std::vector<PredictedGene>> byRecord;
  const PredictSettings settings;
  for (const std::vector<std::uint8_t>& record : genome.Records()) {
    byRecord.push_back(PredictGenes(model, record, settings));
  }
  return byRecord;
}

std::string ScratchFile(const std::string& folder, std::string_view what) {
  return folder + "/genefind-" + std::to_string(::getpid()) + "-" + std::string(what) + ".mod";
}

// Order 5 describes the typical genes of a genome more sharply than order 4 and so misses more
// of its short and atypical ones. On six genomes of 1.7 to 9.1 Mb, order 4 gave 0.2 to 0.9
// points more sensitivity for 0.1 to 1.4 points of precision, and start agreement from 1.1 points
// lower to 1.2 points higher. Below 300 kb the genes cannot fill order 4's 1,024 words a frame.
int OrderFor(std::int64_t bases) {
  return bases < 300000 ? 3 : 4;
}

bool TrainUnsupervised(const TrainingGenome& genome, const TrainOptions& options,
                       const std::string& path, TrainResult& result,
                       const std::function<void(const TrainRound&)>& onRound) {
  ModelSettings settings = options.model;
  if (settings.order <= 0) settings.order = OrderFor(genome.Bases());
  result = TrainResult{};
  result.order = settings.order;
  const std::string scratch = ScratchFile(options.scratch, "round");

  // The genetic code. A code-4 genome read with code 11 breaks its genes at every TGA, so that
  // far less of it reads as coding than with code 4; a code-11 genome read with code 4 keeps its
  // genes, only a little longer. Code 4 is tried only when code 11 leaves less than
  // kCodeFourTrial of the genome coding: where TGA is rare inside genes, the codes call the same
  // genes anyway.
  std::vector<TrainingGene> genes;
  std::vector<TrainingGene> predicted;
  ModelBuildReport report;
  settings.geneticCode = options.geneticCode == 0 ? 11 : options.geneticCode;
  const std::vector<TrainingGene> start = LongOrfs(genome, settings.geneticCode);
  if (start.size() < kLeastStartGenes) {
    PrintError({"error: ", options.source, " holds ", std::to_string(start.size()),
                " open reading frames of 300 bases or more, too few to start training from (",
                std::to_string(kLeastStartGenes), " needed): is it the DNA of a prokaryote?"});
    return false;
  }
  if (!Round(genome, start, settings, nullptr, scratch, report, genes)) {
    std::remove(scratch.c_str());
    return false;
  }
  const double share11 =
      static_cast<double>(CodingBases(genes)) / static_cast<double>(genome.Bases());
  char note[200];
  if (options.geneticCode != 0) {
    result.codeNote = "genetic code " + std::to_string(settings.geneticCode) + ": as given";
  } else if (share11 >= kCodeFourTrial) {
    std::snprintf(note, sizeof note, "genetic code 11: %.3f of the genome reads as coding",
                  share11);
    result.codeNote = note;
  } else {
    ModelSettings four = settings;
    four.geneticCode = 4;
    std::vector<TrainingGene> calls;
    ModelBuildReport fourReport;
    if (!Round(genome, LongOrfs(genome, 4), four, nullptr, scratch, fourReport, calls)) {
      std::remove(scratch.c_str());
      return false;
    }
    const double share4 =
        static_cast<double>(CodingBases(calls)) / static_cast<double>(genome.Bases());
    const bool code4 = share4 > share11 + kCodeFourGain && share4 >= kCodeFourLeast;
    if (code4) {
      settings = four;
      genes = std::move(calls);
      report = fourReport;
    }
    std::snprintf(note, sizeof note,
                  "genetic code %d: %.3f of the genome reads as coding with code 11, %.3f with "
                  "code 4",
                  settings.geneticCode, share11, share4);
    result.codeNote = note;
  }
  result.geneticCode = settings.geneticCode;
  TrainRound first{"initial", static_cast<std::int64_t>(genes.size()), report.codingGenes, 1.0, ""};
  result.rounds.push_back(first);
  onRound(first);

  // Coding rounds until the gene set settles, then rounds with the motif.
  bool motifStage = false;
  bool lastComplete = false;  // the scratch model is that of the last genes' round, motif included
  int motifRounds = 0;
  for (int round = 1; round < options.maxRounds; ++round) {
    const MotifSettings* motif = motifStage ? &options.motif : nullptr;
    if (!Round(genome, genes, settings, motif, scratch, report, predicted, &result.calls)) {
      std::remove(scratch.c_str());
      return false;
    }
    TrainRound done{motifStage ? "motif" : "coding", static_cast<std::int64_t>(predicted.size()),
                    report.codingGenes, Changed(genes, predicted),
                    motifStage ? report.motif.consensus : std::string()};
    result.rounds.push_back(done);
    onRound(done);
    genes = std::move(predicted);
    lastComplete = motifStage || !options.withMotif;
    motifRounds += motifStage ? 1 : 0;
    if (done.changed < options.stableShare || motifStage) {
      if (lastComplete && motifRounds >= kMotifRounds) break;
      motifStage = true;
    }
  }
  result.genes = static_cast<std::int64_t>(genes.size());
  // The last round's model, which called these genes, is the result when it was complete (with
  // the motif, when one is wanted); otherwise the model of the last genes is built.
  if (!lastComplete) result.calls.clear();
  if (lastComplete) {
    result.last = report;
    const bool moved = std::rename(scratch.c_str(), path.c_str()) == 0;
    if (moved) return true;
    result.calls.clear();
  }
  std::remove(scratch.c_str());
  const MotifSettings* motif = options.withMotif ? &options.motif : nullptr;
  return BuildModel(genome, genes, settings, motif, path, result.last);
}

bool TrainSupervised(const TrainingGenome& genome, const std::vector<TrainingGene>& genes,
                     const TrainOptions& options, const std::string& path, TrainResult& result) {
  ModelSettings settings = options.model;
  if (settings.order <= 0) settings.order = OrderFor(genome.Bases());
  settings.geneticCode = options.geneticCode == 0 ? 11 : options.geneticCode;
  result = TrainResult{};
  result.order = settings.order;
  result.geneticCode = settings.geneticCode;
  result.genes = static_cast<std::int64_t>(genes.size());
  const MotifSettings* motif = options.withMotif ? &options.motif : nullptr;
  return BuildModel(genome, genes, settings, motif, path, result.last);
}

}  // namespace genetrain
