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
#include "seq/FastaSource.h"
#include "seq/LetterChunks.h"
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
// Every interval is checked before any is applied, so a refused one leaves nothing written.
bool CheckIntervals(const std::vector<Interval>& intervals, std::uint64_t length) {
  for (const Interval& interval : intervals) {
    if (interval.first > length || interval.last > length) return false;
    if (interval.first == 0 || std::uint64_t{interval.first} > std::uint64_t{interval.last} + 1) {
      return false;
    }
  }
  return true;
}

// The 0-based ranges of the intervals, in order and merged where they meet: setting N does not
// depend on the order, and the ranges can then be met in one walk along the sequence.
std::vector<SSeq::Range> MaskedRanges(const std::vector<Interval>& intervals) {
  std::vector<SSeq::Range> ranges;
  for (const Interval& interval : intervals) {
    if (interval.first <= interval.last) ranges.push_back({interval.first - 1u, interval.last});
  }
  std::sort(ranges.begin(), ranges.end(),
            [](const SSeq::Range& a, const SSeq::Range& b) { return a.begin < b.begin; });
  std::vector<SSeq::Range> merged;
  for (const SSeq::Range& range : ranges) {
    if (!merged.empty() && range.begin <= merged.back().end) {
      merged.back().end = std::max(merged.back().end, range.end);
    } else {
      merged.push_back(range);
    }
  }
  return merged;
}

// Sets to N what the ranges cover of the letters at `offset` of the sequence; `next` is the first
// range not yet passed.
void MaskPiece(char* letters, std::size_t size, std::size_t offset,
               const std::vector<SSeq::Range>& ranges, std::size_t& next) {
  const std::size_t end = offset + size;
  for (; next < ranges.size() && ranges[next].begin < end; ++next) {
    const std::size_t from = std::max(ranges[next].begin, offset);
    const std::size_t to = std::min(ranges[next].end, end);
    if (from < to) std::memset(letters + (from - offset), 'N', to - from);
    if (ranges[next].end > end) break;  // goes on into the next piece
  }
}

// Writes the first record of the file as it streams past: the label line, then the letters of
// the body with the ranges set to N, on one line. With no output it only counts the records and
// the first one's letters. A second record stops the reading: the command fails then.
class MaskingSink {
 public:
  MaskingSink(OutputFile* output, const std::vector<SSeq::Range>& ranges)
      : output_(output), ranges_(ranges) {}

  void Begin() { ++records_; }
  void Label(std::string_view piece) { Write(piece); }
  void Body(std::string_view piece) {
    EndLabel();
    LetterChunks chunks(piece, UpperLetterTable(), buffer_);
    std::string_view letters;  // stands at the start of the buffer
    while (chunks.Next(letters)) {
      if (output_ != nullptr) {
        MaskPiece(buffer_.data(), letters.size(), length_, ranges_, next_);
        Write(letters);
      }
      length_ += letters.size();
    }
  }
  void End() {
    EndLabel();
    Write("\n");
  }
  bool Stopped() const { return records_ > 1; }

  std::size_t Records() const { return records_; }
  std::uint64_t Length() const { return length_; }

 private:
  void Write(std::string_view bytes) {
    if (output_ != nullptr && records_ == 1) output_->Write(bytes);
  }
  void EndLabel() {
    if (labelEnded_) return;
    labelEnded_ = true;
    Write("\n");
  }

  OutputFile* output_;
  const std::vector<SSeq::Range>& ranges_;
  std::size_t records_ = 0;
  std::uint64_t length_ = 0;
  std::size_t next_ = 0;  // the first range not yet passed
  bool labelEnded_ = false;
  std::string buffer_;
};

struct MaskOptions {
  std::string seq;
  std::string intervals;
  std::string out;
};

bool ReadMaskOptions(Param& param, MaskOptions& options) {
  return param.GetWord(options.seq, "--seq") && param.GetWord(options.intervals, "--mask") &&
         param.GetWord(options.out, "--out");
}

}  // namespace

bool SSeq::Mask(Param& param) {
  return Mask(param, kFastaBlockSize);
}

// A file replaced whole is masked as the record is read, behind its temporary name, and put in
// place only once every check has passed. Any other output (a stream) gets nothing before then:
// a first reading checks, a second one writes.
bool SSeq::Mask(Param& param, std::size_t blockSize) {
  MaskOptions options;
  if (!ReadMaskOptions(param, options)) return false;
  FastaSource input(blockSize);
  if (!input.Open(options.seq)) return false;
  // Read now, to mask as the record streams past; its failure is told after the record's.
  std::string text;
  const bool intervalsRead = ReadWhole(options.intervals, text);
  const std::vector<Interval> intervals = ParseIntervals(text);
  const std::vector<SSeq::Range> ranges = MaskedRanges(intervals);

  OutputFile file;
  const bool streamed = OutputFile::ReplacesWhole(options.out) &&
                        file.Open(options.out, OutputMode::kReplace, OpenFailure::kQuiet);
  MaskingSink sink(streamed ? &file : nullptr, ranges);
  if (!input.Read(sink, streamed ? Reading::kLast : Reading::kAgain) || sink.Records() != 1) {
    return false;
  }
  if (!intervalsRead) {
    PrintError({" : error, opening file ", options.intervals});
    return false;
  }
  if (!CheckIntervals(intervals, sink.Length())) return false;
  if (!streamed) {
    // The message names the interval file, not the output: scripts match on it.
    if (!file.Open(options.out, OutputMode::kReplace, OpenFailure::kQuiet)) {
      PrintError({" : error, opening file ", options.intervals});
      return false;
    }
    MaskingSink writer(&file, ranges);
    if (!input.Read(writer, Reading::kLast)) return false;
  }
  return file.Commit();
}

}  // namespace genetrain
