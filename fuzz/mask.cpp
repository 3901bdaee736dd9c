// --mask: the input cut at its first zero byte into the FASTA file and the interval file; the
// masked record goes to a file of the private folder.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "common/Param.h"
#include "seq/SSeq.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string seqPath = genetrain::fuzz::Path("seq.fa");
  static const std::string maskPath = genetrain::fuzz::Path("mask.txt");
  static const std::string outPath = genetrain::fuzz::Path("masked.fa");
  const std::string_view text = genetrain::fuzz::AsText(data, size);
  const std::size_t zero = text.find('\0');
  if (zero == std::string_view::npos) return 0;
  genetrain::fuzz::WriteFile(seqPath, text.substr(0, zero));
  genetrain::fuzz::WriteFile(maskPath, text.substr(zero + 1));
  genetrain::Param param;
  param.Set("--seq", seqPath);
  param.Set("--mask", maskPath);
  param.Set("--out", outPath);
  genetrain::SSeq seq;
  seq.Mask(param);
  return 0;
}
