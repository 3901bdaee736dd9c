#include "seq/SSeq.h"

#include "common/Message.h"

namespace genetrain {

bool SSeq::CleanJoin(Param&) {
  PrintError({"error: command not yet available: --clean_join"});
  return false;
}

bool SSeq::Clean(Param&) {
  PrintError({"error: command not yet available: --clean"});
  return false;
}

bool SSeq::Mask(Param&) {
  PrintError({"error: command not yet available: --mask"});
  return false;
}

}  // namespace genetrain
