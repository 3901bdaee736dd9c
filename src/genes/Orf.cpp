#include "genes/Orf.h"

#include "common/Message.h"

namespace genetrain {

bool RunOrf(ORF&, Param&) {
  PrintError({"error: command not yet available: --orf"});
  return false;
}

bool RunOrfPerSeq(ORF&, Param&) {
  PrintError({"error: command not yet available: --ORF_PER_SEQ"});
  return false;
}

}  // namespace genetrain
