#ifndef GENETRAIN_GENES_GENOME_H
#define GENETRAIN_GENES_GENOME_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "common/Param.h"
#include "genes/Gene.h"
#include "genes/GeneSet.h"
#include "seq/VSeq.h"

namespace genetrain {

// The training set of one annotated sequence: what the gene commands extract, the genes they
// turn away, and the settings that decide which genes may train.
class Genome {
 public:
  // Reads the training settings; a malformed value is reported and its default kept.
  explicit Genome(Param& param);

  // The sequence in letters (A, C, G, T, N, X for a masked base) and an end of line.
  std::string WriteSeq(const CodeSeq& codes) const;
  void AppendSeq(std::string& out, const CodeSeq& codes) const;

  // Training extraction (--parse, --intergenic, --STAT_NON_VS_ALL, and the model builders).
  void ExtractCoding(const VSeq& seq, const GeneSet& set, int left_margin, int right_margin);
  void ExtractNonCoding(const VSeq& seq, const GeneSet& set);
  std::string WriteCoding() const;
  std::string WriteNonCoding() const;

  // Pre-start regions (--pre_start, and the model builder).
  bool WritePreStartFile(const VSeq& seq, const GeneSet& set, Param& param);
  void CollectPreStarts(const VSeq& seq, const GeneSet& set, int upstream, int inside,
                        bool intergenic, std::vector<std::string>& labels);
  std::string WritePreStarts(int lines, const std::vector<std::string>& labels) const;

  // The sequence, the gene set and the non-coding sequences of --ORF_PER_SEQ.
  bool LoadNonCoding(Param& param);

  std::vector<CodeSeq> cod1;
  std::vector<CodeSeq> cod2;
  std::vector<CodeSeq> non;
  std::vector<CodeSeq> pre_start;
  std::vector<GENE> rejected;
  bool separate_cod = false;
  std::vector<std::vector<int>> start_positions;
  std::uint32_t min_cod = 0;
  std::uint32_t min_non = 0;
  bool exclude_partial = true;
  std::array<char, 6> alphabet = {'A', 'C', 'G', 'T', 'N', 'X'};
  std::array<bool, 64> start_codons{};
  std::uint32_t start_precision = 3;
  std::uint32_t start_pseudocounts = 0;
  std::int32_t seq_length = 0;
};

// Codon indices 16 * b1 + 4 * b2 + b3 of the codons the gene commands name.
inline constexpr unsigned kCodonATG = 14, kCodonCTG = 30, kCodonGTG = 46, kCodonTTG = 62;
inline constexpr unsigned kCodonTAA = 48, kCodonTAG = 50, kCodonTGA = 56;

// A 64-bit coordinate held at the ends of the int range.
inline int ClampToInt(std::int64_t value) {
  return static_cast<int>(std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(),
                                                   std::numeric_limits<int>::max()));
}

// The sequence from --seq (with the stop codons of --TAA_, --TGA_, --TAG_) and the gene set from
// --geneset, whose genes may not end past the sequence; two columns for --intergenic.
bool LoadAnnotated(VSeq& seq, GeneSet& set, Param& param, bool twoColumn);

// Command handlers; each gets the genome built from the parameters.
bool RunParse(Genome& genome, Param& param);
bool RunIntergenic(Genome& genome, Param& param);
bool RunStatNonVsAll(Genome& genome, Param& param);
bool RunPreStart(Genome& genome, Param& param);
bool RunMkchain(Genome& genome, Param& param);

}  // namespace genetrain

#endif
