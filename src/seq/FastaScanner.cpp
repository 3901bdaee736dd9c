#include "seq/FastaScanner.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "seq/LetterChunks.h"

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

namespace {

// Counted in sums rather than tested as a set, so that the compiler checks many bytes at once; a
// block of 240 keeps the count within one byte.
bool OnlyPlainBases(std::string_view line) {
  constexpr std::size_t kBlock = 240;
  for (std::size_t start = 0; start < line.size(); start += kBlock) {
    const std::size_t end = std::min(line.size(), start + kBlock);
    std::uint8_t bases = 0;
    for (std::size_t i = start; i < end; ++i) {
      const char byte = line[i];
      bases += byte == 'A';
      bases += byte == 'C';
      bases += byte == 'G';
      bases += byte == 'T';
      bases += byte == 'N';
    }
    if (bases != end - start) return false;
  }
  return true;
}

// Every byte is written, and the write position moves on only for kept ones: no branch per byte.
std::size_t CopyThroughTable(std::string_view line, const LetterTable& table, char* out) {
  std::size_t kept = 0;
  for (const char byte : line) {
    const char letter = table[static_cast<unsigned char>(byte)];
    out[kept] = letter;
    kept += letter != 0;
  }
  return kept;
}

}  // namespace

std::size_t CopyLetters(std::string_view raw, const LetterTable& table, char* out) {
  std::size_t kept = 0;
  while (!raw.empty()) {
    const void* lineEnd = std::memchr(raw.data(), '\n', raw.size());
    const std::size_t length =
        lineEnd == nullptr
            ? raw.size()
            : static_cast<std::size_t>(static_cast<const char*>(lineEnd) - raw.data());
    const std::string_view line = raw.substr(0, length);
    if (OnlyPlainBases(line)) {
      std::memcpy(out + kept, line.data(), line.size());
      kept += line.size();
    } else {
      kept += CopyThroughTable(line, table, out + kept);
    }
    raw.remove_prefix(std::min(length + 1, raw.size()));  // the line feed is no letter
  }
  return kept;
}

void AppendLetters(std::string_view region, const LetterTable& table, std::string& out) {
  const std::size_t start = out.size();
  out.resize(start + region.size());
  out.resize(start + CopyLetters(region, table, out.data() + start));
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
