#include "driver/Entry.h"

#include <cstdio>
#include <new>

#include "common/Param.h"
#include "driver/Dispatch.h"
#include "driver/Usage.h"

namespace genetrain {

int RunProgram(int argc, const char* const* argv) {
  if (argc == 1) {
    PrintUsage();
    return 0;
  }
  // Running out of memory anywhere ends the run with its message and, by long-standing
  // convention of this tool, status 0. Nothing else is caught.
  try {
    Param param;
    if (!param.Init(argc, argv)) return 1;
    return Dispatch(param);
  } catch (const std::bad_alloc&) {
    std::fputs("Out of memory!\n", stderr);
    return 0;
  }
}

}  // namespace genetrain
