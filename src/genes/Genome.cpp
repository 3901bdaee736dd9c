#include "genes/Genome.h"

namespace genetrain {

Genome::Genome(Param& param) {
  // A malformed value prints its message and leaves the default: building never fails.
  param.GetOpt(min_cod, "--MIN_COD");
  param.GetOpt(min_non, "--MIN_NON");
  param.GetOpt(exclude_partial, "--EXCLUDE_PARTIAL");
  param.GetOpt(start_precision, "--START_PRECISION");
  param.GetOpt(start_pseudocounts, "--START_PSEUDOCOUNTS");
  param.GetOpt(separate_cod, "--SEPARATE_COD");
  ReadStartCodons(param, OnBadFlag::kLeaveOut, start_codons);
}

void Genome::AppendSeq(std::string& out, const CodeSeq& codes) const {
  const std::size_t start = out.size();
  out.resize(start + codes.size() + 1);
  char* dst = out.data() + start;
  for (const std::uint8_t code : codes) *dst++ = alphabet[code < alphabet.size() ? code : 4];
  *dst = '\n';
}

std::string Genome::WriteSeq(const CodeSeq& codes) const {
  std::string text;
  AppendSeq(text, codes);
  return text;
}

}  // namespace genetrain
