#include "genes/Genome.h"

#include "common/Message.h"

namespace genetrain {

bool RunParse(Genome&, Param&) {
  PrintError({"error: command not yet available: --parse"});
  return false;
}

bool RunIntergenic(Genome&, Param&) {
  PrintError({"error: command not yet available: --intergenic"});
  return false;
}

bool RunStatNonVsAll(Genome&, Param&) {
  PrintError({"error: command not yet available: --STAT_NON_VS_ALL"});
  return false;
}

}  // namespace genetrain
