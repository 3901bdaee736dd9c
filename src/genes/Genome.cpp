#include "genes/Genome.h"

namespace genetrain {

GenomeSettings ReadGenomeSettings(Param& param) {
  GenomeSettings settings;
  param.GetOpt(settings.min_cod, "--MIN_COD");
  param.GetOpt(settings.min_non, "--MIN_NON");
  param.GetOpt(settings.exclude_partial, "--EXCLUDE_PARTIAL");
  param.GetOpt(settings.start_precision, "--START_PRECISION");
  param.GetOpt(settings.start_pseudocounts, "--START_PSEUDOCOUNTS");
  param.GetOpt(settings.separate_cod, "--SEPARATE_COD");
  ReadStartCodons(param, OnBadFlag::kLeaveOut, settings.start_codons);
  return settings;
}

Genome::Genome(const GenomeSettings& settings)
    : separate_cod(settings.separate_cod),
      min_cod(settings.min_cod),
      min_non(settings.min_non),
      exclude_partial(settings.exclude_partial) {}

Genome::Genome(Param& param) : Genome(ReadGenomeSettings(param)) {}

void Genome::AppendSeq(std::string& out, const CodeSeq& codes) const {
  const std::size_t start = out.size();
  out.resize(start + codes.size() + 1);
  char* dst = out.data() + start;
  for (const std::uint8_t code : codes) *dst++ = alphabet[code < alphabet.size() ? code : 4];
  *dst = '\n';
}

}  // namespace genetrain
