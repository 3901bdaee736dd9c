#ifndef GENETRAIN_TRAIN_TRAIN_H
#define GENETRAIN_TRAIN_TRAIN_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "predict/GeneModel.h"
#include "train/TrainModel.h"

namespace genetrain {

struct TrainOptions {
  ModelSettings model;  // model.order 0: chosen by the genome's size (OrderFor)
  MotifSettings motif;
  bool withMotif = true;
  int geneticCode = 0;  // 0: detected; 11 or 4: as given
  int maxRounds = 10;
  // Training stops when fewer than this share of the genes changed (by stop codon) since the
  // round before.
  double stableShare = 0.01;
  std::int64_t minBases = 20000;
  std::string scratch;                // folder for the models of the rounds
  std::string source = "the genome";  // names the input in messages: "file <genome.fa>"
};

// What each round did, for the log.
struct TrainRound {
  std::string stage;  // "initial", "coding" or "motif"
  std::int64_t genes = 0, trainingGenes = 0;
  double changed = 1.0;  // share of genes not in the round before (by stop codon)
  std::string motif;     // consensus, when a motif was sought
};

struct TrainResult {
  int geneticCode = 11;
  int order = 5;
  std::vector<TrainRound> rounds;
  std::int64_t genes = 0;
  ModelBuildReport last;
  std::string codeNote;  // how the genetic code was chosen
  // The genes the written model calls on each record, when training already predicted them with
  // it (the last round's); empty otherwise.
  std::vector<std::vector<PredictedGene>> calls;
};

// The genes the model calls on every record of the genome, as genefind predict calls them.
std::vector<std::vector<PredictedGene>> PredictRecords(const TrainingGenome& genome,
                                                       const GeneModel& model);

// A scratch file of this process in `folder`, named after what it holds.
std::string ScratchFile(const std::string& folder, std::string_view what);

// The order of the chains for a genome of this many bases: 4, and 3 for small genomes, whose
// genes cannot fill the 4^(order+1) words of each frame.
int OrderFor(std::int64_t bases);

// Trains a model of the genome without annotation and writes it to `path`: a first gene set of
// long open reading frames, then rounds of model building and prediction until the gene set
// stops changing, then the RBS motif. `onRound` hears of every round as it ends.
bool TrainUnsupervised(const TrainingGenome& genome, const TrainOptions& options,
                       const std::string& path, TrainResult& result,
                       const std::function<void(const TrainRound&)>& onRound);

// The model of the given genes (and the RBS motif of their upstream regions), written to `path`.
bool TrainSupervised(const TrainingGenome& genome, const std::vector<TrainingGene>& genes,
                     const TrainOptions& options, const std::string& path, TrainResult& result);

}  // namespace genetrain

#endif
