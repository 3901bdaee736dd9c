#include "common/Message.h"

#include <cstdio>
#include <string>

namespace genetrain {

void PrintError(std::initializer_list<std::string_view> parts) {
  std::string line;
  for (std::string_view part : parts) line.append(part);
  line.push_back('\n');
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace genetrain
