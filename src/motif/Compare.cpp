#include "motif/Compare.h"

#include "common/Message.h"

namespace genetrain {

bool Compare::Run(Param&) {
  PrintError({"error: command not yet available: --compare"});
  return false;
}

}  // namespace genetrain
