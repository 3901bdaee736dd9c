// --clean_join and --clean: joining the records of a contig file into one text, with the N-run
// editing both commands share.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "common/FileBuf.h"
#include "common/Message.h"
#include "common/Output.h"
#include "seq/FastaScanner.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

// The room the joined text can need: every source and a filler between each two, and one spare
// byte so that an end of line can follow without moving the text.
std::size_t JoinCapacity(const std::vector<std::string_view>& sources, std::size_t fillerSize) {
  std::size_t total = 1;
  for (const std::string_view source : sources) total += source.size();
  if (!sources.empty()) total += (sources.size() - 1) * fillerSize;
  return total;
}

// Both joins; `ranges` is null for the unmarked one. A source is a record's sequence, either as
// read or as raw FASTA text (line ends and all): both are counted and copied through the
// single-case view, which leaves read sequences as they are. The minimum arrives as a signed
// 32-bit number (a minimum of 2^31 or more has turned negative and keeps every record). Counts
// are 64-bit and compared as such: identical to a 32-bit comparison below 2^31 letters per
// record, and a larger record is not cut to 32 bits.
std::size_t Join(const std::vector<std::string_view>& sources, std::string& out,
                 std::string_view filler, std::int32_t minimum, SSeq::Tally& all, SSeq::Tally& kept,
                 std::vector<SSeq::Range>* ranges) {
  out.clear();
  out.reserve(JoinCapacity(sources, filler.size()));
  std::size_t keptRecords = 0;
  for (const std::string_view source : sources) {
    const SSeq::Tally own = SSeq::TallyLetters(source);
    all.Add(own);
    if (static_cast<std::int64_t>(own.Unambiguous()) < minimum) continue;
    // The test is on the text, not on the count: records kept while the text is still empty
    // get no filler after them.
    if (!out.empty()) {
      if (ranges != nullptr) ranges->push_back({out.size(), out.size() + filler.size()});
      out.append(filler);
    }
    AppendLetters(source, UpperLetterTable(), out);
    kept.Add(own);
    ++keptRecords;
  }
  return keptRecords;
}

std::vector<std::string_view> Sequences(const std::vector<SeqRecord>& records) {
  std::vector<std::string_view> sequences;
  sequences.reserve(records.size());
  for (const SeqRecord& record : records) sequences.push_back(record.sequence);
  return sequences;
}

// A FASTA file whose records are joined straight from the loaded text: no record is copied.
struct RawFasta {
  FileBuf file;
  std::vector<std::string_view> bodies;

  bool Load(const std::string& name) {
    if (!file.Load(name.c_str())) return false;
    FastaScanner scanner(file.View());
    FastaSpan span;
    while (scanner.Next(span)) bodies.push_back(span.body);
    return true;
  }
};

// The end of the run of N that starts at `pos`.
std::size_t RunEnd(const char* data, std::size_t pos, std::size_t size) {
  while (pos < size && data[pos] == 'N') ++pos;
  return pos;
}

// The next N at or after `pos`, or `size`.
std::size_t NextN(const char* data, std::size_t pos, std::size_t size) {
  const void* hit = std::memchr(data + pos, 'N', size - pos);
  return hit == nullptr ? size : static_cast<std::size_t>(static_cast<const char*>(hit) - data);
}

}  // namespace

std::size_t SSeq::JoinRecords(std::string& out, std::string_view filler, std::int32_t minimum,
                              Tally& all, Tally& kept) const {
  return Join(Sequences(records_), out, filler, minimum, all, kept, nullptr);
}

std::size_t SSeq::JoinRecordsMarked(std::string& out, std::string_view filler, std::int32_t minimum,
                                    Tally& all, Tally& kept, std::vector<Range>& ranges) const {
  return Join(Sequences(records_), out, filler, minimum, all, kept, &ranges);
}

// One pass with a read and a write cursor: text before a run moves down by what earlier runs
// lost, a run leaves at most `maximum` N behind. Nothing moves until the first long run.
void SSeq::TrimNRuns(std::string& text, std::int32_t maximum) {
  if (maximum < 0) return;
  const auto keep = static_cast<std::size_t>(maximum);
  char* data = text.data();
  const std::size_t size = text.size();
  std::size_t read = 0;
  std::size_t write = 0;
  while (read < size) {
    const std::size_t start = NextN(data, read, size);
    if (write != read) std::memmove(data + write, data + read, start - read);
    write += start - read;
    if (start == size) break;
    const std::size_t end = RunEnd(data, start, size);
    const std::size_t left = std::min(end - start, keep);
    if (write != start) std::memset(data + write, 'N', left);
    write += left;
    read = end;
  }
  text.resize(write);
}

void SSeq::ReplaceNRuns(std::string& text, std::vector<Range>& ranges, std::string_view left,
                        std::string_view right) {
  const std::size_t shortest = left.size() + right.size();
  char* data = text.data();
  const std::size_t size = text.size();
  std::size_t start = NextN(data, 0, size);
  while (start < size) {
    const std::size_t end = RunEnd(data, start, size);
    if (end - start >= shortest) {
      left.copy(data + start, left.size());
      right.copy(data + end - right.size(), right.size());
      ranges.push_back({start, end});
    }
    start = NextN(data, end, size);
  }
}

namespace {

struct JoinOptions {
  std::string seq;
  std::uint32_t minContig = 1;
  std::string filler;
  std::int32_t maxN = -1;
  std::int32_t minSeq = 1;
};

bool ReadJoinOptions(Param& param, JoinOptions& options) {
  return param.GetWord(options.seq, "--seq") &&
         param.GetOpt(options.minContig, "--MIN_CONTIG_SIZE") &&
         param.GetOpt(options.filler, "--GAP_FILLER") &&
         param.GetOpt(options.maxN, "--MAX_N_SUBSTRING") &&
         param.GetOpt(options.minSeq, "--MIN_SEQ_SIZE");
}

void AppendPair(std::string& text, std::string_view label, std::uint64_t all, std::uint64_t kept) {
  text.append(label).append(std::to_string(all)).append(" ").append(std::to_string(kept));
  text.push_back('\n');
}

// Line 3 alone has three blanks between its numbers: scripts that read the report expect them.
std::string JoinReport(std::size_t records, std::size_t keptRecords, const SSeq::Tally& all,
                       const SSeq::Tally& kept, std::size_t outLength, const JoinOptions& options) {
  std::string text = "Clean-Join      IN   OUT\n";
  AppendPair(text, "Contigs - ", records, keptRecords);
  text.append("All letters - ").append(std::to_string(all.All())).append("   ");
  text.append(std::to_string(outLength)).push_back('\n');
  AppendPair(text, "Unambiguous letters - ", all.Unambiguous(), kept.Unambiguous());
  AppendPair(text, "A - ", all.a, kept.a);
  AppendPair(text, "C - ", all.c, kept.c);
  AppendPair(text, "G - ", all.g, kept.g);
  AppendPair(text, "T - ", all.t, kept.t);
  AppendPair(text, "N - ", all.n, kept.n);
  text.append("Parameters:\n");
  text.append("  Minimum of unambiguous letters per record: ")
      .append(std::to_string(options.minContig))
      .push_back('\n');
  text.append("  Trim down substrings \"N...N\" to maximum length: ")
      .append(std::to_string(options.maxN))
      .push_back('\n');
  text.append("  Connect records using gap filler: ").append(options.filler).push_back('\n');
  text.append("  Minimum of unambiguous letters in output: ")
      .append(std::to_string(options.minSeq))
      .push_back('\n');
  return text;
}

}  // namespace

bool SSeq::CleanJoin(Param& param) {
  const std::string outName = param.ValueOrEmpty("--clean_join");
  JoinOptions options;
  if (!ReadJoinOptions(param, options)) return false;
  std::string joined;
  Tally all;
  Tally kept;
  std::size_t records = 0;
  std::size_t keptRecords = 0;
  {
    RawFasta input;
    if (!input.Load(options.seq)) return false;
    records = input.bodies.size();
    keptRecords = Join(input.bodies, joined, options.filler,
                       static_cast<std::int32_t>(options.minContig), all, kept, nullptr);
  }
  if (options.maxN >= 0) TrimNRuns(joined, options.maxN);

  if (const std::string* log = param.Find("--log")) {
    const std::string report = JoinReport(records, keptRecords, all, kept, joined.size(), options);
    if (log->empty()) {
      WriteStdout(report);
    } else {
      WriteFile(*log, report, true);
    }
  }
  if (outName.empty()) {
    joined.push_back('\n');  // the spare byte of the join: no reallocation
    WriteStdout(joined);
  } else {
    WriteFile(outName, joined);
  }
  return true;
}

namespace {

struct CleanOptions {
  std::string seq;
  std::string outClean;
  std::string outMasked;
  std::uint32_t minContig = 1;
  std::string filler;
  std::int32_t minSeq = 1;
  bool replaceN = false;
  std::string left;
  std::string right;
};

bool ReadCleanOptions(Param& param, CleanOptions& options) {
  return param.GetWord(options.seq, "--seq") && param.GetWord(options.outClean, "--out_clean") &&
         param.GetWord(options.outMasked, "--out_masked") &&
         param.GetOpt(options.minContig, "--MIN_CONTIG_SIZE") &&
         param.GetOpt(options.filler, "--GAP_FILLER") &&
         param.GetOpt(options.minSeq, "--MIN_SEQ_SIZE") &&
         param.GetOpt(options.replaceN, "--REPLACE_N_STRING") &&
         param.GetOpt(options.left, "--LEFT_GAP_FILLER") &&
         param.GetOpt(options.right, "--RIGHT_GAP_FILLER");
}

}  // namespace

// The masked copy is made in place after the clean copy is written: one text serves both.
bool SSeq::Clean(Param& param) {
  CleanOptions options;
  if (!ReadCleanOptions(param, options)) return false;
  std::string joined;
  Tally all;
  Tally kept;
  std::vector<Range> ranges;
  {
    RawFasta input;
    if (!input.Load(options.seq)) return false;
    Join(input.bodies, joined, options.filler, static_cast<std::int32_t>(options.minContig), all,
         kept, &ranges);
  }
  if (options.replaceN) ReplaceNRuns(joined, ranges, options.left, options.right);
  WriteFile(options.outClean, joined);

  for (const Range& range : ranges) {
    std::memset(joined.data() + range.begin, 'N', range.end - range.begin);
  }
  WriteFile(options.outMasked, joined);

  // Signed as the option is; 64-bit so that a count beyond 2^31 is not taken as negative.
  if (static_cast<std::int64_t>(kept.Unambiguous()) < options.minSeq) {
    PrintError({"error: number of unambiguous letters in output sequence ",
                std::to_string(kept.Unambiguous()), " less than allowed ",
                std::to_string(options.minSeq)});
    return false;
  }
  return true;
}

}  // namespace genetrain
