#include "common/Output.h"

#include <algorithm>

namespace genetrain {

void WriteAll(std::FILE* stream, std::string_view text) {
  constexpr std::size_t kSlice = std::size_t{8} << 20;
  for (std::size_t pos = 0; pos < text.size(); pos += kSlice) {
    const std::size_t length = std::min(kSlice, text.size() - pos);
    if (std::fwrite(text.data() + pos, 1, length, stream) != length) return;
  }
}

void WriteStdout(std::string_view text) {
  WriteAll(stdout, text);
}

bool WriteFile(const std::string& name, std::string_view text, bool append) {
  std::FILE* file = std::fopen(name.c_str(), append ? "ab" : "wb");
  if (file == nullptr) return false;
  WriteAll(file, text);
  std::fclose(file);
  return true;
}

bool WriteFile(const std::string& name, std::initializer_list<std::string_view> parts) {
  std::FILE* file = std::fopen(name.c_str(), "wb");
  if (file == nullptr) return false;
  for (const std::string_view part : parts) WriteAll(file, part);
  std::fclose(file);
  return true;
}

}  // namespace genetrain
