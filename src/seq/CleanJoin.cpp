// --clean_join and --clean: joining the records of a contig file into one text, with the N-run
// editing both commands share. Neither the file nor the text is held whole: the records are read
// block by block and joined straight into the outputs, slice by slice.
#include <cstdio>
#include <optional>
#include <string>

#include "common/Message.h"
#include "common/Output.h"
#include "seq/FastaSource.h"
#include "seq/JoinedText.h"
#include "seq/RecordJoiner.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

// The contig file, read once or twice, with the number of its records.
class JoinInput {
 public:
  explicit JoinInput(std::size_t blockSize) : source_(blockSize) {}

  bool Open(const std::string& name) { return source_.Open(name); }

  // One reading: every record to the joiner. False after a reading message.
  bool JoinInto(RecordJoiner& joiner, Reading reading) {
    records_ = 0;
    JoiningSink sink{joiner, records_};
    return source_.Read(sink, reading);
  }

  std::size_t Records() const { return records_; }

 private:
  struct JoiningSink {
    RecordJoiner& joiner;
    std::size_t& records;
    void Begin() {
      ++records;
      joiner.Begin();
    }
    void Label(std::string_view) {}
    void Body(std::string_view piece) { joiner.Put(piece); }
    void End() { joiner.End(); }
  };

  FastaSource source_;
  std::size_t records_ = 0;
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

// One reading of the input joined into `text`, written or only counted; false after a reading
// message.
bool JoinText(JoinInput& input, const JoinOptions& options, JoinedText& text, RecordJoiner& joiner,
              Reading reading) {
  if (options.maxN >= 0) text.TrimRuns(static_cast<std::size_t>(options.maxN));
  joiner.AddOutput(text);
  const bool read = input.JoinInto(joiner, reading);
  text.Finish();
  return read;
}

// The report, when asked for, with the length of the final text.
bool WriteReport(const JoinOptions& options, std::size_t records, const RecordJoiner& joiner,
                 std::uint64_t length) {
  if (!options.log.has_value()) return true;
  const std::string report = JoinReport(records, joiner, length, options);
  if (!options.log->empty()) return WriteFile(*options.log, report, OutputMode::kAppend);
  WriteStdout(report);
  return true;
}

// The report must precede the text on standard output, and a stream must get nothing of an
// input that fails to read to its end: a first reading counts. Only trimming needs the letters
// for the length; otherwise it follows from the counts.
bool CountAndReport(JoinInput& input, const JoinOptions& options) {
  RecordJoiner joiner(options.filler, options.Minimum());
  JoinedText counted;
  if (options.maxN >= 0) {
    if (!JoinText(input, options, counted, joiner, Reading::kAgain)) return false;
  } else if (!input.JoinInto(joiner, Reading::kAgain)) {
    return false;
  }
  const std::uint64_t length = options.maxN >= 0 ? counted.Size() : joiner.Length();
  return WriteReport(options, input.Records(), joiner, length);
}

}  // namespace

bool SSeq::CleanJoin(Param& param) {
  return CleanJoin(param, kFastaBlockSize);
}

// A file replaced whole is made in one reading, behind its temporary name: the report, written
// before it is put in place, still comes first. A file that cannot be made that way is left to
// the two readings, which print its message where it has always come.
bool SSeq::CleanJoin(Param& param, std::size_t blockSize) {
  JoinOptions options;
  if (!ReadJoinOptions(param, options)) return false;
  JoinInput input(blockSize);
  if (!input.Open(options.seq)) return false;

  OutputFile out;
  if (OutputFile::ReplacesWhole(options.output) &&
      out.Open(options.output, OutputMode::kReplace, OpenFailure::kQuiet)) {
    JoinedText text(&out);
    RecordJoiner joiner(options.filler, options.Minimum());
    if (!JoinText(input, options, text, joiner, Reading::kLast) ||
        !WriteReport(options, input.Records(), joiner, text.Size())) {
      return false;
    }
    return out.Commit();
  }
  if (!CountAndReport(input, options) || !out.Open(options.output)) return false;
  JoinedText text(&out);
  RecordJoiner joiner(options.filler, options.Minimum());
  if (!JoinText(input, options, text, joiner, Reading::kLast)) return false;
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
bool WriteMasked(JoinInput& input, OutputFile& file, std::string_view filler,
                 std::int32_t minimum) {
  JoinedText masked(&file);
  RecordJoiner joiner(filler, minimum);
  joiner.AddOutput(masked, true);
  const bool read = input.JoinInto(joiner, Reading::kLast);
  masked.Finish();
  return read && file.Commit();
}

// Opens the outputs for the one reading that writes both. A stream among them gets nothing
// before the input is known to read to its end, so a first reading checks it; so does an output
// that cannot be opened, whose message comes after those of the input.
bool OpenOutputs(JoinInput& input, const CleanOptions& options, OutputFile& cleanFile,
                 OutputFile& maskedFile, bool onePass) {
  const bool bothWhole =
      OutputFile::ReplacesWhole(options.outClean) && OutputFile::ReplacesWhole(options.outMasked);
  if (bothWhole && cleanFile.Open(options.outClean, OutputMode::kReplace, OpenFailure::kQuiet) &&
      maskedFile.Open(options.outMasked, OutputMode::kReplace, OpenFailure::kQuiet)) {
    return true;
  }
  RecordJoiner counter(options.filler, static_cast<std::int32_t>(options.minContig));
  if (!input.JoinInto(counter, Reading::kAgain) || !cleanFile.Open(options.outClean)) return false;
  return !onePass || maskedFile.Open(options.outMasked);
}

}  // namespace

bool SSeq::Clean(Param& param) {
  return Clean(param, kFastaBlockSize);
}

// The clean copy is the joined text with its long N runs flanked on request; the masked copy is
// the join with N in place of every filler (the runs were N to begin with). Both are made in one
// reading when they go to two separate files.
bool SSeq::Clean(Param& param, std::size_t blockSize) {
  CleanOptions options;
  if (!ReadCleanOptions(param, options)) return false;
  JoinInput input(blockSize);
  if (!input.Open(options.seq)) return false;
  const auto minimum = static_cast<std::int32_t>(options.minContig);

  // Two streams (devices, pipes) may be one: then the masked copy follows the clean one. A file
  // replaced whole is renamed into place at the end, the masked one last, so one pass serves
  // both even where the two names are one file.
  const bool onePass =
      OutputFile::ReplacesWhole(options.outClean) || OutputFile::ReplacesWhole(options.outMasked);
  OutputFile cleanFile;
  OutputFile maskedFile;
  if (!OpenOutputs(input, options, cleanFile, maskedFile, onePass)) return false;
  JoinedText clean(&cleanFile);
  if (options.replaceN) clean.FlankRuns(options.left, options.right);
  JoinedText masked(onePass ? &maskedFile : nullptr);
  RecordJoiner joiner(options.filler, minimum);
  joiner.AddOutput(clean);
  if (onePass) joiner.AddOutput(masked, true);
  const bool read = input.JoinInto(joiner, onePass ? Reading::kLast : Reading::kAgain);
  clean.Finish();
  masked.Finish();
  if (!read || !cleanFile.Commit()) return false;
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
