#ifndef GENETRAIN_DRIVER_DISPATCH_H
#define GENETRAIN_DRIVER_DISPATCH_H

#include <string_view>

#include "common/Param.h"

namespace genetrain {

// One command: its key and the function that builds the command's working object, runs the
// handler with it and destroys it.
struct Command {
  std::string_view key;
  bool (*run)(Param& param);
};

// The first command of the table whose key the store holds, whatever its value; null if none.
const Command* SelectCommand(const Param& param);

// Runs the selected command and returns the exit status: 0 when it succeeded, 1 when it failed
// or when no command key was given.
int Dispatch(Param& param);

}  // namespace genetrain

#endif
