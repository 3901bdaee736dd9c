// The reader of compressed content on any bytes: the whole-file loader and the block reader must
// agree on the verdict and the bytes, and both must give the input itself back when it starts
// with no known magic. Byte 0 picks the block (1 to 64 bytes, low six bits) and a magic put in
// front of the rest (high two bits: none, bzip2, xz, zstd), so that the mutations start inside
// each decoder; gzip and the rest come from the seeds, which are real files of every kind.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzSupport.h"
#include "common/Decoder.h"
#include "common/FileBuf.h"
#include "common/InputStream.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static const std::string path = genetrain::fuzz::Path("in.gz");
  static const std::array<std::string_view, 4> kMagics{"",
                                                       "BZh91AY&SY",
                                                       {"\xfd"
                                                        "7zXZ\0",
                                                        6},
                                                       "\x28\xb5\x2f\xfd"};
  std::string bytes(kMagics[data[0] >> 6]);
  bytes += genetrain::fuzz::AsText(data + 1, size - 1);
  genetrain::fuzz::WriteFile(path, bytes);

  genetrain::FileBuf file;
  const bool loaded = file.Load(path.c_str());

  genetrain::InputStream input;
  if (!input.Open(path.c_str())) std::abort();
  std::vector<char> block(data[0] % 64 + 1);
  std::string pieces;
  std::size_t got = block.size();
  while (got == block.size()) {
    got = input.Read(block);
    pieces.append(block.data(), got);
  }
  if (loaded == input.Failed()) std::abort();
  if (loaded && pieces != file.View()) std::abort();
  const bool plain = genetrain::SniffCompression(std::string_view(bytes).substr(
                         0, genetrain::kSniffSize)) == genetrain::Compression::kNone;
  if (plain && (!loaded || file.View() != bytes)) std::abort();
  return 0;
}
