#include "seq/SSeq.h"

#include "common/Message.h"

namespace genetrain {

bool SSeq::Split(Param&) {
  PrintError({"error: command not yet available: --split"});
  return false;
}

}  // namespace genetrain
