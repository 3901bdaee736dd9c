#ifndef GENETRAIN_SEQ_MSSEQ_H
#define GENETRAIN_SEQ_MSSEQ_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/Param.h"
#include "seq/LetterTables.h"
#include "seq/SeqRecord.h"

namespace genetrain {

// FASTA records in the case-keeping view (A, C, G, T, a, c, g, t, N), and the record utilities.
class MSSeq {
 public:
  MSSeq() = default;

  bool ReadFasta(const std::string& name);

  // Record utilities (--clean_fasta, --stat_fasta, --count_substring_n, --count_substring_atcg,
  // --CLEAN_CODING).
  bool CleanFasta(Param& param);
  // Reading the input in blocks of the size given (the command: kFastaBlockSize).
  bool CleanFasta(Param& param, std::size_t blockSize);
  bool StatFasta(Param& param);
  bool CountSubstringN(Param& param);
  bool CountSubstringAtcg(Param& param);
  bool CleanCoding(Param& param);

  bool IsCleanCoding(std::string_view sequence, std::uint32_t left, std::uint32_t right) const;
  bool HasNoStop(std::string_view range) const;

 private:
  std::vector<SeqRecord> records_;
  CodonSet stops_;  // of --CLEAN_CODING
};

}  // namespace genetrain

#endif
