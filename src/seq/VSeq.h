#ifndef GENETRAIN_SEQ_VSEQ_H
#define GENETRAIN_SEQ_VSEQ_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/Param.h"
#include "seq/LetterTables.h"
#include "seq/Strand.h"

namespace genetrain {

// One byte per base, with the codes of BaseCode.
using CodeSeq = std::vector<std::uint8_t>;

// Sequences as base codes, for the gene, chain, ORF and motif commands.
class VSeq {
 public:
  // Replaces `sequence` with the codes of the whole file as one sequence: a first header line is
  // skipped, but later ">" lines are not recognised and their letters are coded as bases.
  bool ReadSingle(const std::string& name);
  // Appends one code sequence per FASTA record to `records`.
  bool ReadRecords(const std::string& name);

  // The bases left .. right (0-based, inclusive), clipped to the sequence; reverse-complemented
  // for the reverse strand. Empty, with a warning on standard output, when an in-frame stop codon
  // stands before the last codon.
  CodeSeq GeneSeq(int left, int right, Strand strand) const;
  // The region around a start codon: `upstream` bases before it and `inside` bases from it,
  // clipped to the sequence; `rightEnd` is the gene's right + 1.
  CodeSeq RegionSeq(int left, int rightEnd, Strand strand, int upstream, int inside) const;

  CodeSeq sequence;
  std::vector<CodeSeq> records;
  CodonSet stops;  // filled by the gene loader
};

}  // namespace genetrain

#endif
