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

// Counts the capitals A, C, G, T and N of `bytes` into `tally`, and its line feeds into `feeds`,
// when it holds nothing else; false, and both untouched, otherwise. Each block has counters of
// one byte (240 letters fit), so that the compiler counts many bytes at once.
bool CountPlainBases(std::string_view bytes, SSeq::Tally& tally, std::size_t& feeds) {
  constexpr std::size_t kBlock = 240;
  SSeq::Tally own;
  std::size_t ownFeeds = 0;
  for (std::size_t start = 0; start < bytes.size(); start += kBlock) {
    const std::size_t end = std::min(bytes.size(), start + kBlock);
    std::uint8_t a = 0, c = 0, g = 0, t = 0, n = 0, f = 0;
    for (std::size_t i = start; i < end; ++i) {
      const char byte = bytes[i];
      a += byte == 'A';
      c += byte == 'C';
      g += byte == 'G';
      t += byte == 'T';
      n += byte == 'N';
      f += byte == '\n';
    }
    if (std::size_t{a} + c + g + t + n + f != end - start) return false;
    own.Add({a, c, g, t, n});
    ownFeeds += f;
  }
  tally.Add(own);
  feeds += ownFeeds;
  return true;
}

// Takes the whole lines of `width` plain bases, each followed by a line feed, at the start of
// `raw`: copies their letters to `out` at `kept`, counts them, and returns the bytes taken (0:
// not even the first line qualifies). The lines are counted a few at a time, line feeds and all,
// so that the counting loop runs long enough to go 16 bytes at a time; a line of 60 letters
// alone spends much of its count in the loop's edges.
std::size_t TakePlainLines(std::string_view raw, std::size_t width, SSeq::Tally& tally, char* out,
                           std::size_t& kept) {
  const std::size_t stride = width + 1;
  const std::size_t group = std::max<std::size_t>(1, 240 / stride);
  std::size_t taken = 0;
  for (;;) {
    const std::size_t lines = std::min(group, (raw.size() - taken) / stride);
    if (lines == 0) return taken;
    const std::string_view run = raw.substr(taken, lines * stride);
    for (std::size_t i = 0; i < lines; ++i) {
      if (run[i * stride + width] != '\n') return taken;
    }
    // With a line feed at the end of each line, one more anywhere means a line of another width.
    SSeq::Tally own;
    std::size_t feeds = 0;
    if (!CountPlainBases(run, own, feeds) || feeds != lines) return taken;
    for (std::size_t i = 0; i < lines; ++i) {
      std::memcpy(out + kept + i * width, run.data() + i * stride, width);
    }
    kept += lines * width;
    tally.Add(own);
    taken += run.size();
  }
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

// Lines mostly have one width: lines of plain bases as wide as the last one, each followed by a
// line feed, are taken without looking for their ends (a line feed inside one is no plain base).
std::size_t CopyLetters(std::string_view raw, const LetterTable& table, char* out,
                        SSeq::Tally* tally) {
  SSeq::Tally counted;
  std::size_t kept = 0;
  std::size_t width = 0;  // of the last line
  while (!raw.empty()) {
    if (width > 0) {
      if (const std::size_t taken = TakePlainLines(raw, width, counted, out, kept); taken > 0) {
        raw.remove_prefix(taken);
        continue;
      }
    }
    const void* lineEnd = std::memchr(raw.data(), '\n', raw.size());
    const std::size_t length =
        lineEnd == nullptr
            ? raw.size()
            : static_cast<std::size_t>(static_cast<const char*>(lineEnd) - raw.data());
    const std::string_view line = raw.substr(0, length);
    if (std::size_t feeds = 0; CountPlainBases(line, counted, feeds)) {
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
