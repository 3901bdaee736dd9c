#ifndef GENETRAIN_MOTIF_GIBBS_H
#define GENETRAIN_MOTIF_GIBBS_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/Param.h"
#include "common/Report.h"
#include "motif/PositionMatrix.h"
#include "seq/VSeq.h"

namespace genetrain {

// The layouts of the motif finder's output, as Gibbs::DetectLayout tells them.
enum class GibbsLayout {
  kUnreadable,  // the file could not be read
  kMotif,       // sites listed under "MOTIF A"
  kNumMotifs,   // a "Gibbs" line at the top, sites after "Num Motifs"
};

// The settings of the --gibbs command.
struct GibbsOptions {
  std::string model;  // --mod; empty: no model output
  std::string log;    // empty: standard output for the empty-output notice
  bool hasLog = false;
  std::string gibbs;    // the motif finder's output
  std::string regions;  // --seq: the regions the motif finder searched
  std::uint32_t precisionMatrix = 3;
  std::uint32_t precisionDuration = 3;
  std::uint32_t pseudocountMatrix = 1;
  std::uint32_t pseudocountDuration = 1;
};

// Reads the settings in the order their messages appear; the first bad value fails.
bool ReadGibbsOptions(Param& param, GibbsOptions& options);

// The ribosome binding site model built from a Gibbs sampler's motif sites: the position matrix
// of the motif and the distribution of the spacer between the motif and the gene start.
class Gibbs : public Report {
 public:
  // The --gibbs command: reads the sites of the motif finder's file, checks them against the
  // regions, appends the RBS sections to the model file and a listing to the log.
  bool Run(const GibbsOptions& options);
  // ReadGibbsOptions, then the command.
  bool Run(Param& param);

  // kNumMotifs when one of the first eleven lines begins with "Gibbs", else kMotif; kUnreadable,
  // with its message, when the file cannot be read.
  GibbsLayout DetectLayout(const std::string& name);
  // Append the sites and start positions found in a file of the given layout; warnings about
  // odd lines go to standard output. False only when the file cannot be read.
  bool ParseLayout(const std::string& name, GibbsLayout layout);
  // DetectLayout, then the parser of that layout.
  bool Parse(const std::string& name);

  // Checks the start positions against the regions (one region per site, all of one length)
  // and turns each into the spacer after its site; sets durationLength.
  bool ConvertPositions(const VSeq& regions);
  // The spacer distribution, each count raised by the pseudocount, normalised.
  bool BuildDuration(std::uint32_t pseudocount);
  // Blurs the distribution with the kernel 0.2 0.6 0.2; the mass pushed past either end is lost.
  void SmoothDuration();
  // The letter probabilities per motif position; only the capitals A, C, G, T count.
  bool BuildMatrix(std::uint32_t pseudocount);

  // The tables as the model file (model) or the log lists them.
  std::string MatrixText(bool model, std::uint32_t precision) const;
  std::string DurationText(bool model, std::uint32_t precision) const;

  std::vector<double> duration;         // by spacer length
  std::vector<MatrixRow> matrix;        // per motif position: A, C, G, T, anything else
  std::vector<std::string> sites;       // as the motif finder wrote them
  std::vector<std::int32_t> positions;  // 1-based starts, then spacer lengths
  std::int32_t width = 0;
  std::int32_t durationLength = 0;  // region length, then the number of spacer values

  // Appends the RBS sections of the built matrix and spacers to the model file options.model.
  bool WriteModel(const GibbsOptions& options);

 private:
  bool CheckWidth(const std::string& name);
  bool WriteEmptyNotice(const GibbsOptions& options);
  bool WriteLog(const GibbsOptions& options);

  // One line that may hold a site: `tokens` holds `count` tokens, `full` says whether both
  // flanks are there. Appends the site when the tokens check, and warns when the region number
  // does not follow the sites found so far.
  void TakeSiteLine(std::string_view line, const std::string_view* tokens, bool full,
                    std::string& warnings);
};

}  // namespace genetrain

#endif
