// Training material from one annotated sequence: coding pieces cut from the genes, non-coding
// runs between them, the files they are written to, and the commands --parse, --intergenic and
// --STAT_NON_VS_ALL.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>

#include "common/Format.h"
#include "common/Message.h"
#include "common/Output.h"
#include "genes/Genome.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

constexpr std::string_view kMaskError = "error, if this is printed - error in code\n";

// The options of --parse and --intergenic: the training settings, the output files and the
// coding margins, which --intergenic reads and checks but does not use.
struct ExtractionOptions {
  GenomeSettings settings;
  std::string cod;
  std::string non;
  int leftMargin = 0;
  int rightMargin = 0;
};

// An absent --non is judged as an empty name: reported as a malformed value, then as missing.
bool ReadNonName(Param& param, std::string& name) {
  if (param.Has("--non")) {
    if (param.GetWord(name, "--non")) return true;
  } else {
    param.ReportBadValue("--non");
  }
  PrintError({"error, key missing ", "--non"});
  return false;
}

// --cod only when `coding` (--parse).
bool ReadExtractionOptions(Param& param, bool coding, ExtractionOptions& options) {
  options.settings = ReadGenomeSettings(param);
  if (coding && !param.Has("--cod")) {
    PrintError({"error, key missing ", "--cod"});
    return false;
  }
  if (coding && !param.GetWord(options.cod, "--cod")) {
    PrintError({"error, file name missing ", "--cod"});
    return false;
  }
  std::uint32_t left = 0;
  std::int32_t right = 0;
  if (!ReadNonName(param, options.non) || !param.GetOpt(left, "--COD_L_MARGIN") ||
      !param.GetOpt(right, "--COD_R_MARGIN")) {
    return false;
  }
  options.leftMargin = ClampToInt(left);
  options.rightMargin = right;
  return true;
}

struct CodingRules {
  std::int64_t left_margin;
  std::int64_t right_margin;
  std::int64_t min_cod;
  bool exclude_partial;
};

// Cuts the training piece of one gene: the start end loses the left margin and the stop end the
// right margin, in the gene's own direction. False when the gene is turned away.
bool CodingPiece(const VSeq& seq, const GENE& gene, const CodingRules& rules, CodeSeq& piece) {
  if (!gene.valid) return false;
  const std::int64_t margins = rules.left_margin + rules.right_margin;
  const std::int64_t trimmed = std::int64_t{gene.right} - gene.left + 1 - margins;
  if (trimmed < rules.min_cod) return false;
  if (rules.exclude_partial && (!gene.left_complete || !gene.right_complete)) return false;
  if (std::int64_t{gene.right} - gene.left < margins) return false;
  // A negative right margin may reach past the sequence: GeneSeq clips, the length check below
  // then turns the gene away.
  if (gene.strand == Strand::kReverse) {
    piece = seq.GeneSeq(ClampToInt(gene.left + rules.right_margin),
                        ClampToInt(gene.right - rules.left_margin), Strand::kReverse);
  } else {
    piece = seq.GeneSeq(ClampToInt(gene.left + rules.left_margin),
                        ClampToInt(gene.right - rules.right_margin), Strand::kDirect);
  }
  return static_cast<std::int64_t>(piece.size()) == trimmed;
}

}  // namespace

void Genome::ExtractCoding(const VSeq& seq, const GeneSet& set, int left_margin, int right_margin) {
  const CodingRules rules{left_margin, right_margin, min_cod, exclude_partial};
  cod1.reserve(cod1.size() + set.genes.size());
  for (const GENE& gene : set.genes) {
    CodeSeq piece;
    if (!CodingPiece(seq, gene, rules, piece)) continue;
    std::vector<CodeSeq>& list = separate_cod && gene.gene_class == 2 ? cod2 : cod1;
    list.push_back(std::move(piece));
  }
}

void Genome::ExtractNonCoding(const VSeq& seq, const GeneSet& set) {
  CodeSeq masked = seq.sequence;
  const std::int64_t length = static_cast<std::int64_t>(masked.size());
  std::string errors;
  for (const GENE& gene : set.genes) {
    if (gene.left == -1 || gene.right == -1) continue;
    if (gene.left < 0 || std::int64_t{gene.right} + 1 > length) {
      errors.append(kMaskError);
      continue;
    }
    // A two-column line may give left > right: that span is empty, nothing is masked.
    if (gene.left > gene.right) continue;
    std::fill(masked.begin() + gene.left, masked.begin() + gene.right + 1, kMasked);
  }
  WriteAll(stderr, errors);

  const auto isOpen = [](std::uint8_t code) { return code != kMasked; };
  auto run = std::find_if(masked.begin(), masked.end(), isOpen);
  while (run != masked.end()) {
    const auto runEnd = std::find(run, masked.end(), kMasked);
    if (static_cast<std::uint64_t>(runEnd - run) >= min_non) non.emplace_back(run, runEnd);
    run = std::find_if(runEnd, masked.end(), isOpen);
  }
}

std::string Genome::WriteCoding() const {
  constexpr std::string_view kHeader1 = ">cod1\n", kHeader2 = ">cod2\n";
  std::size_t size = kHeader1.size() + (cod2.empty() ? 0 : kHeader2.size());
  for (const CodeSeq& piece : cod1) size += piece.size() + 1;
  for (const CodeSeq& piece : cod2) size += piece.size() + 1;
  std::string text;
  text.reserve(size);
  text.append(kHeader1);
  for (const CodeSeq& piece : cod1) AppendSeq(text, piece);
  if (!cod2.empty()) {
    text.append(kHeader2);
    for (const CodeSeq& piece : cod2) AppendSeq(text, piece);
  }
  return text;
}

std::string Genome::WriteNonCoding() const {
  std::size_t size = 0;
  for (const CodeSeq& run : non) size += run.size() + 1;
  std::string text;
  text.reserve(size);
  for (const CodeSeq& run : non) AppendSeq(text, run);
  return text;
}

bool RunParse(Param& param) {
  ExtractionOptions options;
  if (!ReadExtractionOptions(param, true, options)) return false;
  VSeq seq;
  GeneSet set;
  if (!LoadAnnotated(seq, set, param, false)) return false;
  Genome genome(options.settings);
  genome.ExtractCoding(seq, set, options.leftMargin, options.rightMargin);
  genome.ExtractNonCoding(seq, set);
  return WriteFile(options.cod, genome.WriteCoding()) &&
         WriteFile(options.non, genome.WriteNonCoding());
}

bool RunIntergenic(Param& param) {
  ExtractionOptions options;
  if (!ReadExtractionOptions(param, false, options)) return false;
  VSeq seq;
  GeneSet set;
  if (!LoadAnnotated(seq, set, param, true)) return false;
  Genome genome(options.settings);
  genome.ExtractNonCoding(seq, set);
  return WriteFile(options.non, genome.WriteNonCoding());
}

bool RunStatNonVsAll(Param& param) {
  Genome genome(param);
  VSeq seq;
  GeneSet set;
  if (!LoadAnnotated(seq, set, param, false)) return false;
  genome.seq_length = set.max_right;
  genome.ExtractNonCoding(seq, set);

  SSeq::Tally nonCounts;
  std::uint64_t nonLength = 0;
  for (const CodeSeq& run : genome.non) {
    SSeq::AddCodes(run, nonCounts);
    nonLength += run.size();
  }
  if (genome.seq_length == 0) {
    PrintError({"error: sequence size is <0>"});
    return false;
  }
  SSeq::Tally allCounts;
  SSeq::AddCodes(seq.sequence, allCounts);

  std::string line;
  AppendGeneral(line, static_cast<double>(nonLength) / genome.seq_length);
  line.append("  ");
  AppendFixed(line, SSeq::GcPercent(allCounts), 1);
  line.push_back(' ');
  AppendGeneral(line, SSeq::GcPercent(nonCounts));
  line.push_back('\n');
  WriteStdout(line);
  return true;
}

}  // namespace genetrain
