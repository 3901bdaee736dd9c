#ifndef GENETRAIN_DRIVER_USAGE_H
#define GENETRAIN_DRIVER_USAGE_H

#include <string_view>

namespace genetrain {

// The usage text: version line, then every listed command with its options.
std::string_view UsageText();

// Writes the usage text to standard output.
void PrintUsage();

}  // namespace genetrain

#endif
