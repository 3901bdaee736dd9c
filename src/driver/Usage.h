#ifndef GENETRAIN_DRIVER_USAGE_H
#define GENETRAIN_DRIVER_USAGE_H

namespace genetrain {

// Writes the usage text (version line, then every listed command with its options) to standard
// output.
void PrintUsage();

}  // namespace genetrain

#endif
