#include "genefind/MotifCommand.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "common/InputStream.h"
#include "common/Output.h"
#include "seq/CodedRecords.h"
#include "seq/FastaScanner.h"

namespace genetrain {

namespace {

using Regions = CodedRecords;

bool ReadRegions(const std::string& name, Regions& regions) {
  return ReadCodedRecords(name, regions);
}

// The sampler needs other sites to learn from, and --gibbs needs one region length: a spacer is
// counted back from the region's end.
bool CheckRegions(const std::string& name, const Regions& regions, int width) {
  const char* file = name.c_str();
  if (regions.codes.empty()) {
    std::fprintf(stderr, "error: file <%s> holds no region\n", file);
    return false;
  }
  if (regions.codes.size() == 1) {
    std::fprintf(stderr, "error: file <%s> holds one region: the motif sampler needs two or more\n",
                 file);
    return false;
  }
  const std::size_t length = regions.codes[0].size();
  for (std::size_t r = 1; r < regions.codes.size(); ++r) {
    if (regions.codes[r].size() == length) continue;
    std::fprintf(stderr,
                 "error: file <%s>: region %zu has %zu letters and region 1 has %zu; the "
                 "regions must be of one length\n",
                 file, r + 1, regions.codes[r].size(), length);
    return false;
  }
  if (length <= static_cast<std::size_t>(width)) {
    std::fprintf(stderr,
                 "error: file <%s>: the regions have %zu letters, too few for a motif of width "
                 "%d and a flank\n",
                 file, length, width);
    return false;
  }
  return true;
}

// A region without a window free of unknown letters still needs a line, for --gibbs takes one
// site per region: it gets the start most other regions have, so that the spacer distribution
// keeps its shape (its unknown letters count for no base in the matrix).
std::int32_t CommonStart(const std::vector<std::int32_t>& starts, std::size_t length) {
  std::vector<std::int64_t> counts(length, 0);
  for (const std::int32_t start : starts) {
    if (start != kNoSite) ++counts[static_cast<std::size_t>(start)];
  }
  return static_cast<std::int32_t>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

char Letter(std::uint8_t code, bool upper) {
  const char letter = BaseLetter(code);
  return upper ? letter : static_cast<char>(letter - 'A' + 'a');
}

void AppendLetters(std::string& text, const std::vector<std::uint8_t>& region, std::size_t from,
                   std::size_t to, bool upper) {
  for (std::size_t i = from; i < to; ++i) text.push_back(Letter(region[i], upper));
}

constexpr std::size_t kFlank = 10;

// Region number, site number, 1-based start, left flank (lower case, left out at the region's
// start), site (capitals), right flank (left out at its end), 1-based end.
void AppendMotifLine(std::string& text, std::size_t number, const std::vector<std::uint8_t>& region,
                     std::int32_t start, int width) {
  const auto first = static_cast<std::size_t>(start);
  const std::size_t end = first + static_cast<std::size_t>(width);
  char head[48];
  std::snprintf(head, sizeof head, "%6zu-  1 %6d ", number, start + 1);
  text.append(head);
  std::string left;
  AppendLetters(left, region, first - std::min(first, kFlank), first, false);
  text.append(kFlank - left.size(), ' ').append(left).push_back(' ');
  AppendLetters(text, region, first, end, true);
  text.push_back(' ');
  std::string right;
  AppendLetters(right, region, end, std::min(region.size(), end + kFlank), false);
  text.append(right).append(kFlank - right.size(), ' ');
  std::snprintf(head, sizeof head, " %6zu\n", end);
  text.append(head);
}

void AppendTableLine(std::string& text, std::size_t number, const std::string& id,
                     const std::vector<std::uint8_t>& region, std::int32_t start, int width,
                     bool sampled) {
  const auto first = static_cast<std::size_t>(start);
  const std::size_t end = first + static_cast<std::size_t>(width);
  text.append(std::to_string(number)).push_back('\t');
  text.append(id).push_back('\t');
  text.append(std::to_string(first + 1)).push_back('\t');
  text.append(std::to_string(end)).push_back('\t');
  text.append(std::to_string(region.size() - end)).push_back('\t');
  AppendLetters(text, region, first, end, true);
  text.append(sampled ? "\n" : "\tno window without N\n");
}

std::string OutputText(const MotifOptions& options, const Regions& regions,
                       const std::vector<std::int32_t>& starts, const MotifProfile& profile,
                       std::int32_t fallback) {
  const int width = options.sampler.width;
  std::string text;
  if (options.format == MotifFormat::kTable) {
    text.append("#region\tid\tstart\tend\tspacer\tsite\n");
  } else {
    text.append("\n                              MOTIF A\n\n");
  }
  for (std::size_t r = 0; r < starts.size(); ++r) {
    const bool sampled = starts[r] != kNoSite;
    const std::int32_t start = sampled ? starts[r] : fallback;
    if (options.format == MotifFormat::kTable) {
      AppendTableLine(text, r + 1, regions.ids[r], regions.codes[r], start, width, sampled);
    } else {
      AppendMotifLine(text, r + 1, regions.codes[r], start, width);
    }
  }
  if (options.format == MotifFormat::kMotif) {
    // A line with parentheses ends what --gibbs reads.
    char tail[160];
    const auto sites = std::count_if(starts.begin(), starts.end(),
                                     [](std::int32_t start) { return start != kNoSite; });
    std::snprintf(tail, sizeof tail, "\n(%lld sites of width %d, consensus %s, %.2f bits)\n",
                  static_cast<long long>(sites), width, profile.consensus.c_str(),
                  profile.totalInformation);
    text.append(tail);
  }
  return text;
}

void PrintReport(const Regions& regions, const SiteAlignment& alignment,
                 const MotifProfile& profile, const SamplerSettings& settings,
                 std::size_t unsampled, const SiteAlignment& chanceSites,
                 const MotifProfile& chance) {
  const bool zoops = settings.model == SiteModel::kZoops;
  std::fprintf(stderr,
               "genefind motif: %zu regions of %zu letters, width %d, best of %d restarts "
               "(restart %d, score %.1f, %d sweeps in all)\n",
               regions.codes.size(), regions.codes[0].size(), settings.width,
               std::max(1, settings.restarts), alignment.bestRestart + 1, alignment.score,
               alignment.sweeps);
  if (unsampled > 0) {
    std::fprintf(stderr,
                 "  %zu regions have no window without N; their lines take the most common "
                 "start\n",
                 unsampled);
  }
  if (zoops) {
    std::fprintf(stderr,
                 "  share of regions with a site %.2f; the spacers count the %lld sites whose "
                 "region holds one with a posterior of %.1f or more\n",
                 alignment.siteShare, static_cast<long long>(profile.sites), kLikelySite);
  }
  std::fprintf(stderr, "  consensus     %s\n  information  ", profile.consensus.c_str());
  for (const double bits : profile.information) std::fprintf(stderr, " %.2f", bits);
  std::fprintf(stderr, "  (total %.2f bits)\n", profile.totalInformation);
  const double share =
      profile.sites == 0
          ? 0.0
          : 100.0 *
                static_cast<double>(
                    profile.spacers[static_cast<std::size_t>(profile.commonSpacer)]) /
                static_cast<double>(profile.sites);
  std::fprintf(stderr,
               "  spacer        most frequent %d (%.1f%% of sites), evenness %.2f (1 = flat)\n",
               profile.commonSpacer, share, profile.spacerEvenness);
  std::fputs("  spacer counts", stderr);
  for (const std::int64_t n : profile.spacers) {
    std::fprintf(stderr, " %lld", static_cast<long long>(n));
  }
  std::fprintf(stderr, "\n  by chance     %.2f bits, spacer evenness %.2f", chance.totalInformation,
               chance.spacerEvenness);
  if (zoops) std::fprintf(stderr, ", share of regions with a site %.2f", chanceSites.siteShare);
  std::fputs(" (the same search on the regions with their letters shuffled)\n", stderr);
}

}  // namespace

bool RunMotif(const MotifOptions& options) {
  Regions regions;
  if (!ReadRegions(options.input, regions)) return false;
  const int width = options.sampler.width;
  if (!CheckRegions(options.input, regions, width)) return false;
  const SiteAlignment alignment = SampleSites(regions.codes, options.sampler);
  const std::size_t unsampled = static_cast<std::size_t>(
      std::count(alignment.starts.begin(), alignment.starts.end(), kNoSite));
  if (unsampled == regions.codes.size()) {
    std::fprintf(stderr, "error: file <%s>: no region has %d letters in a row without N\n",
                 options.input.c_str(), width);
    return false;
  }
  const MotifProfile profile =
      ProfileOf(regions.codes, alignment.starts, alignment.weights, width, alignment.background);
  const std::int32_t fallback = CommonStart(alignment.starts, regions.codes[0].size());
  OutputFile output;
  if (!output.Open(options.output == "-" ? std::string() : options.output)) return false;
  output.Write(OutputText(options, regions, alignment.starts, profile, fallback));
  if (!output.Commit()) return false;
  if (options.quiet) return true;
  // The sampler always finds some information, even in random letters; the same search on the
  // shuffled regions tells what a motif must beat.
  const std::vector<std::vector<std::uint8_t>> shuffled =
      ShuffledRegions(regions.codes, options.sampler.seed);
  const SiteAlignment chanceSites = SampleSites(shuffled, options.sampler);
  const MotifProfile chance =
      ProfileOf(shuffled, chanceSites.starts, chanceSites.weights, width, chanceSites.background);
  PrintReport(regions, alignment, profile, options.sampler, unsampled, chanceSites, chance);
  return true;
}

}  // namespace genetrain
