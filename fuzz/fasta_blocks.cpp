// The block-wise FASTA reading of the counting commands against one scan of the whole file:
// byte 0 picks the block size (1 to 64 bytes), the rest is the file. Records, the first label
// and every letter count must come out the same whatever the block boundaries, and a file one
// refuses the other refuses too.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzSupport.h"
#include "common/FileBuf.h"
#include "seq/FastaScanner.h"
#include "seq/SSeq.h"

namespace {

bool SameTally(const genetrain::SSeq::Tally& x, const genetrain::SSeq::Tally& y) {
  return x.a == y.a && x.c == y.c && x.g == y.g && x.t == y.t && x.n == y.n;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static const std::string path = genetrain::fuzz::Path("in.fa");
  const std::string_view text = genetrain::fuzz::AsText(data + 1, size - 1);
  genetrain::fuzz::WriteFile(path, text);

  genetrain::SSeq::FileCounts blocks;
  const bool counted = genetrain::SSeq::CountFile(path, data[0] % 64 + 1, blocks);

  // The whole file at once, as the loader and the scanner see it. Both refuse the same files
  // (gzip data cut short or corrupt).
  genetrain::FileBuf file;
  if (file.Load(path.c_str()) != counted) std::abort();
  if (!counted) return 0;
  genetrain::FastaScanner scanner(file.View());
  genetrain::FastaSpan record;
  genetrain::SSeq::Tally letters;
  std::uint64_t records = 0;
  std::string firstLabel;
  while (scanner.Next(record)) {
    if (++records == 1) firstLabel = record.label;
    letters.Add(genetrain::SSeq::TallyLetters(record.body));
  }
  if (blocks.records != records || !SameTally(blocks.letters, letters)) std::abort();
  if (records == 1 && blocks.firstLabel != firstLabel) std::abort();
  return 0;
}
