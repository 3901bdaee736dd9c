#ifndef GENETRAIN_GENES_GENESET_H
#define GENETRAIN_GENES_GENESET_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/Param.h"
#include "genes/Gene.h"

namespace genetrain {

// The genes of one annotated sequence, one record per line of the gene set file, valid or not.
class GeneSet {
 public:
  // Loads the named file whole and parses it; false (with the loader's message) if unreadable.
  bool LoadFile(const std::string& path);
  // Replaces `genes` with one record per line; an invalid line stays as a record marked invalid.
  void Parse(const char* begin, const char* end);
  // Six columns: id, strand (+/-), left ("<" = open), right (">" = open), length, class (1 or 2).
  GENE ParseLine(std::string_view line) const;
  // Two columns: left and right.
  GENE ParsePair(std::string_view line) const;
  // The neighbourhood statistics of --GENE_SET_STAT, as printed.
  std::string StatText() const;
  void PrintStat() const;

  std::vector<GENE> genes;
  std::int32_t max_right = -1;  // limit of `right`; below 1 means none
  bool two_column = false;
  std::int32_t shift_zero = 0;  // added to both coordinates of the two-column grammar
};

// Appends every maximal run of characters not in `separators` to `out`.
void SplitTokens(std::string_view text, std::string_view separators,
                 std::vector<std::string_view>& out);

// The token's value when it is decimal digits only and fits a signed 32-bit integer, else -1.
int ReadCount(std::string_view token);

// The --GENE_SET_STAT command: fails only when the gene set cannot be loaded.
bool RunGeneSetStat(Param& param);

}  // namespace genetrain

#endif
