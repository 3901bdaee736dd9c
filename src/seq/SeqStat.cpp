#include "seq/SSeq.h"

#include "common/Message.h"

namespace genetrain {

bool SSeq::Stat(Param&) {
  PrintError({"error: command not yet available: --stat"});
  return false;
}

bool SSeq::Gc(Param&) {
  PrintError({"error: command not yet available: --gc"});
  return false;
}

}  // namespace genetrain
