#include "seq/FastaScanner.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "seq/LetterChunks.h"
#include "seq/SSeq.h"

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

// Counts the capitals A, C, G, T and N of a line into `tally` when the line holds nothing else;
// false, and the tally untouched, otherwise. Each block has counters of one byte (240 letters
// fit), so that the compiler counts many bytes at once.
bool CountPlainBases(std::string_view line, SSeq::Tally& tally) {
  constexpr std::size_t kBlock = 240;
  SSeq::Tally own;
  for (std::size_t start = 0; start < line.size(); start += kBlock) {
    const std::size_t end = std::min(line.size(), start + kBlock);
    std::uint8_t a = 0, c = 0, g = 0, t = 0, n = 0;
    for (std::size_t i = start; i < end; ++i) {
      const char byte = line[i];
      a += byte == 'A';
      c += byte == 'C';
      g += byte == 'G';
      t += byte == 'T';
      n += byte == 'N';
    }
    if (std::size_t{a} + c + g + t + n != end - start) return false;
    own.Add({a, c, g, t, n});
  }
  tally.Add(own);
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

// Lines mostly have one width: a line of plain bases as wide as the last one, followed by a line
// feed, is taken without looking for its end (a line feed inside it is no plain base).
std::size_t CopyLetters(std::string_view raw, const LetterTable& table, char* out,
                        SSeq::Tally* tally) {
  SSeq::Tally counted;
  std::size_t kept = 0;
  std::size_t width = 0;  // of the last line
  while (!raw.empty()) {
    if (width > 0 && width < raw.size() && raw[width] == '\n' &&
        CountPlainBases(raw.substr(0, width), counted)) {
      std::memcpy(out + kept, raw.data(), width);
      kept += width;
      raw.remove_prefix(width + 1);
      continue;
    }
    const void* lineEnd = std::memchr(raw.data(), '\n', raw.size());
    const std::size_t length =
        lineEnd == nullptr
            ? raw.size()
            : static_cast<std::size_t>(static_cast<const char*>(lineEnd) - raw.data());
    const std::string_view line = raw.substr(0, length);
    if (CountPlainBases(line, counted)) {
      std::memcpy(out + kept, line.data(), line.size());
      kept += line.size();
    } else {
      const std::size_t letters = CopyThroughTable(line, table, out + kept);
      if (tally != nullptr) counted.Add(SSeq::TallyLetters({out + kept, letters}));
      kept += letters;
    }
    width = length;
    raw.remove_prefix(std::min(length + 1, raw.size()));  // the line feed is no letter
  }
  if (tally != nullptr) tally->Add(counted);
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
