#include "common/Message.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace genetrain {

void PrintError(std::initializer_list<std::string_view> parts) {
  std::string line;
  for (std::string_view part : parts) line.append(part);
  line.push_back('\n');
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void PrintErrorAndExit(std::initializer_list<std::string_view> parts) {
  PrintError(parts);
  std::exit(1);
}

}  // namespace genetrain
