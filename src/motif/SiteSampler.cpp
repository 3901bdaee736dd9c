#include "motif/SiteSampler.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "seq/LetterTables.h"

namespace genetrain {

namespace {

// A uniform number in [0, 1) from the top 53 bits of one engine draw: the same on every
// standard library, which std::uniform_real_distribution does not promise.
double Uniform(std::mt19937_64& engine) {
  return static_cast<double>(engine() >> 11) * 0x1.0p-53;
}

// The regions laid end to end with, per region, the starts of its windows free of unknown
// letters; the sampler only ever reads these.
struct Windows {
  std::vector<std::uint8_t> letters;
  std::vector<std::int32_t> regionStart;  // into letters
  std::vector<std::int32_t> starts;       // valid window starts, region by region
  std::vector<std::int32_t> firstWindow;  // into starts, one more entry than regions
};

Windows WindowsOf(std::span<const std::vector<std::uint8_t>> regions, int width) {
  Windows windows;
  windows.firstWindow.push_back(0);
  for (const std::vector<std::uint8_t>& region : regions) {
    windows.regionStart.push_back(static_cast<std::int32_t>(windows.letters.size()));
    windows.letters.insert(windows.letters.end(), region.begin(), region.end());
    // A window is valid when the last unknown letter lies before it.
    std::int32_t lastUnknown = -1;
    const auto length = static_cast<std::int32_t>(region.size());
    for (std::int32_t i = 0; i < length; ++i) {
      if (!IsBase(region[i])) lastUnknown = i;
      const std::int32_t start = i - width + 1;
      if (start >= 0 && lastUnknown < start) windows.starts.push_back(start);
    }
    windows.firstWindow.push_back(static_cast<std::int32_t>(windows.starts.size()));
  }
  return windows;
}

using Counts = std::vector<std::array<double, 4>>;

// The score of counts from `sites` sites; see AlignmentScore.
double ScoreOf(const Counts& counts, double sites, const std::array<double, 4>& background,
               double pseudocounts) {
  double score = 0.0;
  for (const std::array<double, 4>& row : counts) {
    for (int b = 0; b < 4; ++b) {
      if (row[b] == 0.0) continue;
      const double q = (row[b] + pseudocounts * background[b]) / (sites + pseudocounts);
      score += row[b] * std::log(q / background[b]);
    }
  }
  return score;
}

class Sampler {
 public:
  Sampler(std::span<const std::vector<std::uint8_t>> regions, const SamplerSettings& settings,
          const std::array<double, 4>& background, double pseudocounts)
      : settings_(settings),
        width_(settings.width),
        windows_(WindowsOf(regions, settings.width)),
        background_(background),
        pseudocounts_(pseudocounts),
        engine_(settings.seed),
        counts_(static_cast<std::size_t>(settings.width)),
        sites_(regions.size(), kNoSite) {
    for (std::size_t r = 0; r < regions.size(); ++r) {
      if (WindowCount(r) > 0) active_.push_back(static_cast<std::int32_t>(r));
    }
    std::int32_t most = 0;
    for (std::size_t r = 0; r < regions.size(); ++r) most = std::max(most, WindowCount(r));
    cumulative_.resize(static_cast<std::size_t>(most));
  }

  SiteAlignment Run() {
    SiteAlignment best;
    best.starts.assign(sites_.size(), kNoSite);
    best.score = -HUGE_VAL;
    best.background = background_;
    best.pseudocounts = pseudocounts_;
    if (active_.empty()) return best;
    for (int restart = 0; restart < std::max(1, settings_.restarts); ++restart) {
      std::vector<std::int32_t> restartBest;
      const double score = Restart(restartBest, best.sweeps);
      if (score > best.score) {
        best.score = score;
        best.starts = std::move(restartBest);
        best.bestRestart = restart;
      }
    }
    return best;
  }

 private:
  std::int32_t WindowCount(std::size_t region) const {
    return windows_.firstWindow[region + 1] - windows_.firstWindow[region];
  }
  const std::uint8_t* Site(std::int32_t region, std::int32_t start) const {
    return windows_.letters.data() + windows_.regionStart[static_cast<std::size_t>(region)] + start;
  }
  void Count(std::int32_t region, std::int32_t start, double step) {
    const std::uint8_t* site = Site(region, start);
    for (int k = 0; k < width_; ++k) counts_[static_cast<std::size_t>(k)][site[k]] += step;
  }
  double Score() const {
    return ScoreOf(counts_, static_cast<double>(active_.size()), background_, pseudocounts_);
  }

  // One run from random sites; returns its best score and alignment.
  double Restart(std::vector<std::int32_t>& bestSites, int& sweeps) {
    for (std::array<double, 4>& row : counts_) row.fill(0.0);
    for (const std::int32_t r : active_) {
      const auto first = static_cast<std::size_t>(windows_.firstWindow[r]);
      const auto pick = static_cast<std::size_t>(Uniform(engine_) * WindowCount(r));
      sites_[r] = windows_.starts[first + pick];
      Count(r, sites_[r], 1.0);
    }
    double bestScore = Score();
    bestSites = sites_;
    int sinceBetter = 0;
    for (int sweep = 1; sweep <= settings_.iterations && sinceBetter < settings_.plateau; ++sweep) {
      ++sweeps;
      for (const std::int32_t r : active_) Resample(r, Choice::kDraw);
      if (settings_.maxShift > 0 && sweep % std::max(1, settings_.shiftEvery) == 0) PhaseShift();
      const double score = Score();
      if (score > bestScore) {
        bestScore = score;
        bestSites = sites_;
        sinceBetter = 0;
      } else {
        ++sinceBetter;
      }
    }
    return Refine(bestSites, bestScore);
  }

  // Sampling wanders around the optimum rather than settling on it, the more so for a weak
  // motif: from the best alignment sampled, every region takes its most likely window given
  // the others, sweep after sweep, until no site moves.
  double Refine(std::vector<std::int32_t>& bestSites, double bestScore) {
    sites_ = bestSites;
    for (std::array<double, 4>& row : counts_) row.fill(0.0);
    for (const std::int32_t r : active_) Count(r, sites_[r], 1.0);
    for (int sweep = 0; sweep < settings_.iterations; ++sweep) {
      bool moved = false;
      for (const std::int32_t r : active_) moved = Resample(r, Choice::kBest) || moved;
      if (settings_.maxShift > 0) moved = PhaseShift() || moved;
      if (!moved) break;
    }
    const double score = Score();
    if (score < bestScore) return bestScore;
    bestSites = sites_;
    return score;
  }

  enum class Choice { kDraw, kBest };

  // Takes the region's site out, and draws a new one in proportion to its likelihood ratio
  // under the matrix of the other sites, or takes the likeliest. True when the site moved.
  bool Resample(std::int32_t r, Choice choice) {
    Count(r, sites_[r], -1.0);
    const double others = static_cast<double>(active_.size() - 1) + pseudocounts_;
    std::vector<std::array<double, 4>>& ratios = ratioRows_;
    ratios.resize(static_cast<std::size_t>(width_));
    for (int k = 0; k < width_; ++k) {
      for (int b = 0; b < 4; ++b) {
        const double q =
            (counts_[static_cast<std::size_t>(k)][b] + pseudocounts_ * background_[b]) / others;
        ratios[static_cast<std::size_t>(k)][b] = q / background_[b];
      }
    }
    const auto first = static_cast<std::size_t>(windows_.firstWindow[r]);
    const auto count = static_cast<std::size_t>(WindowCount(r));
    const std::uint8_t* letters = Site(r, 0);
    double total = 0.0;
    for (std::size_t w = 0; w < count; ++w) {
      const std::uint8_t* site = letters + windows_.starts[first + w];
      double weight = 1.0;
      for (int k = 0; k < width_; ++k) weight *= ratios[static_cast<std::size_t>(k)][site[k]];
      total += weight;
      cumulative_[w] = total;
    }
    std::size_t pick = 0;
    if (choice == Choice::kDraw) {
      const double draw = Uniform(engine_) * total;
      while (pick + 1 < count && cumulative_[pick] <= draw) ++pick;
    } else {
      double most = cumulative_[0];
      for (std::size_t w = 1; w < count; ++w) {
        const double weight = cumulative_[w] - cumulative_[w - 1];
        if (weight > most) {
          most = weight;
          pick = w;
        }
      }
    }
    const std::int32_t old = sites_[r];
    sites_[r] = windows_.starts[first + pick];
    Count(r, sites_[r], 1.0);
    return sites_[r] != old;
  }

  // Moves every site by the shift, up to maxShift either way, that scores best; a site whose
  // shifted window would leave its region or hold an unknown letter stays where it is. Without
  // this, sampling can stick to a motif seen a position or two off its centre.
  bool PhaseShift() {
    double bestScore = Score();
    int bestShift = 0;
    Counts saved = counts_;
    for (int shift = -settings_.maxShift; shift <= settings_.maxShift; ++shift) {
      if (shift == 0) continue;
      for (std::array<double, 4>& row : counts_) row.fill(0.0);
      for (const std::int32_t r : active_) Count(r, Shifted(r, shift), 1.0);
      const double score = Score();
      if (score > bestScore) {
        bestScore = score;
        bestShift = shift;
      }
    }
    counts_ = std::move(saved);
    if (bestShift == 0) return false;
    for (const std::int32_t r : active_) {
      const std::int32_t moved = Shifted(r, bestShift);
      if (moved == sites_[r]) continue;
      Count(r, sites_[r], -1.0);
      sites_[r] = moved;
      Count(r, moved, 1.0);
    }
    return true;
  }

  std::int32_t Shifted(std::int32_t r, int shift) const {
    const std::int32_t moved = sites_[r] + shift;
    const auto first = windows_.starts.begin() + windows_.firstWindow[r];
    const auto last = windows_.starts.begin() + windows_.firstWindow[r + 1];
    return std::binary_search(first, last, moved) ? moved : sites_[r];
  }

  const SamplerSettings& settings_;
  int width_;
  Windows windows_;
  std::array<double, 4> background_;
  double pseudocounts_;
  std::mt19937_64 engine_;
  Counts counts_;
  std::vector<std::int32_t> sites_;
  std::vector<std::int32_t> active_;
  std::vector<double> cumulative_;
  std::vector<std::array<double, 4>> ratioRows_;
};

}  // namespace

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

SiteAlignment SampleSites(std::span<const std::vector<std::uint8_t>> regions,
                          const SamplerSettings& settings) {
  const std::array<double, 4> background = BackgroundOf(regions);
  const double pseudocounts =
      settings.pseudocounts.value_or(std::sqrt(static_cast<double>(regions.size())));
  Sampler sampler(regions, settings, background, pseudocounts);
  return sampler.Run();
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

MotifProfile ProfileOf(std::span<const std::vector<std::uint8_t>> regions,
                       std::span<const std::int32_t> starts, int width,
                       const std::array<double, 4>& background) {
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
    ++profile.sites;
    for (int k = 0; k < width; ++k) {
      const std::uint8_t code = regions[r][static_cast<std::size_t>(starts[r] + k)];
      if (IsBase(code)) ++profile.counts[static_cast<std::size_t>(k)][code];
    }
    const auto spacer =
        static_cast<std::size_t>(static_cast<std::int64_t>(regions[r].size()) - starts[r] - width);
    ++profile.spacers[spacer];
  }
  constexpr std::array<char, 4> kLetters{'A', 'C', 'G', 'T'};
  for (const std::array<std::int64_t, 4>& row : profile.counts) {
    const std::int64_t total = row[0] + row[1] + row[2] + row[3];
    const auto top = std::max_element(row.begin(), row.end()) - row.begin();
    profile.consensus.push_back(total == 0 ? 'N' : kLetters[static_cast<std::size_t>(top)]);
    double bits = 0.0;
    for (int b = 0; b < 4 && total > 0; ++b) {
      if (row[b] == 0) continue;
      const double f = static_cast<double>(row[b]) / static_cast<double>(total);
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
