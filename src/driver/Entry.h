#ifndef GENETRAIN_DRIVER_ENTRY_H
#define GENETRAIN_DRIVER_ENTRY_H

namespace genetrain {

// The whole program: usage text without arguments, otherwise parameters, then one command.
// Returns the exit status.
int RunProgram(int argc, const char* const* argv);

}  // namespace genetrain

#endif
