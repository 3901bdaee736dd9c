// The in-place FASTA walk on the raw bytes, with the letter tables and the base coder.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "seq/FastaScanner.h"
#include "seq/LetterTables.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  genetrain::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = genetrain::fuzz::AsText(data, size);
  genetrain::FastaScanner scanner(text);
  genetrain::FastaSpan record;
  std::string letters;
  std::vector<std::uint8_t> codes;
  std::size_t records = 0;
  while (scanner.Next(record)) {
    // Both views point into the text, the label (when there is one) at a ">".
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    if (record.body.size() > 0 && (record.body.data() < begin || record.body.end() > end)) {
      std::abort();
    }
    if (!record.label.empty() && record.label.front() != '>') std::abort();
    letters.clear();
    genetrain::AppendLetters(record.body, genetrain::UpperLetterTable(), letters);
    genetrain::AppendLetters(record.body, genetrain::CasePreservingLetterTable(), letters);
    codes.clear();
    genetrain::AppendCodes(record.body, codes);
    if (++records > size + 1) std::abort();  // every record moves the walk on
  }
  return 0;
}
