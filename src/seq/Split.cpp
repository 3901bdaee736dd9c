#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "common/Format.h"
#include "common/Message.h"
#include "common/Output.h"
#include "seq/FastaScanner.h"
#include "seq/FastaSource.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

struct SplitOptions {
  std::string base;
  std::string seqName;
  std::int32_t size = 0;
  std::int32_t minimum = 0;
  std::int32_t lineWidth = 0;
  std::int32_t maxRun = 0;
  std::int32_t margin = 0;
  bool noLabel = false;
  bool soft = false;
};

// A piece length or margin below zero has no meaning (a negative piece length would never reach
// the end of a record): such a value is refused like a malformed one. A negative line width is
// taken as the unsigned number it stands for, a line longer than any sequence.
bool GetOptNotNegative(Param& param, std::int32_t& target, std::string_view key) {
  if (!param.GetOpt(target, key)) return false;
  if (target >= 0) return true;
  param.ReportBadValue(key);
  return false;
}

// Reads the settings in their fixed order; the first that fails ends the command.
bool ReadOptions(Param& param, SplitOptions& options) {
  if (const std::string* base = param.Find("--split"); base != nullptr) options.base = *base;
  return param.GetWord(options.seqName, "--seq") &&
         GetOptNotNegative(param, options.size, "--SPLIT_SIZE") &&
         param.GetOpt(options.minimum, "--MIN_SPLIT_SIZE") &&
         param.GetOpt(options.lineWidth, "--letters_per_line") &&
         param.GetOpt(options.maxRun, "--max_nnn_substring") &&
         GetOptNotNegative(param, options.margin, "--nnn_margin") &&
         param.GetOpt(options.noLabel, "--NO_LABEL") && param.GetOpt(options.soft, "--soft");
}

constexpr std::array<bool, 256> MakeSoftMaskedTable() {
  std::array<bool, 256> table{};
  for (const unsigned char letter : {'a', 'c', 'g', 't'}) table[letter] = true;
  return table;
}

constexpr std::array<bool, 256> kSoftMasked = MakeSoftMaskedTable();
constexpr std::size_t kMaxMaskedN = 1000;

// Capitals and N lack the 0x20 bit that every lower-case letter has: eight bytes without it
// hold no soft-masked letter, and each of them ends a run.
bool HoldsNoLowerCase(const char* bytes) {
  constexpr std::uint64_t kLowerCaseBits = 0x2020202020202020;
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return (word & kLowerCaseBits) == 0;
}

// Caps soft-masked stretches: in every run of lower-case a, c, g, t the first 1000 letters become
// N and the rest blanks, which every FASTA reader of this tool drops.
void ConvertSoftMasked(char* begin, char* end) {
  constexpr std::size_t kBlock = 8;
  std::size_t run = 0;
  char* letter = begin;
  while (letter != end) {
    const std::size_t step = std::min(static_cast<std::size_t>(end - letter), kBlock);
    if (step == kBlock && HoldsNoLowerCase(letter)) {
      run = 0;
      letter += kBlock;
      continue;
    }
    for (char* const stop = letter + step; letter != stop; ++letter) {
      if (!kSoftMasked[static_cast<unsigned char>(*letter)]) {
        run = 0;
        continue;
      }
      ++run;
      *letter = run <= kMaxMaskedN ? 'N' : ' ';
    }
  }
}

// Writes a label line and the letters [begin, end) of the sequence, after converting their
// soft-masked letters (only --soft reading keeps lower case: without it there are none). At line
// width 0 the letters go out as they stand; otherwise `text` is a scratch buffer kept between
// files. False when the file cannot be written.
bool WritePart(const std::string& name, std::string_view label, std::string& sequence,
               std::size_t begin, std::size_t end, const SplitOptions& options, std::string& text) {
  if (options.soft) ConvertSoftMasked(sequence.data() + begin, sequence.data() + end);
  const std::string_view part = std::string_view(sequence).substr(begin, end - begin);
  if (options.lineWidth == 0) {
    return WriteFile(name, {label, "\n", part, part.empty() ? "" : "\n"});
  }
  text.clear();
  SSeq::WriteLines(part, static_cast<std::uint32_t>(options.lineWidth), text);
  return WriteFile(name, {label, "\n", text});
}

// The whole record in one file; a record shorter than the minimum (compared unsigned, so a
// negative minimum skips every record) keeps its number but is not written.
bool WriteWholeRecord(std::string_view label, std::string& sequence, const SplitOptions& options,
                      std::int64_t& k, std::string& text) {
  ++k;
  if (sequence.size() < static_cast<std::size_t>(options.minimum)) return true;
  return WritePart(SSeq::MakeName(options.base, "_", k), label, sequence, 0, sequence.size(),
                   options, text);
}

// The label line of a piece: its record's label and its 1-based first and last position.
std::string PieceLabel(std::string_view label, std::int64_t first, std::int64_t last) {
  std::string text = SSeq::MakeName(label, " SUBSTRING POS_L ", first);
  text.append(" POS_R ");
  AppendInteger(text, last);
  return text;
}

// The label line of a piece under --NO_LABEL: its file name.
std::string PieceLabel(std::string_view fileName) {
  std::string text;
  text.reserve(fileName.size() + 1);
  text.push_back('>');
  text.append(fileName);
  return text;
}

// One file per piece of `options.size` letters; a remainder of at most `options.minimum` letters
// joins the piece before it, and a piece not longer than the minimum keeps its number but is not
// written. With a negative minimum the last piece still ends at the record's end.
bool WritePieces(std::string_view label, std::string& sequence, const SplitOptions& options,
                 std::int64_t& k, std::string& text) {
  const std::int64_t size = options.size;
  const std::int64_t minimum = options.minimum;
  const auto n = static_cast<std::int64_t>(sequence.size());
  for (std::int64_t p = 0; p < n;) {
    ++k;
    const std::int64_t e = p + size + minimum >= n ? n : std::min(p + size, n);
    if (e - p > minimum) {
      const std::string name = SSeq::MakeName(options.base, "_", k);
      const std::string pieceLabel =
          options.noLabel ? PieceLabel(name) : PieceLabel(label, p + 1, e);
      if (!WritePart(name, pieceLabel, sequence, static_cast<std::size_t>(p),
                     static_cast<std::size_t>(e), options, text)) {
        return false;
      }
    }
    p = e;
  }
  return true;
}

bool WriteRecordOrPieces(std::string_view label, std::string& sequence, const SplitOptions& options,
                         std::int64_t& k, std::string& text) {
  if (options.size == 0) return WriteWholeRecord(label, sequence, options, k, text);
  return WritePieces(label, sequence, options, k, text);
}

}  // namespace

// Each stretch is scanned once: find the next N, then the end of its run.
std::vector<SSeq::Range> SSeq::PiecesAtN(std::string_view letters, std::int32_t maxRun,
                                         std::int32_t margin) {
  std::vector<SSeq::Range> pieces;
  const std::size_t size = letters.size();
  const std::size_t keep = margin > 0 ? static_cast<std::size_t>(margin) : 0;
  std::size_t b = letters.find_first_not_of('N');
  if (b == std::string_view::npos) return pieces;
  std::size_t start = b > keep ? b - keep : 0;
  for (;;) {
    const std::size_t r = letters.find('N', b);
    if (r == std::string_view::npos) {
      pieces.push_back({start, size});
      return pieces;
    }
    b = letters.find_first_not_of('N', r);
    if (b == std::string_view::npos) {
      pieces.push_back({start, std::min(r + keep, size)});
      return pieces;
    }
    if (static_cast<std::int64_t>(b - r) <= maxRun) continue;
    pieces.push_back({start, std::min(r + keep, size)});
    start = b > keep ? b - keep : 0;
  }
}

namespace {

// A piece is labelled with its record's label and its 0-based offset in the record.
std::string PieceName(std::string_view label, const SSeq::Range& range) {
  return SSeq::MakeName(label, " ; ", static_cast<std::int64_t>(range.begin));
}

// Writes one record, or its pieces when cutting at runs of N: a piece stands in the record's
// buffer, so nothing is copied. False when a file cannot be written.
bool WriteRecord(std::string_view label, std::string& letters, const SplitOptions& options,
                 std::int64_t& k, std::string& text) {
  if (options.maxRun <= 0) return WriteRecordOrPieces(label, letters, options, k, text);
  std::string piece;
  for (const SSeq::Range& range : SSeq::PiecesAtN(letters, options.maxRun, options.margin)) {
    piece.assign(letters, range.begin, range.end - range.begin);
    if (!WriteRecordOrPieces(PieceName(label, range), piece, options, k, text)) return false;
  }
  return true;
}

}  // namespace

std::string SSeq::MakeName(std::string_view first, std::string_view second, std::int64_t number) {
  std::string name;
  name.reserve(first.size() + second.size() + 20);
  name.append(first).append(second);
  AppendInteger(name, number);
  return name;
}

namespace {

// Gathers each record as it streams past, label and letters, and writes it (or its pieces)
// once it is whole: memory holds one record. A file that cannot be written stops the reading.
class SplittingSink {
 public:
  SplittingSink(const SplitOptions& options, const LetterTable& table)
      : options_(options), table_(table) {}

  void Begin() {
    ++records_;
    label_.clear();
    letters_.clear();
  }
  void Label(std::string_view piece) { label_.append(piece); }
  void Body(std::string_view piece) {
    if (!failed_) AppendLetters(piece, table_, letters_);
  }
  // The rest of the block that held the failure still comes: it is let pass.
  void End() {
    if (!failed_) failed_ = !WriteRecord(label_, letters_, options_, k_, text_);
  }
  bool Stopped() const { return failed_; }

  std::size_t Records() const { return records_; }

 private:
  const SplitOptions& options_;
  const LetterTable& table_;
  std::size_t records_ = 0;
  std::int64_t k_ = 0;
  bool failed_ = false;
  std::string label_, letters_, text_;
};

// Reads a file through without keeping anything.
struct NoSink {
  void Begin() {}
  void Label(std::string_view) {}
  void Body(std::string_view) {}
  void End() {}
};

}  // namespace

bool SSeq::Split(Param& param) {
  return Split(param, kFastaBlockSize);
}

// Records are written as they are read, so a file is held one record at a time. Every file
// written is final, so compressed content, whose faults show only at its end, is read through
// once before anything is written.
bool SSeq::Split(Param& param, std::size_t blockSize) {
  SplitOptions options;
  if (!ReadOptions(param, options)) return false;
  const LetterTable& table = options.soft ? CasePreservingLetterTable() : UpperLetterTable();
  if (options.base.empty()) options.base = options.seqName;
  FastaSource input(blockSize);
  if (!input.Open(options.seqName)) return false;
  NoSink check;
  if (input.Compressed() && !input.Read(check)) return false;
  SplittingSink sink(options, table);
  if (!input.Read(sink, Reading::kLast)) return false;
  if (sink.Stopped()) return false;
  if (sink.Records() == 0) {
    PrintError({"error: no sequence to split"});
    return false;
  }
  return true;
}

}  // namespace genetrain
