#include "seq/MSSeq.h"

namespace genetrain {

bool MSSeq::ReadFasta(const std::string& name) {
  return ReadFastaRecords(name, CasePreservingLetterTable(), records_);
}

}  // namespace genetrain
