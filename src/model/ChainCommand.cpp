#include "common/Message.h"
#include "genes/Genome.h"

namespace genetrain {

bool RunMkchain(Genome&, Param&) {
  PrintError({"error: command not yet available: --mkchain"});
  return false;
}

}  // namespace genetrain
