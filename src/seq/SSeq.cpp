#include "seq/SSeq.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "seq/LetterTables.h"

namespace genetrain {

void SSeq::WriteLines(std::string_view text, std::uint32_t width, std::string& out) {
  if (text.empty()) return;
  const std::size_t step = width == 0 ? text.size() : width;
  const std::size_t lines = (text.size() + step - 1) / step;
  const std::size_t start = out.size();
  out.resize(start + text.size() + lines);  // grown once, then filled line by line
  char* dst = out.data() + start;
  for (std::size_t pos = 0; pos < text.size(); pos += step) {
    const std::size_t length = std::min(step, text.size() - pos);
    std::memcpy(dst, text.data() + pos, length);
    dst[length] = '\n';
    dst += length + 1;
  }
}

double SSeq::GcShare(const Tally& tally, double scale) {
  const std::uint64_t acgt = tally.Unambiguous();
  if (acgt == 0) return 0;
  return static_cast<double>(tally.g + tally.c) * scale / static_cast<double>(acgt);
}

// A table of counters per code, then the tally: no branch per base.
void SSeq::AddCodes(const std::vector<std::uint8_t>& codes, Tally& tally) {
  std::array<std::uint64_t, 256> counts{};
  for (const std::uint8_t code : codes) ++counts[code];
  tally.a += counts[kA];
  tally.c += counts[kC];
  tally.g += counts[kG];
  tally.t += counts[kT];
  tally.n += codes.size() - counts[kA] - counts[kC] - counts[kG] - counts[kT];
}

// Per block the flags of each byte add up in 8-bit counters. The inner loop has neither branch
// nor table look-up, so the compiler runs it over vector registers: several times faster than a
// byte histogram. A block is a whole number of vectors and below 256 bytes.
SSeq::Tally SSeq::TallyLetters(std::string_view raw) {
  constexpr std::size_t kBlock = 240;
  const auto* bytes = reinterpret_cast<const unsigned char*>(raw.data());
  Tally tally;
  for (std::size_t start = 0; start < raw.size(); start += kBlock) {
    const std::size_t end = std::min(raw.size(), start + kBlock);
    std::uint8_t a = 0, c = 0, g = 0, t = 0, letters = 0;
    for (std::size_t i = start; i < end; ++i) {
      const std::uint8_t lower = bytes[i] | 0x20;  // only A-Z and a-z land on a-z
      a += lower == 'a';
      c += lower == 'c';
      g += lower == 'g';
      t += (lower == 't') | (lower == 'u');
      letters += static_cast<std::uint8_t>(lower - 'a') < 26;
    }
    tally.a += a;
    tally.c += c;
    tally.g += g;
    tally.t += t;
    tally.n += static_cast<std::uint8_t>(letters - a - c - g - t);
  }
  return tally;
}

}  // namespace genetrain
