// --mask: overwriting intervals of a one-record sequence with N.
#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "common/FileBuf.h"
#include "common/Message.h"
#include "common/Output.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

// 1-based, inclusive.
struct Interval {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
};

// The whole file as text. A file that opens but cannot be read (a folder) fails like one that
// does not open.
bool ReadWhole(const std::string& name, std::string& text) {
  std::FILE* file = std::fopen(name.c_str(), "rb");
  if (file == nullptr) return false;
  const bool read = FileBuf::ReadRest(file, text);
  std::fclose(file);
  return read;
}

// As C atoi reads the token (leading white space, a sign, digits), but a number beyond the int
// range is held at its nearest end instead of being undefined. The value is kept unsigned, so a
// negative number becomes a huge position.
std::uint32_t ToPosition(std::string_view token) {
  const std::string copy(token);  // the token ends where the line goes on: convert it alone
  const long long number = std::strtoll(copy.c_str(), nullptr, 10);
  return static_cast<std::uint32_t>(
      static_cast<int>(std::clamp<long long>(number, INT_MIN, INT_MAX)));
}

// Splits a line at runs of blanks and tabs (a carriage return is part of a token) and takes at
// most three tokens; a line of exactly two makes an interval.
bool ParseInterval(std::string_view line, Interval& interval) {
  constexpr std::string_view kBlanks = " \t";
  std::string_view tokens[3];
  std::size_t count = 0;
  std::size_t start = line.find_first_not_of(kBlanks);
  while (start != std::string_view::npos && count < 3) {
    const std::size_t end = std::min(line.find_first_of(kBlanks, start), line.size());
    tokens[count++] = line.substr(start, end - start);
    start = line.find_first_not_of(kBlanks, end);
  }
  if (count != 2) return false;
  interval = {ToPosition(tokens[0]), ToPosition(tokens[1])};
  return true;
}

std::vector<Interval> ParseIntervals(std::string_view text) {
  std::vector<Interval> intervals;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    Interval interval;
    if (ParseInterval(text.substr(start, end - start), interval)) intervals.push_back(interval);
    start = end + 1;
  }
  return intervals;
}

// An interval reaching past the end fails. So do the ones that name no sensible stretch: first
// 0 (there is no position 0) and first beyond last + 1 (first = last + 1 is an empty stretch).
bool ApplyIntervals(const std::vector<Interval>& intervals, std::string& sequence) {
  const std::size_t length = sequence.size();
  for (const Interval& interval : intervals) {
    if (interval.first > length || interval.last > length) return false;
    if (interval.first == 0 || std::uint64_t{interval.first} > std::uint64_t{interval.last} + 1) {
      return false;
    }
    std::fill(sequence.begin() + interval.first - 1, sequence.begin() + interval.last, 'N');
  }
  return true;
}

}  // namespace

bool SSeq::Mask(Param& param) {
  std::string seqName;
  std::string maskName;
  std::string outName;
  if (!param.GetWord(seqName, "--seq") || !param.GetWord(maskName, "--mask") ||
      !param.GetWord(outName, "--out")) {
    return false;
  }
  if (!ReadFasta(seqName) || records_.size() != 1) return false;

  std::string text;
  if (!ReadWhole(maskName, text)) {
    PrintError({" : error, opening file ", maskName});
    return false;
  }
  SeqRecord& record = records_.front();
  if (!ApplyIntervals(ParseIntervals(text), record.sequence)) return false;

  // The message names the interval file, not the output: scripts match on it.
  std::FILE* file = std::fopen(outName.c_str(), "wb");
  if (file == nullptr) {
    PrintError({" : error, opening file ", maskName});
    return false;
  }
  std::string out;
  out.reserve(record.label.size() + record.sequence.size() + 2);
  out.append(record.label).append("\n").append(record.sequence).append("\n");
  WriteAll(file, out);
  std::fclose(file);
  return true;
}

}  // namespace genetrain
