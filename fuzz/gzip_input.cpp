// The gzip reader on any bytes: the whole-file loader and the block reader (blocks of 1 to 64
// bytes, picked by byte 0) must agree on the verdict and the bytes, and both must give the
// input itself back when it does not start with the gzip magic bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "common/FileBuf.h"
#include "common/GzipDecoder.h"
#include "common/InputStream.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static const std::string path = genetrain::fuzz::Path("in.gz");
  const std::string_view bytes = genetrain::fuzz::AsText(data + 1, size - 1);
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
  if (!genetrain::GzipDecoder::IsGzip(bytes) && (!loaded || file.View() != bytes)) std::abort();
  return 0;
}
