// Parameter text as the command line (" \t") or a file (" \t\n\r") separates it; the first
// byte picks the separator set, the rest is the text.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzSupport.h"
#include "common/Param.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view separators = (data[0] & 1) != 0 ? " \t\n\r" : " \t";
  const std::string text(genetrain::fuzz::AsText(data + 1, size - 1));
  genetrain::Param param;
  if (!param.ParseText(text, "--", separators)) return 0;
  // A text that parses has a key wherever the prefix stands outside a key, and no key without
  // one.
  std::size_t keys = 0;
  std::size_t end = 0;
  for (std::size_t pos = text.find("--"); pos != std::string::npos; pos = text.find("--", end)) {
    end = std::min(text.find_first_of(separators, pos), text.size());
    if (!param.Has(std::string_view(text).substr(pos, end - pos))) std::abort();
    ++keys;
  }
  if (keys == 0 && param.Size() != 0) std::abort();
  return 0;
}
