#include "common/Message.h"
#include "model/ModelFile.h"

namespace genetrain {

bool RunCombine(Report&, Param&) {
  PrintError({"error: command not yet available: --combine"});
  return false;
}

}  // namespace genetrain
