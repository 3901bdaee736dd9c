#ifndef GENETRAIN_GENEFIND_MOTIFCOMMAND_H
#define GENETRAIN_GENEFIND_MOTIFCOMMAND_H

#include <string>

#include "motif/SiteSampler.h"

namespace genetrain {

enum class MotifFormat {
  kMotif,  // the "MOTIF A" site list that genetrain --gibbs reads
  kTable,  // one tab-separated line per region, with a header
};

struct MotifOptions {
  std::string input;   // "-": standard input
  std::string output;  // empty or "-": standard output
  MotifFormat format = MotifFormat::kMotif;
  SamplerSettings sampler;
  bool quiet = false;  // no report on standard error
};

// The motif command: one ribosome binding site per region of a FASTA file (the upstream regions
// of genetrain --pre_start), found by the Gibbs site sampler. The regions must be two or more,
// of one length, longer than the motif. False, with the message printed, on any failure; no
// output is then written.
bool RunMotif(const MotifOptions& options);

}  // namespace genetrain

#endif
