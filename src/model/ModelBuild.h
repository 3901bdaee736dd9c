#ifndef GENETRAIN_MODEL_MODELBUILD_H
#define GENETRAIN_MODEL_MODELBUILD_H

#include <array>
#include <cstdint>
#include <vector>

#include "common/Param.h"
#include "common/Report.h"
#include "genes/GeneSet.h"
#include "genes/Genome.h"
#include "seq/VSeq.h"

namespace genetrain {

// The first codons of the coding training sequences, by codon index (64 each).
struct StartCodonEstimate {
  std::vector<std::int64_t> start_counts;
  std::vector<double> start_probs;  // of the start codons only; 0 elsewhere
};

// Counts the first codon of every sequence of both lists and turns the counts of the start
// codons into probabilities with the pseudocount; prints a warning when no sequence starts with
// one.
StartCodonEstimate EstimateStartCodons(const std::vector<CodeSeq>& cod1,
                                       const std::vector<CodeSeq>& cod2,
                                       const std::array<bool, 64>& startCodons,
                                       std::int64_t pseudocount);

// The (C + G) / (A + C + G + T) fraction of coded sequences; 0 without any of these letters.
double GcFraction(const std::vector<CodeSeq>& sequences);

// The ribosome binding site sections of a fixed motif: the position matrix of the windows of
// --width bases starting --PRE_START_WIDTH bases upstream of the genes' starts; the matrix is also
// appended to --log.
bool BuildFixedMotif(Report& report, Genome& genome, const VSeq& seq, const GeneSet& set,
                     Param& param);

}  // namespace genetrain

#endif
