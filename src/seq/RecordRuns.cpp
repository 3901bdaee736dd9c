// The record utilities that only count: they walk the loaded text record by record in place,
// without building the records, and give what the case-keeping view would give. In that view
// the letters a, c, g, t, u in either case stay bases and every other letter is a capital N;
// non-letters are dropped by the reader, so here they are invisible: they never break a run
// and never count as a position.

#include <array>
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>

#include "common/FileBuf.h"
#include "common/Format.h"
#include "common/Output.h"
#include "seq/FastaScanner.h"
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

// Calls onRun(first, length) for every maximal run of N letters of a raw body, positions
// counted in letters from 0, and returns the number of letters.
template <typename OnRun>
std::uint64_t ForEachNRun(std::string_view body, OnRun&& onRun) {
  const ClassTable& kind = Classes();
  const auto* bytes = reinterpret_cast<const unsigned char*>(body.data());
  const std::size_t size = body.size();
  std::uint64_t letters = 0;
  std::size_t i = 0;
  while (true) {
    i = SkipChunksWithoutN(body, i, letters);
    for (; i < size && kind[bytes[i]] != kLetterN; ++i) letters += kind[bytes[i]] != kNone;
    if (i == size) return letters;
    const std::uint64_t first = letters;
    for (; i < size && kind[bytes[i]] != kBase; ++i) letters += kind[bytes[i]] == kLetterN;
    onRun(first, letters - first);
  }
}

void AppendNumberTab(std::string& out, std::uint64_t value) {
  AppendInteger(out, value);
  out.push_back('\t');
}

// Integer part of count * 100 / total + 0.5, in double as the totals may be large.
std::uint64_t RoundedPercent(std::uint64_t count, std::uint64_t total) {
  return static_cast<std::uint64_t>(
      static_cast<double>(count) * 100.0 / static_cast<double>(total) + 0.5);
}

// One line of --stat_fasta. An empty record ends after its length and tab, without an end of
// line: the next record continues on the same line.
void AppendStatLine(std::string& out, std::string_view label, const SSeq::Tally& tally) {
  const std::uint64_t length = tally.All();
  out.append(label).push_back('\t');
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

// first + 1, last, length and label of the letters [begin, end), tab-separated.
void AppendStretch(std::string& out, std::uint64_t begin, std::uint64_t end,
                   std::string_view label) {
  AppendNumberTab(out, begin + 1);
  AppendNumberTab(out, end);
  AppendNumberTab(out, end - begin);
  out.append(label).push_back('\n');
}

// Stretches of a record between N runs longer than `maximum`; empty stretches are not shown.
void AppendStretches(std::string& out, const FastaSpan& record, std::int32_t maximum) {
  std::uint64_t start = 0;
  const std::uint64_t letters =
      ForEachNRun(record.body, [&](std::uint64_t first, std::uint64_t length) {
        if (static_cast<std::int64_t>(length) <= maximum) return;
        if (first > start) AppendStretch(out, start, first, record.label);
        start = first + length;
      });
  if (letters > start) AppendStretch(out, start, letters, record.label);
}

void AppendRunLengths(std::string& out, const FastaSpan& record) {
  out.append(record.label).push_back('<');
  ForEachNRun(record.body, [&out](std::uint64_t, std::uint64_t length) {
    out.push_back(' ');
    AppendInteger(out, length);
  });
  out.push_back('\n');
}

// Loads the file and writes to standard output what `appendRecord` makes of every record.
template <typename AppendRecord>
bool WriteEachRecord(const std::string& name, AppendRecord&& appendRecord) {
  FileBuf file;
  if (!file.Load(name.c_str())) return false;
  std::string out;
  FastaScanner scanner(file.View());
  FastaSpan record;
  while (scanner.Next(record)) appendRecord(out, record);
  WriteStdout(out);
  return true;
}

}  // namespace

bool MSSeq::StatFasta(Param& param) {
  std::string name;
  if (!param.GetWord(name, "--seq")) return false;
  return WriteEachRecord(name, [](std::string& out, const FastaSpan& record) {
    AppendStatLine(out, record.label, SSeq::TallyLetters(record.body));
  });
}

bool MSSeq::CountSubstringN(Param& param) {
  std::string name;
  if (!param.GetWord(name, "--seq")) return false;
  return WriteEachRecord(name, AppendRunLengths);
}

bool MSSeq::CountSubstringAtcg(Param& param) {
  std::string name;
  std::int32_t maximum = 0;
  if (!param.GetWord(name, "--seq") || !param.GetOpt(maximum, "--max_nnn_substring")) return false;
  return WriteEachRecord(name, [maximum](std::string& out, const FastaSpan& record) {
    AppendStretches(out, record, maximum);
  });
}

}  // namespace genetrain
