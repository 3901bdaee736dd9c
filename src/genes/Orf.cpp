// The ORF lists and the two ORF commands.
#include "genes/Orf.h"

#include "common/Format.h"
#include "common/Output.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <string_view>
#include <utility>

#include "common/Message.h"
#include "genes/GeneSet.h"
#include "genes/Genome.h"

namespace genetrain {

namespace {

// Bases between start and stop codon, less the margins, read as 1-based positions.
struct Interior {
  std::int64_t from;
  std::int64_t to;
};

Interior InteriorOf(const GENE& orf, std::int64_t left_margin, std::int64_t right_margin) {
  // The left margin is always taken at the start codon, the right one at the stop codon.
  if (orf.strand == Strand::kDirect) {
    return {orf.left + left_margin + 2, orf.right - 2 - right_margin};
  }
  return {orf.left + right_margin + 2, orf.right - 2 - left_margin};
}

// Numbers separated by blanks, then an end of line, appended in one piece.
template <std::size_t kCount>
void AppendNumbers(std::string& text, const std::array<std::int64_t, kCount>& numbers) {
  std::array<char, kCount * 21> line;
  char* end = line.data();
  for (std::size_t i = 0; i < kCount; ++i) {
    end = std::to_chars(end, line.data() + line.size() - 1, numbers[i]).ptr;
    *end++ = i + 1 < kCount ? ' ' : '\n';
  }
  text.append(line.data(), end);
}

// Letters of the codes, plain and complemented: A, C, G, T, and N for any other code.
using LetterOfCode = std::array<char, 256>;

constexpr LetterOfCode LettersFor(std::string_view acgt) {
  LetterOfCode letters{};
  for (std::size_t code = 0; code < letters.size(); ++code)
    letters[code] = IsBase(static_cast<std::uint8_t>(code)) ? acgt[code] : 'N';
  return letters;
}

constexpr LetterOfCode kLetters = LettersFor("ACGT");
constexpr LetterOfCode kComplements = LettersFor("TGCA");

// The span as indices into the sequence: margins may reach past either end.
Interior Clipped(Interior span, const CodeSeq& codes) {
  return {std::max<std::int64_t>(span.from, 0),
          std::min<std::int64_t>(span.to, static_cast<std::int64_t>(codes.size()) - 1)};
}

std::size_t LengthOf(Interior span) {
  return span.from <= span.to ? static_cast<std::size_t>(span.to - span.from + 1) : 0;
}

// Bases from .. to (0-based, inclusive, clipped to the sequence) and an end of line; read
// backwards and complemented for the reverse strand.
void AppendBases(std::string& text, const CodeSeq& codes, Interior span, bool reverse) {
  const Interior inside = Clipped(span, codes);
  const std::size_t count = LengthOf(inside);
  const std::size_t start = text.size();
  text.resize(start + count + 1);
  char* out = text.data() + start;
  out[count] = '\n';
  if (count == 0) return;
  const std::uint8_t* in = codes.data() + inside.from;
  if (reverse) {
    for (std::size_t i = 0; i < count; ++i) out[i] = kComplements[in[count - 1 - i]];
  } else {
    for (std::size_t i = 0; i < count; ++i) out[i] = kLetters[in[i]];
  }
}

void AppendSequenceEntry(std::string& text, const CodeSeq& codes, Interior span, Strand strand) {
  text.append("> POS_L ");
  AppendInteger(text, span.from);
  text.append(" POS_R ");
  AppendInteger(text, span.to);
  text.append(" STRAND(1/2) ");
  AppendInteger(text, StrandNumber(strand));
  text.push_back('\n');
  AppendBases(text, codes, span, strand == Strand::kReverse);
}

// ORFs per million bases, in the stream's general notation with six significant digits.
std::string Density(std::size_t orfs, std::uint64_t bases) {
  const double density = static_cast<double>(orfs) * 1000000.0 / static_cast<double>(bases);
  std::string line;
  AppendGeneral(line, density);
  line.push_back('\n');
  return line;
}

}  // namespace

std::string ORF::ListWithMargins(std::int32_t leftMargin, std::int32_t rightMargin, bool withBases,
                                 const VSeq& seq) const {
  const std::int64_t lm = leftMargin / 3 * 3, rm = rightMargin / 3 * 3;
  std::size_t size = 0;
  for (const GENE& orf : orfs) {
    const Interior span = InteriorOf(orf, lm, rm);
    if (span.from < span.to) size += withBases ? 64 + LengthOf(Clipped(span, seq.sequence)) : 40;
  }
  std::string text;
  text.reserve(size);
  for (const GENE& orf : orfs) {
    if (!HasStrand(orf.strand)) continue;
    const Interior span = InteriorOf(orf, lm, rm);
    if (span.from >= span.to) continue;
    if (withBases) {
      AppendSequenceEntry(text, seq.sequence, span, orf.strand);
    } else {
      AppendNumbers<4>(text,
                       {span.from, span.to, span.to - span.from + 1, StrandNumber(orf.strand)});
    }
  }
  return text;
}

std::string ORF::ListPlain() const {
  std::string text, errors;
  text.reserve(orfs.size() * 40);
  for (const GENE& orf : orfs) {
    if (!HasStrand(orf.strand)) continue;
    const std::int64_t from = orf.left + 2, to = orf.right - 2;
    if (from < to) {
      AppendNumbers<4>(
          text, {from, to, std::int64_t{orf.right} - orf.left - 3, StrandNumber(orf.strand)});
    } else {
      errors.append("error orf\n");
    }
  }
  WriteAll(stderr, errors);
  return text;
}

namespace {

// The options of the two ORF commands. The codon sets and the sequence come first; the search
// and list options are read only once the sequence is loaded (and, for --orf, its codon counts
// printed), so that a file that cannot be loaded is reported before them.
struct OrfOptions {
  CodonSet starts;
  CodonSet stops;
  std::uint32_t minSize = 0;
  std::int32_t leftMargin = 0;
  std::int32_t rightMargin = 0;
  std::int32_t out = 0;
};

// Stop codons first, then start codons; false at the first malformed flag.
bool ReadOrfCodons(Param& param, OrfOptions& options) {
  return ReadStopCodons(param, OnBadFlag::kFail, options.stops) &&
         ReadStartCodons(param, OnBadFlag::kFail, options.starts);
}

// --MIN_ORF_SIZE, the margins when `margins` (--orf), then --ORF_OUT.
bool ReadListOptions(Param& param, bool margins, OrfOptions& options) {
  if (!param.GetOpt(options.minSize, "--MIN_ORF_SIZE")) return false;
  if (margins && (!param.GetOpt(options.leftMargin, "--ORF_MARGIN_LEFT") ||
                  !param.GetOpt(options.rightMargin, "--ORF_MARGIN_RIGHT"))) {
    return false;
  }
  return param.GetOpt(options.out, "--ORF_OUT");
}

}  // namespace

bool RunOrf(Param& param) {
  OrfOptions options;
  std::string name;
  if (!ReadOrfCodons(param, options) || !param.GetWord(name, "--seq")) return false;
  // Without --ORF_OUT the list shows positions only, and the bases may make way for the codons.
  const bool keepBases = param.Has("--ORF_OUT");
  VSeq seq;
  if (!seq.ReadSingle(name)) return false;
  ORF orf;
  orf.SetCodons(options.starts, options.stops);
  if (keepBases) {
    orf.BuildCodonArray(seq.sequence);
  } else {
    orf.BuildCodonArray(std::move(seq.sequence));
  }
  std::string counts = "# Starts ";
  counts.append(std::to_string(orf.StartCount())).append("\n# Stops ");
  counts.append(std::to_string(orf.StopCount())).push_back('\n');
  WriteStdout(counts);

  if (!ReadListOptions(param, true, options)) return false;
  orf.min_orf_size = options.minSize;
  orf.SearchDirect(orf.min_orf_size);
  orf.SearchReverse(orf.min_orf_size);
  orf.report.Set(
      "--orf", "",
      orf.ListWithMargins(options.leftMargin, options.rightMargin, options.out != 0, seq));
  return orf.report.Write(param.ValueOrEmpty("--orf"));
}

bool RunOrfPerSeq(Param& param) {
  OrfOptions options;
  if (!ReadOrfCodons(param, options)) return false;
  Genome genome(param);
  VSeq seq;
  GeneSet set;
  if (!LoadAnnotated(seq, set, param, false)) return false;
  genome.ExtractNonCoding(seq, set);
  if (!ReadListOptions(param, false, options)) return false;
  ORF orf;
  orf.SetCodons(options.starts, options.stops);
  orf.min_orf_size = options.minSize;
  std::uint64_t bases = 0;
  for (const CodeSeq& piece : genome.non) {
    orf.BuildCodonArray(piece);
    orf.SearchDirect(orf.min_orf_size);
    orf.SearchReverse(orf.min_orf_size);
    bases += piece.size();
  }
  if (options.out != 0) {
    WriteStdout(orf.ListPlain());
    return true;
  }
  // No non-coding base at all: a density per base means nothing, and a script must not read
  // "nan" as a number.
  if (bases == 0) {
    PrintError({"error: non-coding sequence size is <0>"});
    return false;
  }
  WriteStdout(Density(orf.orfs.size(), bases));
  return true;
}

}  // namespace genetrain
