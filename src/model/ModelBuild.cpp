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

// The settings --mkmod reads before it loads anything.
struct MkmodOptions {
  std::string name;         // the model file
  bool fromGenome = false;  // --geneset given: from a genome; otherwise from --cod and --non
  std::uint32_t order = 0;
  std::string codName;
  std::string nonName;
  std::vector<std::string> startTexts;  // the start codon settings, in file order
  bool preStart = false;                // --pre_start
  bool fixMotif = false;                // --fixmotif
  bool motifWidth = false;              // --PRE_START_WIDTH given
};

bool ReadMkmodOptions(Param& param, MkmodOptions& options) {
  if (!ValidateModel(param) || !param.GetWord(options.name, "--mkmod")) return false;
  options.fromGenome = param.Has("--geneset");
  // The validation passed, so the order is digits or absent, which reads as the empty value, 0.
  if (!param.GetOpt(options.order, "--ORDM")) return false;
  if (!options.fromGenome &&
      (!param.GetWord(options.codName, "--cod") || !param.GetWord(options.nonName, "--non"))) {
    return false;
  }
  ForEachStartSection([&](const ModelSection& section, unsigned /*codon*/) {
    options.startTexts.push_back(param.ValueOrEmpty(section.option));
  });
  options.preStart = param.Has("--pre_start");
  options.fixMotif = param.Has("--fixmotif");
  options.motifWidth = param.Has("--PRE_START_WIDTH");
  return true;
}

// The non-coding chain is the independent-letters model when --RANDOM_NONCOD reads as a non-zero
// number (a malformed value is reported and the estimated chain is used), of GC fraction
// --RANDOM_NONCOD_GC when given. Read once the non-coding chain is made.
struct RandomNonCoding {
  bool wanted = false;
  std::optional<double> gc;
};

bool ReadRandomNonCoding(Param& param, RandomNonCoding& random) {
  param.GetOpt(random.wanted, "--RANDOM_NONCOD");
  if (!random.wanted || !param.Has("--RANDOM_NONCOD_GC")) return true;
  double gc = 0;
  if (!param.GetOpt(gc, "--RANDOM_NONCOD_GC")) return false;
  random.gc = gc;
  return true;
}

// Estimates the non-coding chain, or makes it the independent-letters model, of the fraction
// `gcOf()` unless one is given.
template <typename Estimate, typename Gc>
bool TrainNonCoding(MkChain& chain, Param& param, Estimate estimate, Gc gcOf) {
  RandomNonCoding random;
  if (!ReadRandomNonCoding(param, random)) return false;
  if (!random.wanted) return estimate();
  chain.SetRandom(random.gc ? *random.gc : gcOf());
  return true;
}

// Each chain reads its settings as it is made and is checked at once, so that the messages keep
// their order (a malformed setting is reported once per chain) and a failure is the last of them.
bool BuildFromGenome(Report& report, Param& param, const MkmodOptions& options) {
  VSeq seq;
  GeneSet set;
  if (!LoadAnnotated(seq, set, param, false)) return false;
  const GenomeSettings settings = ReadGenomeSettings(param);
  Genome genome(settings);
  genome.ExtractCoding(seq, set, 0, 0);
  genome.ExtractNonCoding(seq, set);

  const int order = ClampToInt(options.order);
  MkChain coding(order, 3, ReadChainSettings(param, order, 3));
  if (!coding.Valid()) return false;
  // Tables only when estimated.
  MkChain second(order, 3, ReadChainSettings(param, order, 3), MkChain::Deferred{});
  if (!second.Valid() || !coding.Estimate(genome.cod1)) return false;
  if (genome.separate_cod && !second.Estimate(genome.cod2)) return false;
  MkChain nonCoding(order, 1, ReadChainSettings(param, order, 1));
  if (!nonCoding.Valid()) return false;
  nonCoding.ClearMargins();
  const auto estimate = [&] { return nonCoding.Estimate(genome.non); };
  const auto gcOf = [&] {
    const double gc = GcFraction(genome.non);
    std::string line = "GC ";
    AppendGeneral(line, gc);
    line.push_back('\n');
    WriteStdout(line);
    return gc;
  };
  if (!TrainNonCoding(nonCoding, param, estimate, gcOf) ||
      !SetChainEntries(report, coding, genome.separate_cod ? &second : nullptr, nonCoding)) {
    return false;
  }

  const StartCodonEstimate starts = EstimateStartCodons(
      genome.cod1, genome.cod2, settings.start_codons, settings.start_pseudocounts);
  SetStartEntries(report, starts, settings.start_precision, options.startTexts);
  if (!options.preStart) return true;
  if (!options.fixMotif && !genome.WritePreStartFile(seq, set, param)) return false;
  if (!options.motifWidth || !options.fixMotif) return true;
  FixedMotifOptions motif;
  return ReadFixedMotifOptions(param, motif) && BuildFixedMotif(report, genome, seq, set, motif);
}

bool BuildFromFiles(Report& report, Param& param, const MkmodOptions& options) {
  VSeq coding;
  VSeq nonCoding;
  if (!coding.ReadSingle(options.codName) || !nonCoding.ReadSingle(options.nonName)) return false;

  const int order = ClampToInt(options.order);
  MkChain codingChain(order, 3, ReadChainSettings(param, order, 3));
  if (!codingChain.Valid()) return false;
  codingChain.ClearMargins();
  if (!codingChain.Estimate(coding.sequence)) return false;
  MkChain nonChain(order, 1, ReadChainSettings(param, order, 1));
  if (!nonChain.Valid()) return false;
  nonChain.ClearMargins();
  const auto estimate = [&] { return nonChain.Estimate(nonCoding.sequence); };
  const auto gcOf = [&] {
    SSeq::Tally tally;  // counted in place: the file's sequence is not copied into a list
    SSeq::AddCodes(nonCoding.sequence, tally);
    return SSeq::GcShare(tally, 1);
  };
  if (!TrainNonCoding(nonChain, param, estimate, gcOf) ||
      !SetChainEntries(report, codingChain, nullptr, nonChain)) {
    return false;
  }
  std::size_t next = 0;
  ForEachStartSection([&](const ModelSection& section, unsigned /*codon*/) {
    SetSection(report, section, options.startTexts[next++]);
  });
  return true;
}

}  // namespace

// A start codon whose option reads as zero is no start: its entry repeats the option's text.
void SetStartEntries(Report& report, const StartCodonEstimate& estimate, std::uint32_t precision,
                     const std::vector<std::string>& startTexts) {
  std::size_t next = 0;
  ForEachStartSection([&](const ModelSection& section, unsigned codon) {
    std::string value = startTexts[next++];
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

double GcFraction(const std::vector<CodeSeq>& sequences) {
  SSeq::Tally tally;
  for (const CodeSeq& sequence : sequences) SSeq::AddCodes(sequence, tally);
  return SSeq::GcShare(tally, 1);
}

StartCodonEstimate EstimateStartCodons(const std::vector<CodeSeq>& cod1,
                                       const std::vector<CodeSeq>& cod2,
                                       const CodonSet& startCodons, std::int64_t pseudocount) {
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
  MkmodOptions options;
  if (!ReadMkmodOptions(param, options)) return false;
  const bool built = options.fromGenome ? BuildFromGenome(report, param, options)
                                        : BuildFromFiles(report, param, options);
  return built && WriteModel(report, param, options.name);
}

}  // namespace genetrain
