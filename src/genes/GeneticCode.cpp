// The gene commands' view of a sequence: stop codons and gene pieces.
#include <algorithm>
#include <cstdio>
#include <limits>
#include <string>

#include "common/Output.h"
#include "genes/Genome.h"
#include "seq/VSeq.h"

namespace genetrain {

bool LoadGeneSequence(VSeq& seq, const CodonSet& stops, const std::string& name) {
  seq.stops = stops;
  return seq.ReadSingle(name);
}

bool LoadGeneSet(GeneSet& set, const VSeq& seq, const std::string& name) {
  // The gene limit is the sequence length in bases.
  set.max_right = static_cast<std::int32_t>(
      std::min<std::size_t>(seq.sequence.size(), std::numeric_limits<std::int32_t>::max()));
  return set.LoadFile(name);
}

bool LoadAnnotated(VSeq& seq, GeneSet& set, Param& param, bool twoColumn) {
  CodonSet stops;
  ReadStopCodons(param, OnBadFlag::kLeaveOut, stops);
  std::string name;
  if (!param.GetWord(name, "--seq") || !LoadGeneSequence(seq, stops, name)) return false;
  set.two_column = twoColumn;
  if (twoColumn && !param.GetOpt(set.shift_zero, "--shift_zero")) return false;
  return param.GetWord(name, "--geneset") && LoadGeneSet(set, seq, name);
}

CodeSeq VSeq::GeneSeq(int left, int right, Strand strand) const {
  // Clipped to the sequence: a gene the gene set lets end one base past it comes out short and
  // is turned away by the caller's length check.
  const std::int64_t first = std::max(left, 0);
  const std::int64_t last =
      std::min<std::int64_t>(right, static_cast<std::int64_t>(sequence.size()) - 1);
  CodeSeq piece;
  if (first > last) return piece;
  piece.assign(sequence.begin() + first, sequence.begin() + last + 1);
  if (strand == Strand::kReverse) {
    ReverseComplement(piece);
  }
  for (std::size_t i = 0; i + 2 < piece.size(); i += 3) {
    if (!IsBase(piece[i]) || !IsBase(piece[i + 1]) || !IsBase(piece[i + 2])) continue;
    if (!stops[CodonIndex(piece[i], piece[i + 1], piece[i + 2])]) continue;
    const std::size_t end = i + 3;  // one past the stop codon's last base
    if (end >= piece.size() - 1) break;
    std::string warning = "warning, STOP codon found inside protein: ";
    warning.append(std::to_string(left)).append(" ").append(std::to_string(right));
    warning.append(" ").append(std::to_string(end)).push_back('\n');
    WriteStdout(warning);
    return {};
  }
  return piece;
}

}  // namespace genetrain
