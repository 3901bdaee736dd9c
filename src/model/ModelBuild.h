#ifndef GENETRAIN_MODEL_MODELBUILD_H
#define GENETRAIN_MODEL_MODELBUILD_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/Param.h"
#include "common/Report.h"
#include "genes/GeneSet.h"
#include "genes/Genome.h"
#include "model/MkChain.h"
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
                                       const CodonSet& startCodons, std::int64_t pseudocount);

// The start codon entries of a model: the estimated probability of each start codon, at the
// given precision, except that a codon whose setting text reads as zero is no start and keeps
// that text. `startTexts` holds the settings of ATG_, GTG_, TTG_ and CTG_ in file order.
void SetStartEntries(Report& report, const StartCodonEstimate& estimate, std::uint32_t precision,
                     const std::vector<std::string>& startTexts);

// The COD1, COD2 and NONC entries; COD2 repeats COD1 without a second coding chain. False, with
// the message printed and no entry set, when the chains' precision cannot be printed.
bool SetChainEntries(Report& report, const MkChain& coding, const MkChain* second,
                     const MkChain& nonCoding);

// The (C + G) / (A + C + G + T) fraction of coded sequences; 0 without any of these letters.
double GcFraction(const std::vector<CodeSeq>& sequences);

// The settings of a fixed motif.
struct FixedMotifOptions {
  std::uint32_t width = 0;    // --width: bases of the window
  std::int32_t upstream = 0;  // --PRE_START_WIDTH: bases of the window before the start codon
  bool intergenic = true;     // --PRE_START_INTERGENIC
  std::int32_t pseudocount = 1;
  std::int32_t precision = 3;
  std::string log;  // appended to when named
};

// Reads the settings in the order their messages appear; the first bad value fails.
bool ReadFixedMotifOptions(Param& param, FixedMotifOptions& options);

// The ribosome binding site sections of a fixed motif: the position matrix of the windows of
// `width` bases starting `upstream` bases before the genes' starts; the matrix is also appended
// to the log.
bool BuildFixedMotif(Report& report, Genome& genome, const VSeq& seq, const GeneSet& set,
                     const FixedMotifOptions& options);

}  // namespace genetrain

#endif
