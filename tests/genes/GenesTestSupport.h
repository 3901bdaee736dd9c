#ifndef GENETRAIN_TESTS_GENES_GENESTESTSUPPORT_H
#define GENETRAIN_TESTS_GENES_GENESTESTSUPPORT_H

#include <string>
#include <string_view>

#include "TestSupport.h"
#include "genes/Genome.h"

namespace genetrain::test {

// The sequence as the gene loader leaves it, with TAA as the only stop codon when `stops`.
inline VSeq GeneSequence(std::string_view bases, bool stops = false) {
  VSeq seq;
  seq.sequence = CodesOf(bases);
  if (stops) seq.stops = {kCodonTAA};
  return seq;
}

// A six-column gene set limited to the sequence.
inline GeneSet GenesOn(const VSeq& seq, std::string_view text) {
  GeneSet set;
  set.max_right = static_cast<std::int32_t>(seq.sequence.size());
  set.Parse(text.data(), text.data() + text.size());
  return set;
}

inline std::string ReverseComplement(std::string_view bases) {
  std::string reverse(bases.rbegin(), bases.rend());
  for (char& base : reverse)
    base = "TGCAN"[std::min<std::size_t>(std::string_view("ACGT").find(base), 4)];
  return reverse;
}

// strand, left, right, then "c"losed or "o"pen for the left and the right side.
inline std::string ShowSpan(std::int64_t strand, std::int64_t left, std::int64_t right,
                            bool leftClosed, bool rightClosed) {
  return std::to_string(strand) + " " + std::to_string(left) + " " + std::to_string(right) + " " +
         (leftClosed ? "c" : "o") + (rightClosed ? "c" : "o");
}

inline std::string ShowGene(const GENE& gene) {
  return ShowSpan(StrandNumber(gene.strand), gene.left, gene.right, gene.left_complete,
                  gene.right_complete);
}

}  // namespace genetrain::test

#endif
