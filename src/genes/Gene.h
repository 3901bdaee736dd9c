#ifndef GENETRAIN_GENES_GENE_H
#define GENETRAIN_GENES_GENE_H

#include <cstdint>

#include "seq/Strand.h"

namespace genetrain {

// One line of a gene set: coordinates are 0-based and inclusive, in sequence orientation
// (left <= right) whatever the strand; a reverse gene starts at `right` and stops at `left`.
struct GENE {
  Strand strand = Strand::kNone;  // "+" direct, "-" reverse
  std::int32_t left = -1;         // -1: not set
  std::int32_t right = -1;
  bool left_complete = true;    // false when written "<left": the gene runs off the left end
  bool right_complete = true;   // false when written ">right"
  bool valid = false;           // the line passed every check of its grammar
  std::uint8_t gene_class = 0;  // 1 or 2 for a valid gene
};

}  // namespace genetrain

#endif
