// --mkmod: a whole model from a genome and its gene set, or from coding and non-coding files.
#include <array>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

#include "common/Format.h"
#include "common/Output.h"
#include "model/MkChain.h"
#include "model/ModelBuild.h"
#include "model/ModelFile.h"
#include "seq/LetterTables.h"
#include "seq/SSeq.h"

namespace genetrain {

namespace {

// The codon a start codon section is named after: "ATG_" stands for ATG.
unsigned CodonOf(const ModelSection& section) {
  const CodeTable& codes = BaseCodeTable();
  const auto code = [&](std::size_t i) {
    return codes[static_cast<unsigned char>(section.key[i])];
  };
  return CodonIndex(code(0), code(1), code(2));
}

// Calls `set` with each start codon section and its codon.
template <typename Set>
void ForEachStartSection(Set set) {
  for (const ModelSection& section : kModelSections) {
    if (section.source == SectionSource::kStartCodon) set(section, CodonOf(section));
  }
}

// The non-coding chain is the independent-letters model when --RANDOM_NONCOD reads as a non-zero
// number; a malformed value is reported and the estimated chain is used.
bool WantsRandomNonCoding(Param& param) {
  bool random = false;
  param.GetOpt(random, "--RANDOM_NONCOD");
  return random;
}

// --RANDOM_NONCOD_GC when given; otherwise the caller's fraction.
bool ReadRandomGc(Param& param, double& gc) {
  return param.GetOpt(gc, "--RANDOM_NONCOD_GC");
}

// A start codon whose option reads as zero is no start: its entry repeats the option's text.
void SetStartEntries(Report& report, const StartCodonEstimate& estimate, std::uint32_t precision,
                     const Param& param) {
  ForEachStartSection([&](const ModelSection& section, unsigned codon) {
    std::string value = param.ValueOrEmpty(section.option);
    if (std::atof(value.c_str()) != 0) {
      value.clear();
      AppendFixedPoint(value, estimate.start_probs[codon], precision);
    }
    SetSection(report, section, std::move(value));
  });
}

// The COD1, COD2 and NONC entries; COD2 repeats COD1 without a second coding chain. False, with
// the message printed and no entry set, when the chains' precision cannot be printed.
bool SetChainEntries(Report& report, const MkChain& coding, const MkChain* second,
                     const MkChain& nonCoding) {
  const std::optional<std::string> codingText = coding.ToText();
  if (!codingText) return false;
  std::optional<std::string> secondText = second != nullptr ? second->ToText() : codingText;
  if (!secondText) return false;
  std::optional<std::string> nonCodingText = nonCoding.ToText();
  if (!nonCodingText) return false;
  SetSection(report, Section("COD1"), *codingText);
  SetSection(report, Section("COD2"), std::move(*secondText));
  SetSection(report, Section("NONC"), std::move(*nonCodingText));
  return true;
}

bool BuildFromGenome(Report& report, Param& param) {
  std::uint32_t order = 0;  // checked by the validation; absent reads as empty, that is 0
  if (!param.GetOpt(order, "--ORDM")) return false;
  VSeq seq;
  GeneSet set;
  if (!LoadAnnotated(seq, set, param, false)) return false;
  Genome genome(param);
  genome.ExtractCoding(seq, set, 0, 0);
  genome.ExtractNonCoding(seq, set);

  const int chainOrder = ClampToInt(order);
  // Each chain is checked as soon as it is made or estimated, so that the messages keep their
  // order and a failure is the last of them.
  MkChain coding(chainOrder, 3, param);
  if (!coding.Valid()) return false;
  MkChain second(chainOrder, 3, param, MkChain::Deferred{});  // tables only when estimated
  if (!second.Valid() || !coding.Estimate(genome.cod1)) return false;
  if (genome.separate_cod && !second.Estimate(genome.cod2)) return false;
  MkChain nonCoding(chainOrder, 1, param);
  if (!nonCoding.Valid()) return false;
  nonCoding.ClearMargins();
  if (WantsRandomNonCoding(param)) {
    double gc = 0;
    if (param.Has("--RANDOM_NONCOD_GC")) {
      if (!ReadRandomGc(param, gc)) return false;
    } else {
      gc = GcFraction(genome.non);
      std::string line = "GC ";
      AppendGeneral(line, gc);
      line.push_back('\n');
      WriteStdout(line);
    }
    nonCoding.SetRandom(gc);
  } else if (!nonCoding.Estimate(genome.non)) {
    return false;
  }
  if (!SetChainEntries(report, coding, genome.separate_cod ? &second : nullptr, nonCoding)) {
    return false;
  }

  const StartCodonEstimate starts =
      EstimateStartCodons(genome.cod1, genome.cod2, genome.start_codons, genome.start_pseudocounts);
  SetStartEntries(report, starts, genome.start_precision, param);
  if (!param.Has("--pre_start")) return true;
  if (!param.Has("--fixmotif") && !genome.WritePreStartFile(seq, set, param)) return false;
  if (param.Has("--PRE_START_WIDTH") && param.Has("--fixmotif")) {
    return BuildFixedMotif(report, genome, seq, set, param);
  }
  return true;
}

bool BuildFromFiles(Report& report, Param& param) {
  std::uint32_t order = 0;
  std::string codName;
  std::string nonName;
  if (!param.GetOpt(order, "--ORDM") || !param.GetWord(codName, "--cod") ||
      !param.GetWord(nonName, "--non")) {
    return false;
  }
  VSeq coding;
  VSeq nonCoding;
  if (!coding.ReadSingle(codName) || !nonCoding.ReadSingle(nonName)) return false;

  const int chainOrder = ClampToInt(order);
  MkChain codingChain(chainOrder, 3, param);
  if (!codingChain.Valid()) return false;
  codingChain.ClearMargins();
  if (!codingChain.Estimate(coding.sequence)) return false;
  MkChain nonChain(chainOrder, 1, param);
  if (!nonChain.Valid()) return false;
  nonChain.ClearMargins();
  if (WantsRandomNonCoding(param)) {
    SSeq::Tally tally;  // counted in place: the file's sequence is not copied into a list
    SSeq::AddCodes(nonCoding.sequence, tally);
    double gc = SSeq::GcShare(tally, 1);
    if (!ReadRandomGc(param, gc)) return false;
    nonChain.SetRandom(gc);
  } else if (!nonChain.Estimate(nonCoding.sequence)) {
    return false;
  }
  if (!SetChainEntries(report, codingChain, nullptr, nonChain)) return false;
  ForEachStartSection([&](const ModelSection& section, unsigned /*codon*/) {
    SetSection(report, section, param.ValueOrEmpty(section.option));
  });
  return true;
}

}  // namespace

double GcFraction(const std::vector<CodeSeq>& sequences) {
  SSeq::Tally tally;
  for (const CodeSeq& sequence : sequences) SSeq::AddCodes(sequence, tally);
  return SSeq::GcShare(tally, 1);
}

StartCodonEstimate EstimateStartCodons(const std::vector<CodeSeq>& cod1,
                                       const std::vector<CodeSeq>& cod2,
                                       const std::array<bool, 64>& startCodons,
                                       std::int64_t pseudocount) {
  StartCodonEstimate estimate{std::vector<std::int64_t>(64, 0), std::vector<double>(64, 0.0)};
  for (const std::vector<CodeSeq>* list : {&cod1, &cod2}) {
    for (const CodeSeq& sequence : *list) {
      if (sequence.size() < 3 || !IsBase(sequence[0]) || !IsBase(sequence[1]) ||
          !IsBase(sequence[2])) {
        continue;
      }
      ++estimate.start_counts[CodonIndex(sequence[0], sequence[1], sequence[2])];
    }
  }
  std::int64_t total = 0;
  std::int64_t starts = 0;
  for (unsigned codon = 0; codon < 64; ++codon) {
    if (!startCodons[codon]) continue;
    total += estimate.start_counts[codon];
    ++starts;
  }
  if (total == 0) WriteStdout("warning, no start sites in training\n\n");
  const std::int64_t denominator = starts * pseudocount + total;
  if (denominator == 0) return estimate;
  for (unsigned codon = 0; codon < 64; ++codon) {
    if (!startCodons[codon]) continue;
    estimate.start_probs[codon] = static_cast<double>(pseudocount + estimate.start_counts[codon]) /
                                  static_cast<double>(denominator);
  }
  return estimate;
}

bool RunMkmod(Report& report, Param& param) {
  if (!ValidateModel(param)) return false;
  std::string name;
  if (!param.GetWord(name, "--mkmod")) return false;
  const bool built =
      param.Has("--geneset") ? BuildFromGenome(report, param) : BuildFromFiles(report, param);
  return built && WriteModel(report, param, name);
}

}  // namespace genetrain
