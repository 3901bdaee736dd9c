#include "seq/MSSeq.h"

#include "common/Message.h"

namespace genetrain {

bool MSSeq::CleanFasta(Param&) {
  PrintError({"error: command not yet available: --clean_fasta"});
  return false;
}

bool MSSeq::StatFasta(Param&) {
  PrintError({"error: command not yet available: --stat_fasta"});
  return false;
}

bool MSSeq::CountSubstringN(Param&) {
  PrintError({"error: command not yet available: --count_substring_n"});
  return false;
}

bool MSSeq::CountSubstringAtcg(Param&) {
  PrintError({"error: command not yet available: --count_substring_atcg"});
  return false;
}

bool MSSeq::CleanCoding(Param&) {
  PrintError({"error: command not yet available: --CLEAN_CODING"});
  return false;
}

}  // namespace genetrain
