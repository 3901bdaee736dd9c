#ifndef GENETRAIN_GENES_ORF_H
#define GENETRAIN_GENES_ORF_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/Param.h"
#include "common/Report.h"
#include "genes/Gene.h"
#include "seq/LetterTables.h"
#include "seq/VSeq.h"

namespace genetrain {

// Open reading frames on both strands of a sequence. An ORF is kept as a GENE whose left and
// right are positions of the codon array (the position of a codon's last base): a direct ORF
// has its start codon at `left` and its stop at `right`, a reverse ORF the other way round.
// The completeness flags tell whether that side is closed by a stop codon.
class ORF {
 public:
  // Index of the codon array for a position where no codon ends (first two bases, or a base
  // that is not A, C, G or T among the three).
  static constexpr std::uint8_t kNoCodon = 64;

  // The direct sets as given, the reverse ones as their reverse complements.
  void SetCodons(const CodonSet& starts, const CodonSet& stops);
  // Codon index ending at every position (kNoCodon where there is none); counts every value
  // from position 2 on in codon_usage, which starts again from zero.
  void BuildCodonArray(const CodeSeq& codes);
  // The same from codes that are not needed any more: the array is built in their place, so
  // that no second array of the sequence's size is made.
  void BuildCodonArray(CodeSeq&& codes);
  // Append the ORFs of the codon array holding at least `min` bases between start and stop:
  // direct ones by stop end ascending, reverse ones by stop end descending. One pass each.
  void SearchDirect(std::uint32_t min);
  void SearchReverse(std::uint32_t min);
  // The --orf list of the ORFs of `seq`, less the margins (in bases, truncated toward zero to
  // whole codons): positions only, or with the bases when `withBases`.
  std::string ListWithMargins(std::int32_t leftMargin, std::int32_t rightMargin, bool withBases,
                              const VSeq& seq) const;
  // The --ORF_PER_SEQ list; "error orf" on standard error for an ORF with nothing inside.
  std::string ListPlain() const;
  // codon_usage summed over the direct and reverse start (stop) sets.
  std::uint64_t StartCount() const;
  std::uint64_t StopCount() const;

  Report report;
  std::vector<GENE> orfs;
  std::array<std::uint64_t, 65> codon_usage{};
  std::vector<std::uint8_t> codon_array;
  std::uint32_t min_orf_size = 0;
  CodonSet starts_direct;
  CodonSet starts_reverse;
  CodonSet stops_direct;
  CodonSet stops_reverse;

 private:
  // Fills codon_usage from codon_array.
  void CountCodons();
};

// --orf: codon counts on standard output, the ORF list to the file named by --orf.
bool RunOrf(Param& param);
// --ORF_PER_SEQ: ORF density per million non-coding bases, or the plain list.
bool RunOrfPerSeq(Param& param);

}  // namespace genetrain

#endif
