// The gene set grammars. The first nine bytes set the reader: byte 0 the grammar (six columns or
// two), bytes 1-4 max_right and bytes 5-8 shift_zero (little-endian); the rest is the file.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzSupport.h"
#include "genes/GeneSet.h"

namespace {

std::int32_t ReadInt32(const std::uint8_t* bytes) {
  std::uint32_t value = 0;
  for (int i = 3; i >= 0; --i) value = (value << 8) | bytes[i];
  return static_cast<std::int32_t>(value);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kHead = 9;
  if (size < kHead) return 0;
  genetrain::GeneSet set;
  set.two_column = (data[0] & 1) != 0;
  set.max_right = ReadInt32(data + 1);
  set.shift_zero = ReadInt32(data + 5);
  const char* const text = reinterpret_cast<const char*>(data + kHead);
  set.Parse(text, text + (size - kHead));
  for (const genetrain::GENE& gene : set.genes) {
    if (!gene.valid) continue;
    if (gene.left > gene.right) std::abort();
    if (!set.two_column && gene.gene_class != 1 && gene.gene_class != 2) std::abort();
  }
  const std::string stat = set.StatText();
  if (stat.empty() || stat.back() != '\n') std::abort();
  return 0;
}
