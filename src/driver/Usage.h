#ifndef GENETRAIN_DRIVER_USAGE_H
#define GENETRAIN_DRIVER_USAGE_H

#include <string_view>

namespace genetrain {

// Writes the usage text (version line, then every listed command with its options) to standard
// output.
void PrintUsage();

// The version the usage text names, "2.11c": genefind prints the same.
std::string_view Version();

}  // namespace genetrain

#endif
