#ifndef GENETRAIN_GENEFIND_PREDICTCOMMAND_H
#define GENETRAIN_GENEFIND_PREDICTCOMMAND_H

#include <cstdint>
#include <string>
#include <vector>

#include "predict/Predict.h"

#include "convert/Convert.h"

namespace genetrain {

struct PredictOptions {
  std::string model;
  std::string input;        // "-": standard input
  std::string output;       // empty or "-": standard output
  std::string proteins;     // empty: not written
  std::string nucleotides;  // empty: not written
  GeneFormat format = GeneFormat::kGff;
  int threads = 1;
  std::int32_t maxNRun = 50;
  bool quiet = false;  // no progress on standard error
};

// The predict command: the genes of every record of a FASTA file, read record by record and
// spread over the threads, written in input order. False, with the message printed, on any
// failure; no output is then written.
bool RunPredict(const PredictOptions& options);

// The outputs of predict for genes already called on records held in memory (ids, base codes),
// written as RunPredict writes them.
bool WritePredictions(const PredictOptions& options, const std::vector<std::string>& ids,
                      const std::vector<std::vector<std::uint8_t>>& records,
                      const std::vector<std::vector<PredictedGene>>& genes, int geneticCode);

}  // namespace genetrain

#endif
