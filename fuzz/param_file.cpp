// A parameter file: comments blanked, then the text read with the file separators, as
// Param::LoadFile does; then the value checks the commands run on what was read.
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
  std::string text(genetrain::fuzz::AsText(data, size));
  genetrain::Param::StripComments(text);
  if (text.size() != size) std::abort();  // comments are blanked, never cut
  genetrain::Param param;
  if (!param.ParseText(text, "--", " \t\n\r")) return 0;
  // Every typed reading of the first keys: the converters see arbitrary values here. A value
  // may hold separators inside, so the keys are taken from the text, not from a listing.
  constexpr std::string_view kSeparators = " \t\n\r";
  int keys = 0;
  std::size_t start = text.find_first_not_of(kSeparators);
  while (start != std::string::npos && keys < 8) {
    const std::size_t end = std::min(text.find_first_of(kSeparators, start), text.size());
    const std::string token = text.substr(start, end - start);
    start = text.find_first_not_of(kSeparators, end);
    if (token.size() < 3 || token.compare(0, 2, "--") != 0 || !param.Has(token)) continue;
    ++keys;
    std::string textValue;
    std::uint32_t unsignedValue = 0;
    std::int32_t signedValue = 0;
    double realValue = 0;
    bool flag = false;
    param.GetOpt(textValue, token);
    param.GetOptWord(textValue, token);
    param.GetOpt(unsignedValue, token);
    param.GetOpt(signedValue, token);
    param.GetOpt(realValue, token);
    param.GetOpt(flag, token);
  }
  return 0;
}
