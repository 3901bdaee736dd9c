#ifndef GENETRAIN_MODEL_MODELBUILD_H
#define GENETRAIN_MODEL_MODELBUILD_H

#include <vector>

#include "common/Param.h"
#include "common/Report.h"
#include "genes/GeneSet.h"
#include "genes/Genome.h"
#include "seq/VSeq.h"

namespace genetrain {

// Counts the first codon of every coding training sequence and turns the counts of the genome's
// start codons into probabilities (pseudocount --START_PSEUDOCOUNTS); prints a warning when no
// training sequence starts with one.
void EstimateStartCodons(Genome& genome);

// The (C + G) / (A + C + G + T) fraction of coded sequences; 0 without any of these letters.
double GcFraction(const std::vector<CodeSeq>& sequences);

// The ribosome binding site sections of a fixed motif: the position matrix of the windows of
// --width bases starting --PRE_START_WIDTH bases upstream of the genes' starts; the matrix is also
// appended to --log.
bool BuildFixedMotif(Report& report, Genome& genome, const VSeq& seq, const GeneSet& set,
                     Param& param);

}  // namespace genetrain

#endif
