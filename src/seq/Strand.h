#ifndef GENETRAIN_SEQ_STRAND_H
#define GENETRAIN_SEQ_STRAND_H

#include <cstdint>

namespace genetrain {

// The strand a gene or ORF lies on. The values are fixed: the ORF listings print them as the
// digits 1 and 2, and a gene set line that names neither "+" nor "-" leaves kNone.
enum class Strand : std::int32_t { kNone = 0, kDirect = 1, kReverse = 2 };

// The digit the ORF listings print for a strand.
constexpr std::int32_t StrandNumber(Strand strand) {
  return static_cast<std::int32_t>(strand);
}

// Whether the strand is one of the two named ones. Not merely != kNone: a value cast from any
// other number has no strand either.
constexpr bool HasStrand(Strand strand) {
  return strand == Strand::kDirect || strand == Strand::kReverse;
}

}  // namespace genetrain

#endif
