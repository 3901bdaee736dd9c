#include <string>
#include <string_view>

#include "common/Format.h"
#include "seq/FastaBlocks.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

constexpr std::string_view kDefaultGcLabel = "GC% = ";

void AppendRow(std::string& text, std::string_view caption, std::string_view value) {
  text.append(caption).append(value).push_back('\n');
}

void AppendRow(std::string& text, std::string_view caption, std::uint64_t value) {
  AppendRow(text, caption, std::to_string(value));
}

// Ten rows behind 15-character captions; scripts read them by position.
std::string StatTable(std::string_view label, const SSeq::FileCounts& counts,
                      std::uint32_t precision) {
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

// Counts what the records of the file hold, all together; keeps the first label only while it
// is the only one.
class CountingSink {
 public:
  explicit CountingSink(SSeq::FileCounts& counts) : counts_(counts) {}
  void Begin() {
    if (++counts_.records == 2) std::string().swap(counts_.firstLabel);
  }
  void Label(std::string_view piece) {
    if (counts_.records == 1) counts_.firstLabel.append(piece);
  }
  void Body(std::string_view piece) { counts_.letters.Add(SSeq::TallyLetters(piece)); }
  void End() {}

 private:
  SSeq::FileCounts& counts_;
};

}  // namespace

bool SSeq::CountFile(const std::string& name, std::size_t blockSize, FileCounts& counts) {
  counts = {};
  CountingSink sink(counts);
  return ReadFastaBlocks(name, blockSize, sink);
}

namespace {

struct StatOptions {
  std::string output;  // empty for standard output
  std::string seq;
  std::uint32_t precision = 1;
  std::string label{kDefaultGcLabel};  // --gc only
};

// The output is the value of the command key, `command`.
bool ReadStatOptions(Param& param, std::string_view command, StatOptions& options) {
  options.output = param.ValueOrEmpty(command);
  return param.GetWord(options.seq, "--seq") && param.GetOpt(options.precision, "--GC_PRECISION") &&
         (command != "--gc" || param.GetOpt(options.label, "--GC_LABEL"));
}

}  // namespace

bool SSeq::Stat(Param& param) {
  StatOptions options;
  if (!ReadStatOptions(param, "--stat", options)) return false;
  FileCounts counts;
  if (!CountFile(options.seq, kFastaBlockSize, counts)) return false;
  // A one-record file is shown as file name, blank, header line.
  std::string label = options.seq;
  if (counts.records == 1 && !counts.firstLabel.empty()) {
    label.append(" ").append(counts.firstLabel);
  }
  Set("--stat", "", StatTable(label, counts, options.precision));
  return Write(options.output);
}

bool SSeq::Gc(Param& param) {
  StatOptions options;
  if (!ReadStatOptions(param, "--gc", options)) return false;
  FileCounts counts;
  if (!CountFile(options.seq, kFastaBlockSize, counts)) return false;
  AppendFixed(options.label, GcPercent(counts.letters), options.precision);
  Set("--gc", "", options.label);
  return Write(options.output);
}

}  // namespace genetrain
