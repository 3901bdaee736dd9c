// The record utilities that rewrite records: renaming (--clean_fasta) and the filter of coding
// sequences (--CLEAN_CODING).

#include <cstdio>
#include <string>
#include <string_view>

#include "seq/MSSeq.h"

#include "common/Format.h"
#include "common/Output.h"
#include "seq/FastaBlocks.h"
#include "seq/LetterChunks.h"

namespace genetrain {

namespace {

// The letters of a coding sequence kept for training: all but the first `left` and the last
// `right`. Margins that meet or cross leave nothing.
std::string_view Inner(std::string_view sequence, std::uint32_t left, std::uint32_t right) {
  const std::uint64_t margins = std::uint64_t{left} + right;
  if (margins >= sequence.size()) return {};
  return sequence.substr(left, sequence.size() - margins);
}

struct CodingCounts {
  std::uint64_t records = 0, good = 0, bad = 0, shorter = 0;
};

// Renames the records as they stream past: the output gets each new header and the letters,
// the index a line of new and old label per record. The output is opened with the first record
// (or at the end, for a file without any), so that an input that cannot be opened is reported
// before an output that cannot be written. The index is written as it goes, behind its
// temporary name, when it replaces a file; otherwise (a stream, or a file that cannot be made)
// it is gathered and written after the output, where its message has always come.
class RenamingSink {
 public:
  RenamingSink(const std::string& output, const std::string& index, const std::string& prefix)
      : output_(output), index_(index), prefix_(prefix) {}

  void Begin() {
    Open();
    header_.clear();
    header_.push_back('>');
    header_.append(prefix_).push_back('.');
    AppendInteger(header_, records_++);
    Index(header_);
    Index("\t");
    header_.push_back('\n');
    fasta_.Write(header_);
  }
  void Label(std::string_view piece) { Index(piece); }
  void Body(std::string_view piece) {
    if (Stopped()) return;
    LetterChunks chunks(piece, CasePreservingLetterTable(), buffer_);
    std::string_view letters;
    while (chunks.Next(letters)) fasta_.Write(letters);
  }
  void End() {
    Index("\n");
    fasta_.Write("\n\n");
  }
  // An output that cannot be written ends the reading. An index that cannot is told only after
  // the output is in place, as it has always been.
  bool Stopped() const { return fasta_.Failed(); }

  // Puts the output in place (made now when the input held no record), then the index; false
  // when either could not be written.
  bool Finish() {
    Open();
    if (!fasta_.Commit()) return false;
    if (indexStreamed_) return indexFile_.Commit();
    return WriteFile(index_, names_);
  }

 private:
  void Open() {
    if (opened_) return;
    opened_ = true;
    fasta_.Open(output_);
    indexStreamed_ = OutputFile::ReplacesWhole(index_) &&
                     indexFile_.Open(index_, OutputMode::kReplace, OpenFailure::kQuiet);
  }
  void Index(std::string_view piece) {
    if (indexStreamed_) {
      indexFile_.Write(piece);
    } else {
      names_.append(piece);
    }
  }

  const std::string& output_;
  const std::string& index_;
  const std::string& prefix_;
  OutputFile fasta_;
  OutputFile indexFile_;
  bool opened_ = false;
  bool indexStreamed_ = false;
  std::size_t records_ = 0;
  std::string header_, names_, buffer_;
};

struct CleanFastaOptions {
  std::string input, index, output, prefix;
};

bool ReadCleanFastaOptions(Param& param, CleanFastaOptions& options) {
  return param.GetWord(options.input, "--clean_fasta") &&
         param.GetWord(options.index, "--clean_fasta_index") &&
         param.GetWord(options.output, "--clean_fasta_out") &&
         param.GetWord(options.prefix, "--clean_fasta_label");
}

}  // namespace

bool MSSeq::CleanFasta(Param& param) {
  return CleanFasta(param, kFastaBlockSize);
}

// The input is read block by block, so memory stays small whatever its size.
bool MSSeq::CleanFasta(Param& param, std::size_t blockSize) {
  CleanFastaOptions options;
  if (!ReadCleanFastaOptions(param, options)) return false;
  RenamingSink sink(options.output, options.index, options.prefix);
  return ReadFastaBlocks(options.input, blockSize, sink) && sink.Finish();
}

bool MSSeq::CleanCoding(Param& param) {
  std::string name, output;
  bool printLabel = false;
  std::uint32_t left = 0, right = 0, minimum = 0;
  if (!param.GetWord(name, "--seq") || !param.GetWord(output, "--CLEAN_CODING") ||
      !param.Get(printLabel, "--PRINT_LABEL") || !param.Get(left, "--MKCHAIN_L_MARGING") ||
      !param.Get(right, "--MKCHAIN_R_MARGING") || !param.Get(minimum, "--MIN_COD")) {
    return false;
  }
  if (!ReadFasta(name)) return false;
  ReadStopCodons(param, OnBadFlag::kLeaveOut, stops_);
  CodingCounts counts;
  std::string kept, messages;
  std::size_t size = 0;
  for (const SeqRecord& record : records_) size += record.label.size() + record.sequence.size() + 2;
  kept.reserve(size);
  for (const SeqRecord& record : records_) {
    ++counts.records;
    if (!IsCleanCoding(record.sequence, left, right)) {
      messages.append("error in record ").append(record.label).push_back('\n');
      ++counts.bad;
      continue;
    }
    ++counts.good;
    if (minimum >= record.sequence.size()) {
      ++counts.shorter;
      continue;
    }
    if (printLabel) kept.append(record.label).push_back('\n');
    kept.append(Inner(record.sequence, left, right)).push_back('\n');
  }
  if (!WriteFile(output, kept)) return false;
  messages.append(name)
      .append(" records ")
      .append(std::to_string(counts.records))
      .append(" good ")
      .append(std::to_string(counts.good))
      .append(" bad ")
      .append(std::to_string(counts.bad))
      .append(" short ")
      .append(std::to_string(counts.shorter))
      .push_back('\n');
  WriteStdout(messages);
  return true;
}

// Margins that add up to the length leave an empty inner region and fail; margins that add up
// to more are not guarded against: nothing is left to hold a stop, so the record passes.
bool MSSeq::IsCleanCoding(std::string_view sequence, std::uint32_t left,
                          std::uint32_t right) const {
  if (sequence.size() % 3 != 0) return false;
  if (std::uint64_t{left} + right == sequence.size()) return false;
  return HasNoStop(Inner(sequence, left, right));
}

// Whole codons only: a partial codon at the end is no codon. Capitals only: a lower-case
// (soft-masked) stop codon is not looked up.
bool MSSeq::HasNoStop(std::string_view range) const {
  const auto code = [](char letter) {
    const std::size_t base = std::string_view("ACGT").find(letter);
    return base == std::string_view::npos ? std::uint8_t{kOther} : static_cast<std::uint8_t>(base);
  };
  for (std::size_t i = 0; i + 3 <= range.size(); i += 3) {
    const std::uint8_t b1 = code(range[i]), b2 = code(range[i + 1]), b3 = code(range[i + 2]);
    if (IsBase(b1) && IsBase(b2) && IsBase(b3) && stops_[CodonIndex(b1, b2, b3)]) return false;
  }
  return true;
}

}  // namespace genetrain
