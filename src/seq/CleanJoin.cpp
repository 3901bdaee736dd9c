// --clean_join and --clean: joining the records of a contig file into one text, with the N-run
// editing both commands share. The text is never held whole: the records are joined straight
// from the loaded file into the outputs, slice by slice.
#include <cstdio>
#include <optional>
#include <string>

#include "common/FileBuf.h"
#include "common/Message.h"
#include "common/Output.h"
#include "seq/FastaScanner.h"
#include "seq/JoinedText.h"
#include "seq/RecordJoiner.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

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

  void JoinInto(RecordJoiner& joiner) const {
    for (const std::string_view body : bodies) joiner.Add(body);
  }
};

}  // namespace

namespace {

struct JoinOptions {
  std::string output;              // empty for standard output
  std::optional<std::string> log;  // empty for standard output
  std::string seq;
  std::uint32_t minContig = 1;
  std::string filler;
  std::int32_t maxN = -1;
  std::int32_t minSeq = 1;

  std::int32_t Minimum() const { return static_cast<std::int32_t>(minContig); }
};

bool ReadJoinOptions(Param& param, JoinOptions& options) {
  options.output = param.ValueOrEmpty("--clean_join");
  if (const std::string* log = param.Find("--log")) options.log = *log;
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
std::string JoinReport(std::size_t records, const RecordJoiner& joiner, std::uint64_t outLength,
                       const JoinOptions& options) {
  const SSeq::Tally& all = joiner.All();
  const SSeq::Tally& kept = joiner.Kept();
  std::string text = "Clean-Join      IN   OUT\n";
  AppendPair(text, "Contigs - ", records, joiner.KeptRecords());
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

// The report goes out before the joined text, and tells its length: a first pass counts. Only
// trimming needs the letters for that; otherwise the length follows from the counts.
std::string ReportFor(const RawFasta& input, const JoinOptions& options) {
  RecordJoiner joiner(options.filler, options.Minimum());
  JoinedText counted;
  if (options.maxN >= 0) {
    counted.TrimRuns(static_cast<std::size_t>(options.maxN));
    joiner.AddOutput(counted);
  }
  input.JoinInto(joiner);
  counted.Finish();
  const std::uint64_t length = options.maxN >= 0 ? counted.Size() : joiner.Length();
  return JoinReport(input.bodies.size(), joiner, length, options);
}

}  // namespace

bool SSeq::CleanJoin(Param& param) {
  JoinOptions options;
  if (!ReadJoinOptions(param, options)) return false;
  RawFasta input;
  if (!input.Load(options.seq)) return false;

  if (options.log.has_value()) {
    const std::string report = ReportFor(input, options);
    if (options.log->empty()) {
      WriteStdout(report);
    } else if (!WriteFile(*options.log, report, OutputMode::kAppend)) {
      return false;
    }
  }
  OutputFile out;
  if (!out.Open(options.output)) return false;
  JoinedText text(&out);
  if (options.maxN >= 0) text.TrimRuns(static_cast<std::size_t>(options.maxN));
  RecordJoiner joiner(options.filler, options.Minimum());
  joiner.AddOutput(text);
  input.JoinInto(joiner);
  text.Finish();
  if (options.output.empty()) out.Write("\n");
  return out.Commit();
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

// The masked copy on its own, after the clean one.
bool WriteMasked(const RawFasta& input, OutputFile& file, std::string_view filler,
                 std::int32_t minimum) {
  JoinedText masked(&file);
  RecordJoiner joiner(filler, minimum);
  joiner.AddOutput(masked, true);
  input.JoinInto(joiner);
  masked.Finish();
  return file.Commit();
}

}  // namespace

// The clean copy is the joined text with its long N runs flanked on request; the masked copy is
// the join with N in place of every filler (the runs were N to begin with). Both are made in one
// pass when they go to two separate files.
bool SSeq::Clean(Param& param) {
  CleanOptions options;
  if (!ReadCleanOptions(param, options)) return false;
  RawFasta input;
  if (!input.Load(options.seq)) return false;
  const auto minimum = static_cast<std::int32_t>(options.minContig);

  // Two streams (devices, pipes) may be one: then the masked copy follows the clean one. A file
  // replaced whole is renamed into place at the end, the masked one last, so one pass serves
  // both even where the two names are one file.
  const bool onePass =
      OutputFile::ReplacesWhole(options.outClean) || OutputFile::ReplacesWhole(options.outMasked);
  OutputFile cleanFile;
  OutputFile maskedFile;
  if (!cleanFile.Open(options.outClean)) return false;
  if (onePass && !maskedFile.Open(options.outMasked)) return false;
  JoinedText clean(&cleanFile);
  if (options.replaceN) clean.FlankRuns(options.left, options.right);
  JoinedText masked(onePass ? &maskedFile : nullptr);
  RecordJoiner joiner(options.filler, minimum);
  joiner.AddOutput(clean);
  if (onePass) joiner.AddOutput(masked, true);
  input.JoinInto(joiner);
  clean.Finish();
  masked.Finish();
  if (!cleanFile.Commit()) return false;
  if (onePass) {
    if (!maskedFile.Commit()) return false;
  } else if (!maskedFile.Open(options.outMasked) ||
             !WriteMasked(input, maskedFile, options.filler, minimum)) {
    return false;
  }

  // Signed as the option is; 64-bit so that a count beyond 2^31 is not taken as negative.
  const std::uint64_t unambiguous = joiner.Kept().Unambiguous();
  if (static_cast<std::int64_t>(unambiguous) < options.minSeq) {
    PrintError({"error: number of unambiguous letters in output sequence ",
                std::to_string(unambiguous), " less than allowed ",
                std::to_string(options.minSeq)});
    return false;
  }
  return true;
}

}  // namespace genetrain
