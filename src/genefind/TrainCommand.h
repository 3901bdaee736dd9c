#ifndef GENETRAIN_GENEFIND_TRAINCOMMAND_H
#define GENETRAIN_GENEFIND_TRAINCOMMAND_H

#include <cstdint>
#include <string>

#include "genefind/PredictCommand.h"

namespace genetrain {

struct TrainCommandOptions {
  std::string input;    // the genome's FASTA file
  std::string output;   // the model file
  std::string genes;    // -g: train on these genes instead of iterating
  int geneticCode = 0;  // 0: detected
  int order = 0;        // 0: by the genome's size
  int maxRounds = 10;
  bool motif = true;
  std::uint64_t seed = 1;
  std::string log;  // empty: the rounds go to standard error (unless quiet)
  bool quiet = false;
};

// The train command: a model of the genome, from its genes or without them, written whole to
// the output. False, with the message printed, on any failure.
bool RunTrain(const TrainCommandOptions& options);

struct RunCommandOptions {
  TrainCommandOptions train;  // train.output: the kept model (--model-out), or empty
  PredictOptions predict;     // predict.model is set by the run
};

// The run command: train, then predict on the same genome.
bool RunRun(RunCommandOptions options);

}  // namespace genetrain

#endif
