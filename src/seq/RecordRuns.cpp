// The record utilities that only count: they walk the file block by block, record by record,
// without building the records, and give what the case-keeping view would give. In that view
// the letters a, c, g, t, u in either case stay bases and every other letter is a capital N;
// non-letters are dropped by the reader, so here they are invisible: they never break a run
// and never count as a position.

#include "seq/RecordRuns.h"

#include <array>
#include <string>
#include <string_view>

#include "common/Format.h"
#include "common/Output.h"
#include "seq/FastaBlocks.h"
#include "seq/MSSeq.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

// What a raw byte is to an N run: invisible, an N letter, or a base that ends the run.
enum ByteClass : std::uint8_t { kNone = 0, kLetterN = 1, kBase = 2 };
using ClassTable = std::array<std::uint8_t, 256>;

const ClassTable& Classes() {
  static const ClassTable table = [] {
    const LetterTable& letters = CasePreservingLetterTable();
    ClassTable classes{};
    for (std::size_t byte = 0; byte < classes.size(); ++byte) {
      classes[byte] = letters[byte] == 0 ? kNone : letters[byte] == 'N' ? kLetterN : kBase;
    }
    return classes;
  }();
  return table;
}

// Moves over whole chunks without N letters, adding up their letters. The letter tally runs
// over vector registers, several times faster than a look-up per byte; most of a genome is
// passed here. The chunk is a whole number of vectors and fits the tally's 8-bit counters.
std::size_t SkipChunksWithoutN(std::string_view body, std::size_t i, std::uint64_t& letters) {
  constexpr std::size_t kChunk = 240;
  for (; body.size() - i >= kChunk; i += kChunk) {
    const SSeq::Tally tally = SSeq::TallyLetters(body.substr(i, kChunk));
    if (tally.n != 0) break;
    letters += tally.Unambiguous();
  }
  return i;
}

// Follows the maximal runs of N letters through the body of one record given in pieces, with
// positions counted in letters from 0. A run may go on from one piece into the next.
class NRunTracker {
 public:
  // Calls onRun(first, length) for every run that a base ends within the piece.
  template <typename OnRun>
  void Feed(std::string_view piece, OnRun&& onRun);
  // Calls onRun for a run that reaches the end of the body, and returns the number of letters.
  template <typename OnRun>
  std::uint64_t Finish(OnRun&& onRun);

 private:
  std::uint64_t letters_ = 0;
  std::uint64_t runFirst_ = 0;
  bool inRun_ = false;
};

template <typename OnRun>
void NRunTracker::Feed(std::string_view piece, OnRun&& onRun) {
  const ClassTable& kind = Classes();
  const auto* bytes = reinterpret_cast<const unsigned char*>(piece.data());
  const std::size_t size = piece.size();
  std::size_t i = 0;
  while (i < size) {
    if (!inRun_) {
      i = SkipChunksWithoutN(piece, i, letters_);
      for (; i < size && kind[bytes[i]] != kLetterN; ++i) letters_ += kind[bytes[i]] != kNone;
      if (i == size) return;
      inRun_ = true;
      runFirst_ = letters_;
    }
    for (; i < size && kind[bytes[i]] != kBase; ++i) letters_ += kind[bytes[i]] == kLetterN;
    if (i == size) return;
    inRun_ = false;
    onRun(runFirst_, letters_ - runFirst_);
  }
}

template <typename OnRun>
std::uint64_t NRunTracker::Finish(OnRun&& onRun) {
  if (inRun_) onRun(runFirst_, letters_ - runFirst_);
  const std::uint64_t letters = letters_;
  *this = {};
  return letters;
}

// The output, written to standard output whenever it reaches the limit, and at the end.
class OutputBuffer {
 public:
  explicit OutputBuffer(std::size_t limit) : limit_(limit) {}
  std::string& Text() { return text_; }
  void Pass() {
    if (text_.size() >= limit_) Flush();
  }
  void Flush() {
    WriteStdout(text_);
    text_.clear();
  }

 private:
  std::string text_;
  std::size_t limit_;
};

void AppendNumberTab(std::string& out, std::uint64_t value) {
  AppendInteger(out, value);
  out.push_back('\t');
}

// Integer part of count * 100 / total + 0.5, in double as the totals may be large.
std::uint64_t RoundedPercent(std::uint64_t count, std::uint64_t total) {
  return static_cast<std::uint64_t>(
      static_cast<double>(count) * 100.0 / static_cast<double>(total) + 0.5);
}

// The end of a --stat_fasta line, after the label. An empty record ends after its length and
// tab, without an end of line: the next record continues on the same line.
void AppendStatCounts(std::string& out, const SSeq::Tally& tally) {
  const std::uint64_t length = tally.All();
  out.push_back('\t');
  AppendNumberTab(out, length);
  if (length == 0) return;
  const std::uint64_t bases = tally.Unambiguous();
  if (bases == 0) {
    out.append("-\t-\t-\t-\t-\t");
  } else {
    for (const std::uint64_t count : {tally.c + tally.g, tally.a, tally.c, tally.g, tally.t})
      AppendNumberTab(out, RoundedPercent(count, bases));
  }
  AppendNumberTab(out, tally.n * 100 / length);
  for (const std::uint64_t count : {tally.a, tally.c, tally.g, tally.t})
    AppendNumberTab(out, count);
  AppendInteger(out, tally.n);
  out.push_back('\n');
}

// --stat_fasta: label, length, percentages and counts of each record.
class StatSink {
 public:
  explicit StatSink(OutputBuffer& out) : out_(out) {}
  void Begin() { tally_ = {}; }
  void Label(std::string_view piece) {
    out_.Text().append(piece);
    out_.Pass();
  }
  void Body(std::string_view piece) { tally_.Add(SSeq::TallyLetters(piece)); }
  void End() {
    AppendStatCounts(out_.Text(), tally_);
    out_.Pass();
  }

 private:
  OutputBuffer& out_;
  SSeq::Tally tally_;
};

// --count_substring_n: label, "<", and a blank and the length of every run of N.
class RunLengthSink {
 public:
  explicit RunLengthSink(OutputBuffer& out) : out_(out) {}
  void Begin() { bodyStarted_ = false; }
  void Label(std::string_view piece) {
    out_.Text().append(piece);
    out_.Pass();
  }
  void Body(std::string_view piece) {
    StartBody();
    runs_.Feed(piece, AppendLength{out_.Text()});
    out_.Pass();
  }
  void End() {
    StartBody();
    runs_.Finish(AppendLength{out_.Text()});
    out_.Text().push_back('\n');
    out_.Pass();
  }

 private:
  struct AppendLength {
    std::string& out;
    void operator()(std::uint64_t, std::uint64_t length) const {
      out.push_back(' ');
      AppendInteger(out, length);
    }
  };
  void StartBody() {
    if (!bodyStarted_) out_.Text().push_back('<');
    bodyStarted_ = true;
  }

  OutputBuffer& out_;
  NRunTracker runs_;
  bool bodyStarted_ = false;
};

// --count_substring_atcg: first, last and length of every non-empty stretch between runs of N
// longer than the maximum, with the record's label, which is kept for that.
class StretchSink {
 public:
  StretchSink(OutputBuffer& out, std::int32_t maximum) : out_(out), maximum_(maximum) {}
  void Begin() {
    label_.clear();
    start_ = 0;
  }
  void Label(std::string_view piece) { label_.append(piece); }
  void Body(std::string_view piece) {
    runs_.Feed(piece, [this](std::uint64_t first, std::uint64_t length) { OnRun(first, length); });
    out_.Pass();
  }
  void End() {
    const std::uint64_t letters =
        runs_.Finish([this](std::uint64_t first, std::uint64_t length) { OnRun(first, length); });
    if (letters > start_) AppendStretch(start_, letters);
    out_.Pass();
  }

 private:
  void OnRun(std::uint64_t first, std::uint64_t length) {
    if (static_cast<std::int64_t>(length) <= maximum_) return;
    if (first > start_) AppendStretch(start_, first);
    start_ = first + length;
  }
  // first + 1, last, length and label of the letters [begin, end), tab-separated.
  void AppendStretch(std::uint64_t begin, std::uint64_t end) {
    std::string& out = out_.Text();
    AppendNumberTab(out, begin + 1);
    AppendNumberTab(out, end);
    AppendNumberTab(out, end - begin);
    out.append(label_).push_back('\n');
  }

  OutputBuffer& out_;
  std::int32_t maximum_;
  std::string label_;
  NRunTracker runs_;
  std::uint64_t start_ = 0;
};

// Reads the file into the sink; the output is written as it grows and completed at the end.
// After a failure what is still held back is dropped.
template <typename Sink>
bool WriteThrough(const std::string& name, std::size_t blockSize, OutputBuffer& out, Sink& sink) {
  if (!ReadFastaBlocks(name, blockSize, sink)) return false;
  out.Flush();
  return true;
}

}  // namespace

bool WriteRecordStats(const std::string& name, std::size_t blockSize) {
  OutputBuffer out(blockSize);
  StatSink sink(out);
  return WriteThrough(name, blockSize, out, sink);
}

bool WriteNRunLengths(const std::string& name, std::size_t blockSize) {
  OutputBuffer out(blockSize);
  RunLengthSink sink(out);
  return WriteThrough(name, blockSize, out, sink);
}

bool WriteStretches(const std::string& name, std::int32_t maximum, std::size_t blockSize) {
  OutputBuffer out(blockSize);
  StretchSink sink(out, maximum);
  return WriteThrough(name, blockSize, out, sink);
}

bool MSSeq::StatFasta(Param& param) {
  std::string name;
  if (!param.GetWord(name, "--seq")) return false;
  return WriteRecordStats(name, kFastaBlockSize);
}

bool MSSeq::CountSubstringN(Param& param) {
  std::string name;
  if (!param.GetWord(name, "--seq")) return false;
  return WriteNRunLengths(name, kFastaBlockSize);
}

bool MSSeq::CountSubstringAtcg(Param& param) {
  std::string name;
  std::int32_t maximum = 0;
  if (!param.GetWord(name, "--seq") || !param.GetOpt(maximum, "--max_nnn_substring")) return false;
  return WriteStretches(name, maximum, kFastaBlockSize);
}

}  // namespace genetrain
