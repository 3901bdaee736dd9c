#include "motif/Gibbs.h"

#include "common/Message.h"

namespace genetrain {

bool Gibbs::Run(Param&) {
  PrintError({"error: command not yet available: --gibbs"});
  return false;
}

}  // namespace genetrain
