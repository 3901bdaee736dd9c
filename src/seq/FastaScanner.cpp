#include "seq/FastaScanner.h"

#include <algorithm>

namespace genetrain {

bool FastaScanner::Next(FastaSpan& record) {
  const std::size_t size = text_.size();
  if (cursor_ >= size) return false;
  while (cursor_ < size && IsSpace(text_[cursor_])) ++cursor_;
  std::size_t bodyStart = cursor_;
  record.label = {};
  if (cursor_ < size && text_[cursor_] == '>') {
    bodyStart = std::min(text_.find('\n', cursor_), size);
    record.label = text_.substr(cursor_, bodyStart - cursor_);
  }
  const std::size_t bodyEnd = std::min(text_.find('>', bodyStart), size);
  record.body = text_.substr(bodyStart, bodyEnd - bodyStart);
  cursor_ = bodyEnd;
  return true;
}

// Every byte is written, and the write position moves on only for kept ones: no branch per byte.
void AppendLetters(std::string_view region, const LetterTable& table, std::string& out) {
  const std::size_t start = out.size();
  out.resize(start + region.size());
  char* dst = out.data() + start;
  std::size_t kept = 0;
  for (const char byte : region) {
    const char letter = table[static_cast<unsigned char>(byte)];
    dst[kept] = letter;
    kept += letter != 0;
  }
  out.resize(start + kept);
}

void AppendCodes(std::string_view region, std::vector<std::uint8_t>& out) {
  const CodeTable& table = BaseCodeTable();
  const std::size_t start = out.size();
  out.resize(start + region.size());
  std::uint8_t* dst = out.data() + start;
  std::size_t kept = 0;
  for (const char byte : region) {
    const std::uint8_t code = table[static_cast<unsigned char>(byte)];
    dst[kept] = code;
    kept += code != kDropped;
  }
  out.resize(start + kept);
}

}  // namespace genetrain
