// The model file as scoring tables: conditional log-probabilities from the joint word
// frequencies, coding log-odds by codon position, start, stop, RBS and length settings.

#include "predict/GeneModel.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "common/Message.h"
#include "common/Param.h"
#include "model/ModelFile.h"

namespace genetrain {

namespace {

// Every number of a section's text, in order; false when some other text stands between them.
bool ParseNumbers(std::string_view text, std::vector<double>& numbers) {
  numbers.clear();
  const char* p = text.data();
  const char* end = p + text.size();
  while (true) {
    while (p != end && IsSpace(*p)) ++p;
    if (p == end) return true;
    double value = 0;
    const std::from_chars_result result = std::from_chars(p, end, value);
    if (result.ec != std::errc{}) return false;
    numbers.push_back(value);
    p = result.ptr;
  }
}

bool SectionNumbers(const Param& file, std::string_view key, std::vector<double>& numbers) {
  const std::string* text = file.Find(key);
  return text != nullptr && ParseNumbers(*text, numbers);
}

bool SectionNumber(const Param& file, std::string_view key, double& value) {
  std::vector<double> numbers;
  if (!SectionNumbers(file, key, numbers) || numbers.size() != 1) return false;
  value = numbers.front();
  return true;
}

// log P(last letter | the letters before it) of every word of one table of joint frequencies.
std::vector<double> ConditionalLog(const std::vector<double>& joint, std::size_t offset,
                                   std::size_t stride, std::size_t words) {
  std::vector<double> conditional(words);
  for (std::size_t group = 0; group < words; group += 4) {
    double sum = 0;
    for (std::size_t a = 0; a < 4; ++a) sum += joint[(group + a) * stride + offset];
    for (std::size_t a = 0; a < 4; ++a) {
      const double value = joint[(group + a) * stride + offset];
      conditional[group + a] = sum > 0 && value > 0 ? std::log(value / sum) : -30.0;
    }
  }
  return conditional;
}

// The three coding tables as log-odds against the non-coding chain, indexed by codon position.
std::array<std::vector<float>, 3> CodingLogOdds(const std::vector<double>& joint,
                                                const std::vector<double>& nonCoding, int order,
                                                int leftMargin) {
  const std::size_t words = nonCoding.size();
  std::array<std::vector<float>, 3> logOdds;
  for (int frame = 0; frame < 3; ++frame) {
    const std::vector<double> coding =
        ConditionalLog(joint, static_cast<std::size_t>(frame), 3, words);
    std::vector<float>& table = logOdds[TableCodonPosition(frame, order, leftMargin)];
    table.resize(words);
    for (std::size_t w = 0; w < words; ++w) {
      table[w] = static_cast<float>(coding[w] - nonCoding[w]);
    }
  }
  return logOdds;
}

bool LoadChains(const Param& file, GeneModel& model, int leftMargin) {
  const std::size_t words = std::size_t{1} << (2 * (model.order + 1));
  std::vector<double> cod1, cod2, non;
  if (!SectionNumbers(file, "--COD1", cod1) || cod1.size() != 3 * words) return false;
  if (!SectionNumbers(file, "--COD2", cod2) || cod2.size() != 3 * words) return false;
  if (!SectionNumbers(file, "--NONC", non) || non.size() != words) return false;
  const std::vector<double> nonLog = ConditionalLog(non, 0, 1, words);
  model.cod1 = CodingLogOdds(cod1, nonLog, model.order, leftMargin);
  model.separateCod2 = cod1 != cod2;
  model.cod2 =
      model.separateCod2 ? CodingLogOdds(cod2, nonLog, model.order, leftMargin) : model.cod1;
  // The mean log-odds per base of sequence drawn from each chain's word frequencies.
  for (int frame = 0; frame < 3; ++frame) {
    double sumCod = 0, sumNon = 0, totalCod = 0, totalNon = 0;
    const std::vector<float>& table =
        model.cod1[TableCodonPosition(frame, model.order, leftMargin)];
    for (std::size_t w = 0; w < words; ++w) {
      sumCod += cod1[w * 3 + static_cast<std::size_t>(frame)] * table[w];
      totalCod += cod1[w * 3 + static_cast<std::size_t>(frame)];
      sumNon += non[w] * table[w];
      totalNon += non[w];
    }
    model.codingDensity += sumCod / totalCod / 3;
    model.nonCodingDensity += sumNon / totalNon / 3;
  }
  // The letter frequencies: the joint frequencies summed over everything but the last letter.
  std::array<double, 4> letters{};
  for (std::size_t w = 0; w < words; ++w) letters[w & 3] += non[w];
  const double total = letters[0] + letters[1] + letters[2] + letters[3];
  for (int a = 0; a < 4; ++a) model.background[a] = letters[a] / total;
  return true;
}

bool LoadCodons(const Param& file, GeneModel& model) {
  constexpr std::array<std::pair<std::string_view, unsigned>, 4> kStarts = {
      {{"--ATG_", kCodonATG}, {"--GTG_", kCodonGTG}, {"--TTG_", kCodonTTG}, {"--CTG_", kCodonCTG}}};
  constexpr std::array<std::pair<std::string_view, unsigned>, 3> kStops = {
      {{"--TAA_", kCodonTAA}, {"--TAG_", kCodonTAG}, {"--TGA_", kCodonTGA}}};
  model.startLogProb.fill(kNoStart);
  model.starts = {};
  model.stops = {};
  double sum = 0;
  std::array<double, 4> values{};
  for (std::size_t i = 0; i < kStarts.size(); ++i) {
    if (!SectionNumber(file, kStarts[i].first, values[i]) || values[i] < 0) return false;
    sum += values[i];
  }
  if (sum <= 0) return false;
  for (std::size_t i = 0; i < kStarts.size(); ++i) {
    if (values[i] == 0) continue;
    model.starts.Add(kStarts[i].second);
    model.startLogProb[kStarts[i].second] = std::log(values[i] / sum);
  }
  for (const auto& [key, codon] : kStops) {
    double value = 0;
    if (!SectionNumber(file, key, value)) return false;
    if (value != 0) model.stops.Add(codon);
  }
  model.geneticCode = model.stops[kCodonTGA] ? 11 : 4;
  return model.stops[kCodonTAA] || model.stops[kCodonTAG] || model.stops[kCodonTGA];
}

bool LoadLengths(const Param& file, GeneModel& model) {
  double minc = 0, maxc = 0, maxn = 0, cd1p = 0, cd2p = 0;
  if (!SectionNumber(file, "--MINC", minc) || !SectionNumber(file, "--MAXC", maxc) ||
      !SectionNumber(file, "--MAXN", maxn) ||
      !SectionNumber(file, "--NDEC", model.nonCodingDecay) ||
      !SectionNumber(file, "--CDEC", model.codingDecay) ||
      !SectionNumber(file, "--CDCD", model.codingCodingDecay) ||
      !SectionNumber(file, "--CD1P", cd1p) || !SectionNumber(file, "--CD2P", cd2p)) {
    return false;
  }
  model.minGeneLength = std::max<std::int64_t>(6, static_cast<std::int64_t>(minc));
  model.maxGeneLength = std::max(model.minGeneLength, static_cast<std::int64_t>(maxc));
  model.maxNonCoding = static_cast<std::int64_t>(maxn);
  model.nonCodingDecay = std::max(1.0, model.nonCodingDecay);
  model.codingDecay = std::max(1.0, model.codingDecay);
  model.codingCodingDecay = std::max(1.0, model.codingCodingDecay);
  const double shares = cd1p + cd2p;
  model.cod1Share = shares > 0 ? cd1p / shares : 1.0;
  model.cod2Share = shares > 0 ? cd2p / shares : 0.0;
  return true;
}

// RBSM lists the motif from its last position; RBSD the spacer probabilities from spacer 0.
bool LoadRbs(const Param& file, GeneModel& model) {
  model.rbsMatrix.clear();
  model.rbsSpacerLog.clear();
  if (!file.Has("--RBSM") || !file.Has("--RBSD")) return true;
  std::vector<double> matrix, spacers;
  if (!SectionNumbers(file, "--RBSM", matrix) || matrix.size() % 4 != 0) return false;
  if (!SectionNumbers(file, "--RBSD", spacers)) return false;
  for (std::size_t row = 0; row < matrix.size(); row += 4) {
    std::array<double, 4> logOdds{};
    for (int a = 0; a < 4; ++a) {
      const double p = std::max(matrix[row + static_cast<std::size_t>(a)], 1e-6);
      logOdds[a] = std::log(p / model.background[a]);
    }
    model.rbsMatrix.push_back(logOdds);
  }
  double sum = 0;
  for (const double p : spacers) sum += std::max(p, 0.0);
  if (sum <= 0) return model.rbsMatrix.clear(), true;
  for (const double p : spacers) model.rbsSpacerLog.push_back(p > 0 ? std::log(p / sum) : kNoStart);
  return true;
}

}  // namespace

bool LoadGeneModel(const std::string& path, GeneModel& model, const ModelLoadSettings& settings) {
  Param file;
  if (!ReadModel(path, file)) return false;
  model = GeneModel{};
  model.name = file.ValueOrEmpty("--NAME");
  double order = 0;
  const auto fail = [&path](std::string_view what) {
    PrintError({"error: model ", path, ": ", what});
    return false;
  };
  if (!SectionNumber(file, "--ORDM", order) || order < 0 || order > 12) return fail("bad ORDM");
  model.order = static_cast<int>(order);
  if (!LoadChains(file, model, settings.chainLeftMargin)) return fail("bad COD1, COD2 or NONC");
  if (!LoadCodons(file, model)) return fail("bad start or stop codons");
  if (!LoadLengths(file, model)) return fail("bad MINC..CD2P");
  if (!LoadRbs(file, model)) return fail("bad RBSM or RBSD");
  return true;
}

}  // namespace genetrain
