#ifndef GENETRAIN_TRAIN_TRAINMODEL_H
#define GENETRAIN_TRAIN_TRAINMODEL_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "motif/SiteSampler.h"
#include "predict/Predict.h"

namespace genetrain {

// A genome to train on: its records as base codes, and the same records joined end to end with a
// run of unknown letters between two records, so that the core's training steps, which read one
// sequence, see every record and no gene across a junction.
class TrainingGenome {
 public:
  static constexpr std::int64_t kJunction = 100;

  void AddRecord(std::string id, std::vector<std::uint8_t> codes);
  const std::vector<std::vector<std::uint8_t>>& Records() const { return records_; }
  const std::vector<std::string>& Ids() const { return ids_; }
  // Where each record begins in the joined sequence.
  std::int64_t Offset(std::size_t record) const { return offsets_[record]; }
  // The records' own bases, without the runs that join them.
  std::int64_t Bases() const { return bases_; }
  std::vector<std::uint8_t> Joined() const;

 private:
  std::vector<std::vector<std::uint8_t>> records_;
  std::vector<std::string> ids_;
  std::vector<std::int64_t> offsets_;
  std::int64_t bases_ = 0, joinedLength_ = 0;
};

// A gene to train on, in the joined sequence's coordinates (0-based, inclusive).
struct TrainingGene {
  std::int64_t left = 0, right = 0;
  Strand strand = Strand::kDirect;
  bool openLeft = false, openRight = false;
  // Percent, from the prediction; a gene given by the user is certain.
  double confidence = 100.0;
};

// Sorts genes by left end, then right end, as the core's training steps read them.
void SortByLeft(std::vector<TrainingGene>& genes);

// The genes of every record in joined coordinates, sorted by left end.
std::vector<TrainingGene> JoinedGenes(const TrainingGenome& genome,
                                      std::span<const std::vector<PredictedGene>> byRecord);

// Start codon probabilities, the RBS motif and the non-coding stretches come from the genes whose
// start is at least this sure: in self-training the uncertain starts drift towards the commonest
// codons of the sequence (TTG in E. coli) and upstream over non-coding sequence, and each round
// would teach the next one more of them.
inline constexpr double kStartConfidence = 90.0;

struct ModelSettings {
  std::string name = "genefind";
  int order = 5;
  int geneticCode = 11;  // 11, or 4 (TGA read as tryptophan)
  // Genes of at least this many bases train the coding chains; stretches between genes of at
  // least minNonCoding bases train the non-coding chain.
  int minCoding = 300;
  int minNonCoding = 50;
};

// Below this many upstream regions a model gets no RBS sections: the motif the sampler finds in
// a few dozen regions of 20 bases is mostly chance.
inline constexpr std::int64_t kMinMotifRegions = 100;

// The RBS part of a model: the sampler's sites in the upstream regions of the genes.
struct MotifSettings {
  int upstream = 20;  // bases before the start codon
  SamplerSettings sampler;
};

// What a model was built from.
struct ModelBuildReport {
  std::int64_t codingGenes = 0;  // genes that trained the coding chains
  std::int64_t regions = 0;      // upstream regions the motif was sought in; 0 without a motif
  MotifProfile motif;            // the motif found, when one was sought
  double siteShare = 0;
};

// Builds the model of `genes` on the genome with the core's estimators (the steps of
// genetrain --mkmod: training sequences, chains, start codon probabilities) and writes it to
// `path`; with `motif`, the RBS sections of the motif the sampler finds in the genes' upstream
// regions follow (as genetrain --gibbs appends them). False, with the message printed, when a
// step fails.
bool BuildModel(const TrainingGenome& genome, std::span<const TrainingGene> genes,
                const ModelSettings& settings, const MotifSettings* motif, const std::string& path,
                ModelBuildReport& report);

}  // namespace genetrain

#endif
