// The ribosome binding site sections of a model built with a fixed motif: the position matrix of
// equal windows around the genes' start codons.
#include <string>
#include <vector>

#include "common/Format.h"
#include "common/Message.h"
#include "common/Output.h"
#include "model/ModelBuild.h"
#include "model/ModelFile.h"
#include "motif/PositionMatrix.h"
#include "seq/LetterTables.h"

namespace genetrain {

namespace {

// Counts the letters of the windows by position (the first window sets the number of positions),
// then turns A, C, G, T into probabilities with the pseudocount. A window shorter than the first
// cannot be counted: it is reported as the out-of-range access it is and fails the command, as
// does a position with nothing to divide by.
bool CountMatrix(const std::vector<CodeSeq>& windows, std::int64_t pseudocount,
                 std::vector<MatrixRow>& matrix) {
  if (windows.empty()) return true;
  matrix.assign(windows.front().size(), MatrixRow{});
  for (const CodeSeq& window : windows) {
    if (window.size() < matrix.size()) {
      PrintError({"vector::_M_range_check"});
      return false;
    }
    for (std::size_t position = 0; position < matrix.size(); ++position) {
      matrix[position][IsBase(window[position]) ? window[position] : 4] += 1.0;
    }
  }
  for (MatrixRow& row : matrix) {
    const double total = row[0] + row[1] + row[2] + row[3] + 4.0 * static_cast<double>(pseudocount);
    if (total == 0) return false;
    for (int cell = 0; cell < 4; ++cell) {
      row[cell] = (row[cell] + static_cast<double>(pseudocount)) / total;
    }
  }
  return true;
}

// The model lists the rows backwards: the positions after the start codon from the last, then
// the positions before it from the one next to it; the start codon's three rows are left out.
std::string ModelMatrix(const std::vector<MatrixRow>& matrix, std::int64_t upstream,
                        std::uint32_t precision) {
  std::string text;
  const auto size = static_cast<std::int64_t>(matrix.size());
  for (std::int64_t position = size - 1; position >= upstream + 3; --position) {
    AppendMatrixRow(text, matrix[static_cast<std::size_t>(position)], precision);
  }
  for (std::int64_t position = std::min(upstream, size) - 1; position >= 0; --position) {
    AppendMatrixRow(text, matrix[static_cast<std::size_t>(position)], precision);
  }
  return text;
}

// The log lists the rows forwards, numbered from 1, in three blocks: before the start codon, the
// start codon, after it. Each block that is complete ends in an empty line, also where no row
// follows it.
std::string LogMatrix(const std::vector<MatrixRow>& matrix, std::int64_t upstream,
                      std::uint32_t precision) {
  std::string text = "Pos   A   C   G   T\n";
  if (upstream == 0) text.push_back('\n');
  for (std::size_t position = 0; position < matrix.size(); ++position) {
    AppendInteger(text, position + 1);
    text.push_back(' ');
    AppendMatrixRow(text, matrix[position], precision);
    const auto rows = static_cast<std::int64_t>(position) + 1;
    if (rows == upstream || rows == upstream + 3) text.push_back('\n');
  }
  return text;
}

std::uint32_t Precision(std::int32_t precision) {
  return precision < 0 ? 0 : static_cast<std::uint32_t>(precision);
}

}  // namespace

bool ReadFixedMotifOptions(Param& param, FixedMotifOptions& options) {
  options.log = param.ValueOrEmpty("--log");
  return param.GetOpt(options.width, "--width") &&
         param.GetOpt(options.upstream, "--PRE_START_WIDTH") &&
         param.GetOpt(options.intergenic, "--PRE_START_INTERGENIC") &&
         param.GetOpt(options.pseudocount, "--GIBBS_PSEUDOCOUNTS_MAT") &&
         param.GetOpt(options.precision, "--GIBBS_PRECISION_MAT");
}

bool BuildFixedMotif(Report& report, Genome& genome, const VSeq& seq, const GeneSet& set,
                     const FixedMotifOptions& options) {
  const std::int64_t inside = std::int64_t{options.width} - options.upstream;
  std::vector<std::string> labels;
  genome.CollectPreStarts(seq, set, options.upstream, ClampToInt(inside), options.intergenic,
                          labels);
  std::vector<MatrixRow> matrix;
  if (!CountMatrix(genome.pre_start, options.pseudocount, matrix)) return false;

  const std::uint32_t precision = Precision(options.precision);
  SetSection(report, Section("RBSS"), std::int64_t{options.width} - 3);
  SetSection(report, Section("RBSM"), ModelMatrix(matrix, options.upstream, precision));
  SetSection(report, Section("RBSL"), std::int64_t{options.upstream} + 3 - options.width);
  SetSection(report, Section("RBSD"), "1", Placement::kOnKeyLine);

  // The log is a file of its own, appended to: the matrix and the end of line that closes it.
  if (options.log.empty()) return true;
  std::string text = LogMatrix(matrix, options.upstream, precision);
  text.push_back('\n');
  return WriteFile(options.log, text, OutputMode::kAppend);
}

}  // namespace genetrain
