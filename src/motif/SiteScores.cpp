// The sampler's references and summaries, computed from scratch from the sites: the background,
// the two scores, shuffled regions and the motif profile.
#include <algorithm>
#include <cmath>
#include <random>

#include "motif/SiteMath.h"
#include "motif/SiteSampler.h"
#include "seq/LetterTables.h"

namespace genetrain {

using sitemath::Counts;
using sitemath::ScoreOf;
using sitemath::Uniform;

std::array<double, 4> BackgroundOf(std::span<const std::vector<std::uint8_t>> regions) {
  std::array<double, 4> counts{1.0, 1.0, 1.0, 1.0};
  for (const std::vector<std::uint8_t>& region : regions) {
    for (const std::uint8_t code : region) {
      if (IsBase(code)) counts[code] += 1.0;
    }
  }
  const double total = counts[0] + counts[1] + counts[2] + counts[3];
  for (double& p : counts) p /= total;
  return counts;
}

std::vector<std::vector<std::uint8_t>> ShuffledRegions(
    std::span<const std::vector<std::uint8_t>> regions, std::uint64_t seed) {
  std::mt19937_64 engine(seed);
  std::vector<std::vector<std::uint8_t>> shuffled(regions.begin(), regions.end());
  for (std::vector<std::uint8_t>& region : shuffled) {
    for (std::size_t i = region.size(); i > 1; --i) {
      const auto j = static_cast<std::size_t>(Uniform(engine) * static_cast<double>(i));
      std::swap(region[i - 1], region[j]);
    }
  }
  return shuffled;
}

double AlignmentScore(std::span<const std::vector<std::uint8_t>> regions,
                      std::span<const std::int32_t> starts, int width,
                      const std::array<double, 4>& background, double pseudocounts) {
  Counts counts(static_cast<std::size_t>(width));
  double sites = 0.0;
  for (std::size_t r = 0; r < regions.size(); ++r) {
    if (starts[r] == kNoSite) continue;
    sites += 1.0;
    for (int k = 0; k < width; ++k) {
      counts[static_cast<std::size_t>(k)][regions[r][static_cast<std::size_t>(starts[r] + k)]] +=
          1.0;
    }
  }
  return ScoreOf(counts, sites, background, pseudocounts);
}

double ZoopsScore(std::span<const std::vector<std::uint8_t>> regions,
                  std::span<const std::int32_t> starts, std::span<const double> weights, int width,
                  const std::array<double, 4>& background, double pseudocounts, double siteShare) {
  const auto size = static_cast<std::size_t>(width);
  Counts counts(size);
  double total = 0.0;
  for (std::size_t r = 0; r < regions.size(); ++r) {
    if (starts[r] == kNoSite) continue;
    total += weights[r];
    for (std::size_t k = 0; k < size; ++k) {
      counts[k][regions[r][static_cast<std::size_t>(starts[r]) + k]] += weights[r];
    }
  }
  double score = 0.0;
  for (std::size_t r = 0; r < regions.size(); ++r) {
    if (starts[r] == kNoSite) continue;
    double sum = 0.0;
    int windows = 0;
    for (std::size_t start = 0; start + size <= regions[r].size(); ++start) {
      const auto site = regions[r].begin() + static_cast<std::ptrdiff_t>(start);
      if (!std::all_of(site, site + width, IsBase)) continue;
      double ratio = 1.0;
      for (std::size_t k = 0; k < size; ++k) {
        const std::uint8_t code = site[static_cast<std::ptrdiff_t>(k)];
        const double q =
            (counts[k][code] + pseudocounts * background[code]) / (total + pseudocounts);
        ratio *= q / background[code];
      }
      sum += ratio;
      ++windows;
    }
    score += std::log(1.0 - siteShare + siteShare * sum / windows);
  }
  return score;
}

MotifProfile ProfileOf(std::span<const std::vector<std::uint8_t>> regions,
                       std::span<const std::int32_t> starts, std::span<const double> weights,
                       int width, const std::array<double, 4>& background) {
  MotifProfile profile;
  profile.counts.assign(static_cast<std::size_t>(width), {});
  // Every spacer a region allows has its entry, so that a flat distribution is seen as flat.
  std::size_t longest = 0;
  for (const std::vector<std::uint8_t>& region : regions)
    longest = std::max(longest, region.size());
  if (longest >= static_cast<std::size_t>(width)) {
    profile.spacers.assign(longest - static_cast<std::size_t>(width) + 1, 0);
  }
  for (std::size_t r = 0; r < regions.size(); ++r) {
    if (starts[r] == kNoSite) continue;
    const double weight = weights.empty() ? 1.0 : weights[r];
    for (int k = 0; k < width; ++k) {
      const std::uint8_t code = regions[r][static_cast<std::size_t>(starts[r] + k)];
      if (IsBase(code)) profile.counts[static_cast<std::size_t>(k)][code] += weight;
    }
    if (weight < kLikelySite) continue;
    ++profile.sites;
    const auto spacer =
        static_cast<std::size_t>(static_cast<std::int64_t>(regions[r].size()) - starts[r] - width);
    ++profile.spacers[spacer];
  }
  for (const std::array<double, 4>& row : profile.counts) {
    const double total = row[0] + row[1] + row[2] + row[3];
    const auto top = std::max_element(row.begin(), row.end()) - row.begin();
    profile.consensus.push_back(total == 0.0 ? 'N' : BaseLetter(static_cast<std::uint8_t>(top)));
    double bits = 0.0;
    for (int b = 0; b < 4 && total > 0.0; ++b) {
      if (row[b] == 0.0) continue;
      const double f = row[b] / total;
      bits += f * std::log2(f / background[b]);
    }
    profile.information.push_back(bits);
    profile.totalInformation += bits;
  }
  const auto top = std::max_element(profile.spacers.begin(), profile.spacers.end());
  if (top != profile.spacers.end()) {
    profile.commonSpacer = static_cast<std::int32_t>(top - profile.spacers.begin());
  }
  if (profile.spacers.size() > 1 && profile.sites > 0) {
    double entropy = 0.0;
    for (const std::int64_t n : profile.spacers) {
      if (n == 0) continue;
      const double f = static_cast<double>(n) / static_cast<double>(profile.sites);
      entropy -= f * std::log(f);
    }
    profile.spacerEvenness = entropy / std::log(static_cast<double>(profile.spacers.size()));
  }
  return profile;
}

}  // namespace genetrain
