// Parameter text as the command line (" \t") or a file (" \t\n\r") separates it; the first
// byte picks the separator set, the rest is the text.
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
  if (param.ParseText(text, "--", separators)) {
    const std::string listing = param.ToText();
    if (listing.size() < param.Size()) std::abort();  // one line per key at least
  }
  return 0;
}
