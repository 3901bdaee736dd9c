#include "common/Message.h"
#include "model/ModelFile.h"

namespace genetrain {

bool RunMkmod(Report&, Param&) {
  PrintError({"error: command not yet available: --mkmod"});
  return false;
}

}  // namespace genetrain
