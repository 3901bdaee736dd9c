#ifndef GENETRAIN_GENES_ORF_H
#define GENETRAIN_GENES_ORF_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/Param.h"
#include "common/Report.h"
#include "genes/Gene.h"
#include "seq/VSeq.h"

namespace genetrain {

// Open reading frames on both strands of a sequence. An ORF is kept as a GENE whose left and
// right are positions of the codon array (the position of a codon's last base).
class ORF {
 public:
  // Clears the four codon sets and fills them from --TAA_ ... --CTG_.
  bool ReadCodons(Param& param);
  // Codon index ending at every position (64 where there is none); counts them in codon_usage.
  void BuildCodonArray(const CodeSeq& codes);
  void SearchDirect(int min);
  void SearchReverse(int min);
  std::string ListWithMargins(Param& param, const VSeq& seq) const;
  std::string ListPlain() const;

  Report report;
  std::vector<GENE> orfs;
  std::array<std::uint64_t, 65> codon_usage{};
  std::vector<std::uint8_t> codon_array;
  std::uint32_t min_orf_size = 0;
  std::array<bool, 65> starts_direct{};
  std::array<bool, 65> starts_reverse{};
  std::array<bool, 65> stops_direct{};
  std::array<bool, 65> stops_reverse{};
};

bool RunOrf(ORF& orf, Param& param);
bool RunOrfPerSeq(ORF& orf, Param& param);

}  // namespace genetrain

#endif
