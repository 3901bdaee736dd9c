#ifndef GENETRAIN_COMMON_MESSAGE_H
#define GENETRAIN_COMMON_MESSAGE_H

#include <initializer_list>
#include <string_view>

namespace genetrain {

// Writes the parts followed by an end of line to standard error in one write. The parts are
// written byte for byte, zero bytes included, so a message shows a value exactly as stored.
void PrintError(std::initializer_list<std::string_view> parts);

}  // namespace genetrain

#endif
