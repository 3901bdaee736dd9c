#include "genes/GeneSet.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include "common/FileBuf.h"
#include "common/Output.h"

namespace genetrain {

namespace {

constexpr std::string_view kSeparators = " \t\n\r";

// Reads "<123" or ">123": the mark clears the completeness flag. Returns the 0-based position.
std::int32_t ReadEnd(std::string_view token, char openMark, bool& complete) {
  if (!token.empty() && token.front() == openMark) {
    complete = false;
    token.remove_prefix(1);
  }
  return ReadCount(token) - 1;
}

// A two-column coordinate moved by --shift_zero, worked out in 64 bits and held within the int
// range: a line beyond the range still lies beyond any sequence, and never wraps round.
std::int32_t Shifted(std::string_view token, std::int32_t shift) {
  const std::int64_t value = std::int64_t{ReadCount(token)} + shift - 1;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

// Drops both coordinates of a record whose span cannot be read.
GENE Unplaced(GENE gene) {
  gene.left = -1;
  gene.right = -1;
  return gene;
}

}  // namespace

void SplitTokens(std::string_view text, std::string_view separators,
                 std::vector<std::string_view>& out) {
  std::size_t start = text.find_first_not_of(separators);
  while (start != std::string_view::npos) {
    const std::size_t end = std::min(text.find_first_of(separators, start), text.size());
    out.push_back(text.substr(start, end - start));
    start = text.find_first_not_of(separators, end);
  }
}

int ReadCount(std::string_view token) {
  if (token.empty() || token.size() > 10) return -1;
  std::int64_t value = 0;
  for (const char digit : token) {
    if (digit < '0' || digit > '9') return -1;
    value = value * 10 + (digit - '0');
  }
  return value > INT32_MAX ? -1 : static_cast<int>(value);
}

bool GeneSet::LoadFile(const std::string& path) {
  FileBuf file;
  if (!file.Load(path.c_str())) return false;
  Parse(file.Data(), file.End());
  return true;
}

// A line runs up to the next line feed; every line after the first starts with the line feed
// that ended the one before. A line feed closing the buffer opens no further line, and an empty
// buffer has no line at all.
void GeneSet::Parse(const char* begin, const char* end) {
  genes.clear();
  const std::string_view text(begin, static_cast<std::size_t>(end - begin));
  genes.reserve(text.size() / 55);
  std::size_t start = 0;
  std::size_t from = 0;
  while (!text.empty()) {
    const std::size_t feed = text.find('\n', from);
    const std::string_view line = text.substr(start, std::min(feed, text.size()) - start);
    genes.push_back(two_column ? ParsePair(line) : ParseLine(line));
    if (feed == std::string_view::npos || feed + 1 == text.size()) break;
    start = feed;
    from = feed + 1;
  }
}

GENE GeneSet::ParseLine(std::string_view line) const {
  GENE gene;
  std::vector<std::string_view> tokens;
  SplitTokens(line, kSeparators, tokens);
  if (tokens.size() != 6) return gene;
  if (tokens[1] == "+") {
    gene.strand = Strand::kDirect;
  } else if (tokens[1] == "-") {
    gene.strand = Strand::kReverse;
  } else {
    return gene;
  }
  gene.left = ReadEnd(tokens[2], '<', gene.left_complete);
  if (gene.left < 0) return Unplaced(gene);
  gene.right = ReadEnd(tokens[3], '>', gene.right_complete);
  if (gene.right < 0 || gene.left > gene.right) return Unplaced(gene);
  if ((static_cast<std::int64_t>(gene.right) - gene.left + 1) % 3 != 0) return gene;
  // The limit compares the 0-based right end with the sequence length: a gene one base past
  // the end passes here and is caught by the extraction.
  if (max_right >= 1 && gene.right > max_right) return gene;
  gene.gene_class = static_cast<std::uint8_t>(ReadCount(tokens[5]) & 0xff);
  gene.valid = gene.gene_class == 1 || gene.gene_class == 2;
  return gene;
}

GENE GeneSet::ParsePair(std::string_view line) const {
  GENE gene;
  std::vector<std::string_view> tokens;
  SplitTokens(line, kSeparators, tokens);
  if (tokens.size() != 2) return gene;
  gene.left = Shifted(tokens[0], shift_zero);
  gene.right = Shifted(tokens[1], shift_zero);
  gene.valid = gene.left <= gene.right;
  return gene;
}

std::string GeneSet::StatText() const {
  enum Kind { kSame, kSameOverlap, kDirect, kDirectOverlap, kReverse, kReverseOverlap };
  std::array<std::uint64_t, 6> counts{};
  std::string text;
  for (std::size_t i = 0; i + 1 < genes.size(); ++i) {
    const GENE& current = genes[i];
    const GENE& next = genes[i + 1];
    if (current.left > next.left || current.right > next.right) {
      text.append(std::to_string(current.left)).append(" ").append(std::to_string(next.left));
      text.append(" ").append(std::to_string(current.right)).append(" ");
      text.append(std::to_string(next.right)).append(" check input data\n");
      continue;
    }
    if (!HasStrand(current.strand)) {
      text.append("no direction set for gene\n");
      continue;
    }
    const bool overlap = current.right >= next.left;
    const int kind = current.strand == next.strand       ? kSame
                     : current.strand == Strand::kDirect ? kDirect
                                                         : kReverse;
    ++counts[static_cast<std::size_t>(kind + (overlap ? 1 : 0))];
  }
  for (const std::uint64_t count : counts) text.append(std::to_string(count)).append(" ");
  text.push_back('\n');
  return text;
}

void GeneSet::PrintStat() const {
  WriteStdout(StatText());
}

bool RunGeneSetStat(Param& param) {
  std::string path;
  GeneSet set;
  if (!param.GetWord(path, "--geneset") || !set.LoadFile(path)) return false;
  set.PrintStat();
  return true;
}

}  // namespace genetrain
