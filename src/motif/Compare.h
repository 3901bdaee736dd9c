#ifndef GENETRAIN_MOTIF_COMPARE_H
#define GENETRAIN_MOTIF_COMPARE_H

#include <cstdint>
#include <string>

#include "common/Param.h"
#include "common/Report.h"
#include "genes/GeneSet.h"

namespace genetrain {

// The settings of the --compare command.
struct CompareOptions {
  std::string sourceName;  // --source
  std::string targetName;  // --target
  std::string output;      // the value of --compare; empty: standard output
  std::uint32_t precision = 1;
  bool bothEnds = true;  // --COMPARE_START: the score of the matches at both ends
  bool stopEnd = true;   // --COMPARE_END: the score of the matches at the stop end
};

// Reads the settings in the order their messages appear; the first bad value fails.
bool ReadCompareOptions(Param& param, CompareOptions& options);

// The agreement of two gene sets: how many genes of `source` have a partner in `target` with
// the same stop end, and how many with both ends the same. Writes one line of scores.
class Compare : public Report {
 public:
  // The --compare command: reads both gene sets, matches them and writes the scores.
  bool Run(const CompareOptions& options);
  // ReadCompareOptions, then the command.
  bool Run(Param& param);

  // Fills the four counters. Each source gene is decided by the first target gene (in file
  // order) on its strand with the same stop end: an exact match when the starts agree too,
  // a stop-only match otherwise. A target gene may serve several source genes.
  void Match();

  // The scores with `precision` digits: 2 * matches / (source + target) at both ends, a tab,
  // and at the stop end; each only when its flag is set.
  std::string ResultText(std::uint32_t precision, bool bothEnds, bool stopEnd) const;

  GeneSet source;
  GeneSet target;
  std::int32_t match_both_direct = 0;
  std::int32_t match_both_reverse = 0;
  std::int32_t match_stop_direct = 0;
  std::int32_t match_stop_reverse = 0;
};

}  // namespace genetrain

#endif
