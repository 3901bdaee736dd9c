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

// The settings that decide which genes may train, and how the model builder counts start codons
// (read with them, in one pass, since their messages come in this order).
struct GenomeSettings {
  std::uint32_t min_cod = 0;
  std::uint32_t min_non = 0;
  bool exclude_partial = true;
  std::uint32_t start_precision = 3;
  std::uint32_t start_pseudocounts = 0;
  bool separate_cod = false;
  CodonSet start_codons{};
};

// Reads --MIN_COD, --MIN_NON, --EXCLUDE_PARTIAL, --START_PRECISION, --START_PSEUDOCOUNTS,
// --SEPARATE_COD and the start codons, in this order. A malformed value is reported and its
// default kept: reading never fails.
GenomeSettings ReadGenomeSettings(Param& param);

// What --pre_start writes: the file name, the region width W, the position P of the region's end
// inside the gene, whether the gap to the upstream neighbour must hold the region, and how many
// regions at most (-1: all).
struct PreStartOptions {
  std::string name;
  std::uint32_t width = 0;
  std::uint32_t inside = 0;
  bool intergenic = true;
  std::int32_t lines = -1;
};

// Reads --pre_start, --PRE_START_WIDTH, --PRE_START_RELATIVE_POS, --PRE_START_INTERGENIC and
// --PRE_START_LINES in this order; false at the first malformed one.
bool ReadPreStartOptions(Param& param, PreStartOptions& options);

// The training set of one annotated sequence: what the gene commands extract, and the
// settings that decide which genes may train. The start-codon settings stay with the caller.
class Genome {
 public:
  explicit Genome(const GenomeSettings& settings);
  // With the settings read from the store (ReadGenomeSettings).
  explicit Genome(Param& param);

  // The sequence in letters (A, C, G, T, N, X for a masked base) and an end of line.
  void AppendSeq(std::string& out, const CodeSeq& codes) const;

  // Training extraction (--parse, --intergenic, --STAT_NON_VS_ALL, and the model builders).
  void ExtractCoding(const VSeq& seq, const GeneSet& set, int left_margin, int right_margin);
  void ExtractNonCoding(const VSeq& seq, const GeneSet& set);
  std::string WriteCoding() const;
  std::string WriteNonCoding() const;

  // Pre-start regions (--pre_start, and the model builder).
  bool WritePreStartFile(const VSeq& seq, const GeneSet& set, const PreStartOptions& options);
  // With the options read from the store (ReadPreStartOptions).
  bool WritePreStartFile(const VSeq& seq, const GeneSet& set, Param& param);
  void CollectPreStarts(const VSeq& seq, const GeneSet& set, int upstream, int inside,
                        bool intergenic, std::vector<std::string>& labels);
  std::string WritePreStarts(int lines, const std::vector<std::string>& labels) const;

  std::vector<CodeSeq> cod1;
  std::vector<CodeSeq> cod2;
  std::vector<CodeSeq> non;
  std::vector<CodeSeq> pre_start;
  bool separate_cod = false;
  std::uint32_t min_cod = 0;
  std::uint32_t min_non = 0;
  bool exclude_partial = true;
  std::array<char, 6> alphabet = {'A', 'C', 'G', 'T', 'N', 'X'};
  std::int32_t seq_length = 0;
};

// A 64-bit coordinate held at the ends of the int range.
inline int ClampToInt(std::int64_t value) {
  return static_cast<int>(std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(),
                                                   std::numeric_limits<int>::max()));
}

// The sequence for gene work: its stop codons and the file's bases.
bool LoadGeneSequence(VSeq& seq, const CodonSet& stops, const std::string& name);
// The gene set of a loaded sequence, whose genes may not end past it.
bool LoadGeneSet(GeneSet& set, const VSeq& seq, const std::string& name);

// The stop codons, the sequence named by --seq and the gene set named by --geneset (two columns
// moved by --shift_zero for --intergenic). Each file is loaded as soon as its name is read, so a
// sequence that cannot be loaded is reported before the gene set options are looked at.
bool LoadAnnotated(VSeq& seq, GeneSet& set, Param& param, bool twoColumn);

// The gene commands: each reads its options, then its files, then writes.
bool RunParse(Param& param);
bool RunIntergenic(Param& param);
bool RunStatNonVsAll(Param& param);
bool RunPreStart(Param& param);
// --mkchain gets the genome built from the store.
bool RunMkchain(Genome& genome, Param& param);

}  // namespace genetrain

#endif
