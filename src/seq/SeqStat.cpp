#include <string>
#include <string_view>

#include "common/FileBuf.h"
#include "common/Format.h"
#include "seq/FastaScanner.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

constexpr std::string_view kDefaultGcLabel = "GC% = ";

// The letters of a whole FASTA file in the single-case view, with its number of records and the
// label of its first record. Nothing is copied: the label points into the loaded text.
struct FileCounts {
  SSeq::Tally letters;
  std::uint64_t records = 0;
  std::string_view firstLabel;
};

FileCounts CountFile(std::string_view text) {
  FileCounts counts;
  FastaScanner scanner(text);
  FastaSpan span;
  while (scanner.Next(span)) {
    if (counts.records == 0) counts.firstLabel = span.label;
    ++counts.records;
    counts.letters.Add(SSeq::TallyLetters(span.body));
  }
  return counts;
}

void AppendRow(std::string& text, std::string_view caption, std::string_view value) {
  text.append(caption).append(value).push_back('\n');
}

void AppendRow(std::string& text, std::string_view caption, std::uint64_t value) {
  AppendRow(text, caption, std::to_string(value));
}

// Ten rows behind 15-character captions; scripts read them by position.
std::string StatTable(std::string_view label, const FileCounts& counts, std::uint32_t precision) {
  const SSeq::Tally& tally = counts.letters;
  std::string text;
  text.reserve(256 + label.size());
  AppendRow(text, "LABEL          ", label);
  AppendRow(text, "SEQUENCE_SIZE  ", tally.All());
  AppendRow(text, "SEQUENCE_ACGT  ", tally.Unambiguous());
  AppendRow(text, "NT_A           ", tally.a);
  AppendRow(text, "NT_C           ", tally.c);
  AppendRow(text, "NT_G           ", tally.g);
  AppendRow(text, "NT_T           ", tally.t);
  AppendRow(text, "NT_N           ", tally.n);
  AppendRow(text, "GC             ", FormatFixed(SSeq::GcPercent(tally), precision));
  AppendRow(text, "RECORDS        ", counts.records);
  return text;
}

}  // namespace

bool SSeq::Stat(Param& param) {
  std::string name;
  std::uint32_t precision = 1;
  if (!param.GetWord(name, "--seq") || !param.GetOpt(precision, "--GC_PRECISION")) return false;
  FileBuf file;
  if (!file.Load(name.c_str())) return false;
  const FileCounts counts = CountFile(file.View());
  // A one-record file is shown as file name, blank, header line.
  std::string label = name;
  if (counts.records == 1 && !counts.firstLabel.empty()) {
    label.append(" ").append(counts.firstLabel);
  }
  Set("--stat", "", StatTable(label, counts, precision));
  return Write(param.ValueOrEmpty("--stat"));
}

bool SSeq::Gc(Param& param) {
  std::string name;
  std::uint32_t precision = 1;
  std::string label(kDefaultGcLabel);
  if (!param.GetWord(name, "--seq") || !param.GetOpt(precision, "--GC_PRECISION") ||
      !param.GetOpt(label, "--GC_LABEL")) {
    return false;
  }
  FileBuf file;
  if (!file.Load(name.c_str())) return false;
  AppendFixed(label, GcPercent(CountFile(file.View()).letters), precision);
  Set("--gc", "", label);
  return Write(param.ValueOrEmpty("--gc"));
}

}  // namespace genetrain
