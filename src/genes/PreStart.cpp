#include "genes/Genome.h"

#include "common/Message.h"

namespace genetrain {

bool RunPreStart(Genome&, Param&) {
  PrintError({"error: command not yet available: --pre_start"});
  return false;
}

}  // namespace genetrain
