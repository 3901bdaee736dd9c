#include "seq/SSeq.h"

namespace genetrain {

void SSeq::Tally::Add(const Tally& other) {
  a += other.a;
  c += other.c;
  g += other.g;
  t += other.t;
  n += other.n;
}

bool SSeq::ReadFasta(const std::string& name) {
  return ReadFastaRecords(name, *table_, records_);
}

void SSeq::WriteLines(std::string_view text, std::uint32_t width, std::string& out) {
  if (text.empty()) return;
  const std::size_t step = width == 0 ? text.size() : width;
  out.reserve(out.size() + text.size() + text.size() / step + 1);
  for (std::size_t pos = 0; pos < text.size(); pos += step) {
    out.append(text.substr(pos, step)).push_back('\n');
  }
}

// Four interleaved tables keep successive equal bytes from waiting on each other's increment.
void SSeq::CountLetters(std::string_view range, LetterCounts& counts) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(range.data());
  const std::size_t size = range.size();
  if (size < 4096) {  // not worth clearing the lanes
    for (std::size_t i = 0; i < size; ++i) ++counts[bytes[i]];
    return;
  }
  std::array<LetterCounts, 4> lanes{};
  std::size_t i = 0;
  for (; i + 4 <= size; i += 4) {
    ++lanes[0][bytes[i]];
    ++lanes[1][bytes[i + 1]];
    ++lanes[2][bytes[i + 2]];
    ++lanes[3][bytes[i + 3]];
  }
  for (; i < size; ++i) ++lanes[0][bytes[i]];
  for (std::size_t b = 0; b < 256; ++b)
    counts[b] += lanes[0][b] + lanes[1][b] + lanes[2][b] + lanes[3][b];
}

double SSeq::GcPercent(const LetterCounts& counts) {
  const std::uint64_t gc = counts['G'] + counts['C'];
  const std::uint64_t acgt = counts['A'] + counts['C'] + counts['G'] + counts['T'];
  if (acgt == 0) return 0;
  return static_cast<double>(gc) * 100 / static_cast<double>(acgt);
}

LetterCounts SSeq::FoldCounts(const LetterCounts& raw) {
  const LetterTable& table = UpperLetterTable();
  LetterCounts folded{};
  for (std::size_t b = 0; b < 256; ++b) {
    if (table[b] != 0) folded[static_cast<unsigned char>(table[b])] += raw[b];
  }
  return folded;
}

}  // namespace genetrain
