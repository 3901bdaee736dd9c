// The --gibbs command: the ribosome binding site model from the motif sites a Gibbs sampler
// found in the upstream regions of genes.

#include "motif/Gibbs.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "common/Format.h"
#include "common/Message.h"
#include "model/ModelFile.h"
#include "motif/PositionMatrix.h"

namespace genetrain {

namespace {

// Matrix cell of a site letter: only the capitals count as bases, every other byte is "other".
constexpr std::array<std::uint8_t, 256> MakeCellTable() {
  std::array<std::uint8_t, 256> table{};
  table.fill(4);
  table['A'] = 0;
  table['C'] = 1;
  table['G'] = 2;
  table['T'] = 3;
  return table;
}
constexpr std::array<std::uint8_t, 256> kCell = MakeCellTable();

}  // namespace

bool ReadGibbsOptions(Param& param, GibbsOptions& options) {
  if (param.Has("--mod") && !param.GetWord(options.model, "--mod")) return false;
  options.hasLog = param.Has("--log");
  if (options.hasLog && !param.GetOptWord(options.log, "--log")) return false;
  return param.GetWord(options.gibbs, "--gibbs") && param.GetWord(options.regions, "--seq") &&
         param.GetOpt(options.precisionMatrix, "--GIBBS_PRECISION_MAT") &&
         param.GetOpt(options.precisionDuration, "--GIBBS_PRECISION_DUR") &&
         param.GetOpt(options.pseudocountMatrix, "--GIBBS_PSEUDOCOUNTS_MAT") &&
         param.GetOpt(options.pseudocountDuration, "--GIBBS_PSEUDOCOUNTS_DUR");
}

bool Gibbs::Run(Param& param) {
  GibbsOptions options;
  return ReadGibbsOptions(param, options) && Run(options);
}

bool Gibbs::Run(const GibbsOptions& options) {
  if (!Parse(options.gibbs)) return false;
  if (sites.empty()) return WriteEmptyNotice(options);
  if (!CheckWidth(options.gibbs)) return false;
  VSeq regions;
  if (!regions.ReadRecords(options.regions)) return false;
  if (!ConvertPositions(regions)) return false;
  if (!BuildDuration(options.pseudocountDuration)) return false;
  SmoothDuration();
  if (!BuildMatrix(options.pseudocountMatrix)) return false;
  if (!options.model.empty() && !WriteModel(options)) return false;
  return !options.hasLog || WriteLog(options);
}

// A motif finder that found nothing is no error: the notice goes to the log, or to standard
// output without one.
bool Gibbs::WriteEmptyNotice(const GibbsOptions& options) {
  Set("--log", "Gibbs output is empty: ", options.gibbs);
  ClearRequests();
  Request("--log");
  return Write(options.log, true);
}

bool Gibbs::CheckWidth(const std::string& name) {
  width = static_cast<std::int32_t>(sites.front().size());
  for (const std::string& site : sites) {
    if (site.size() != sites.front().size()) {
      PrintError({"parse gibbs, error in file format ", name});
      return false;
    }
  }
  return true;
}

// The count message keeps its labels the other way round ("gibbs lines" carries the number of
// regions): scripts read it as it is.
bool Gibbs::ConvertPositions(const VSeq& regions) {
  const std::size_t count = regions.records.size();
  if (count != sites.size() || count != positions.size()) {
    std::string message = "gibbs lines: ";
    AppendInteger(message, count);
    message.append("\nseq lines: ");
    AppendInteger(message, sites.size());
    message.append("\nerror: in gibbs parse input data");
    PrintError({message});
    return false;
  }
  if (count == 0) return false;
  const std::size_t length = regions.records.front().size();
  for (const CodeSeq& region : regions.records) {
    if (region.size() != length) return false;
  }
  const std::int64_t starts = static_cast<std::int64_t>(length) + 1 - width;
  if (starts > std::numeric_limits<std::int32_t>::max()) return false;  // no region is that long
  durationLength = static_cast<std::int32_t>(starts);
  for (std::int32_t& position : positions) {
    if (position > durationLength) {
      PrintError({"error: contradiction in sequence size and motif position in gibbs"});
      return false;
    }
    if (position < 1) {
      PrintError({"error: unexpected motif position in gibbs"});
      return false;
    }
    position = durationLength - position;
  }
  return true;
}

bool Gibbs::BuildDuration(std::uint32_t pseudocount) {
  duration.assign(durationLength > 0 ? durationLength : 0, 0.0);
  for (const std::int32_t spacer : positions) {
    if (spacer < 0 || spacer >= durationLength) {
      PrintError({"error, checked in Culculate_R_Pos, never enters this place"});
      return false;
    }
    duration[spacer] += 1.0;
  }
  if (duration.empty()) return false;
  const double added = pseudocount;
  double total = 0.0;
  for (const double count : duration) total += count + added;
  if (total == 0.0) return false;
  for (double& value : duration) value = (value + added) / total;
  return true;
}

void Gibbs::SmoothDuration() {
  const std::vector<double> old = duration;
  const std::size_t size = old.size();
  for (std::size_t i = 0; i < size; ++i) {
    double value = 0.0;
    if (i > 0) value += 0.2 * old[i - 1];
    value += 0.6 * old[i];
    if (i + 1 < size) value += 0.2 * old[i + 1];
    duration[i] = value;
  }
}

bool Gibbs::BuildMatrix(std::uint32_t pseudocount) {
  matrix.assign(width > 0 ? width : 0, {0.0, 0.0, 0.0, 0.0, 0.0});
  for (const std::string& site : sites) {
    const std::size_t letters = std::min(site.size(), matrix.size());
    for (std::size_t k = 0; k < letters; ++k)
      matrix[k][kCell[static_cast<unsigned char>(site[k])]] += 1.0;
  }
  const double added = pseudocount;
  const double addedRow = static_cast<double>(std::uint64_t{4} * pseudocount);
  for (std::array<double, 5>& row : matrix) {
    const double total = row[0] + row[1] + row[2] + row[3] + addedRow;
    if (total == 0.0) return false;
    for (int cell = 0; cell < 4; ++cell) row[cell] = (row[cell] + added) / total;
  }
  return true;
}

// The model file lists the positions from the last to the first, the log from the first, under
// a header and with 1-based numbers.
std::string Gibbs::MatrixText(bool model, std::uint32_t precision) const {
  std::string text;
  const std::size_t digits = std::min(precision, kMaxPrecision);
  text.reserve(32 + matrix.size() * (4 * (digits + 8) + 12));
  if (model) {
    for (auto row = matrix.rbegin(); row != matrix.rend(); ++row)
      AppendMatrixRow(text, *row, precision);
    return text;
  }
  text.append("Pos   A   C   G   T\n");
  for (std::size_t k = 0; k < matrix.size(); ++k) {
    AppendInteger(text, k + 1);
    text.push_back(' ');
    AppendMatrixRow(text, matrix[k], precision);
  }
  return text;
}

// The model file lists the spacers from 0 up, the log from the longest down, numbered as
// distances before the gene start (-N+1 .. 0).
std::string Gibbs::DurationText(bool model, std::uint32_t precision) const {
  std::string text;
  text.reserve(duration.size() * (std::min(precision, kMaxPrecision) + 24));
  if (model) {
    for (const double value : duration) {
      AppendFixedPoint(text, value, precision);
      text.push_back('\n');
    }
    return text;
  }
  for (std::size_t i = duration.size(); i-- > 0;) {
    AppendInteger(text, -static_cast<std::int64_t>(i));
    text.push_back('\t');
    AppendFixedPoint(text, duration[i], precision);
    text.push_back('\n');
  }
  return text;
}

bool Gibbs::WriteModel(const GibbsOptions& options) {
  SetSection(*this, Section("RBSS"), width);
  SetSection(*this, Section("RBSM"), MatrixText(true, options.precisionMatrix));
  SetSection(*this, Section("RBSL"), durationLength);
  SetSection(*this, Section("RBSD"), DurationText(true, options.precisionDuration));
  ClearRequests();
  for (const ModelSection& section : kModelSections) {
    if (section.source == SectionSource::kRbs) Request(section.option);
  }
  return Write(options.model, true);
}

bool Gibbs::WriteLog(const GibbsOptions& options) {
  std::string text = DurationText(false, options.precisionDuration);
  text.append(MatrixText(false, options.precisionMatrix));
  Set("--log", "", std::move(text));
  ClearRequests();
  Request("--log");
  return Write(options.log, true);
}

}  // namespace genetrain
