#include "motif/SiteSampler.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "motif/SiteMath.h"
#include "seq/LetterTables.h"

namespace genetrain {

namespace {

using sitemath::Counts;
using sitemath::RatiosOf;
using sitemath::ScoreOf;
using sitemath::SiteWeight;
using sitemath::Uniform;

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

class Sampler {
 public:
  Sampler(std::span<const std::vector<std::uint8_t>> regions, const SamplerSettings& settings,
          const std::array<double, 4>& background, double pseudocounts)
      : settings_(settings),
        zoops_(settings.model == SiteModel::kZoops),
        width_(settings.width),
        windows_(WindowsOf(regions, settings.width)),
        background_(background),
        pseudocounts_(pseudocounts),
        engine_(settings.seed),
        counts_(static_cast<std::size_t>(settings.width)),
        sites_(regions.size(), kNoSite),
        weights_(regions.size(), 0.0) {
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
    best.weights.assign(sites_.size(), 0.0);
    best.score = -HUGE_VAL;
    best.background = background_;
    best.pseudocounts = pseudocounts_;
    if (active_.empty()) return best;
    for (int restart = 0; restart < std::max(1, settings_.restarts); ++restart) {
      State restartBest;
      const double score = Restart(restartBest, best.sweeps);
      if (score > best.score) {
        best.score = score;
        best.starts = std::move(restartBest.sites);
        best.weights = std::move(restartBest.weights);
        best.siteShare = restartBest.share;
        best.bestRestart = restart;
      }
    }
    return best;
  }

 private:
  struct State {
    std::vector<std::int32_t> sites;
    std::vector<double> weights;
    double share = 1.0;
  };

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
  // The counts of the current sites and weights, with every site moved by `shift` where its
  // region allows.
  void Recount(int shift) {
    for (std::array<double, 4>& row : counts_) row.fill(0.0);
    for (const std::int32_t r : active_) Count(r, Shifted(r, shift), weights_[r]);
  }
  State Saved() const { return State{sites_, weights_, share_}; }
  void Restore(const State& state) {
    sites_ = state.sites;
    weights_ = state.weights;
    share_ = state.share;
    totalWeight_ = 0.0;
    for (const std::int32_t r : active_) totalWeight_ += weights_[r];
    Recount(0);
  }

  double Score() {
    if (!zoops_) return ScoreOf(counts_, totalWeight_, background_, pseudocounts_);
    RatiosOf(counts_, totalWeight_, background_, pseudocounts_, ratioRows_);
    double score = 0.0;
    for (const std::int32_t r : active_) {
      score += std::log(1.0 - share_ + share_ * MeanRatio(r));
    }
    return score;
  }
  // The mean likelihood ratio of the region's windows under ratioRows_, whose running sums go
  // to cumulative_ for the draw.
  double MeanRatio(std::int32_t r) {
    const auto first = static_cast<std::size_t>(windows_.firstWindow[r]);
    const auto count = static_cast<std::size_t>(WindowCount(r));
    const std::uint8_t* letters = Site(r, 0);
    const std::int32_t* starts = windows_.starts.data() + first;
    double* ratios = cumulative_.data();
    // Four windows at a time: their products do not wait on each other.
    std::size_t w = 0;
    for (; w + 4 <= count; w += 4) {
      const std::uint8_t* site0 = letters + starts[w];
      const std::uint8_t* site1 = letters + starts[w + 1];
      const std::uint8_t* site2 = letters + starts[w + 2];
      const std::uint8_t* site3 = letters + starts[w + 3];
      double p0 = 1.0, p1 = 1.0, p2 = 1.0, p3 = 1.0;
      for (int k = 0; k < width_; ++k) {
        const std::array<double, 4>& row = ratioRows_[static_cast<std::size_t>(k)];
        p0 *= row[site0[k]];
        p1 *= row[site1[k]];
        p2 *= row[site2[k]];
        p3 *= row[site3[k]];
      }
      ratios[w] = p0;
      ratios[w + 1] = p1;
      ratios[w + 2] = p2;
      ratios[w + 3] = p3;
    }
    for (; w < count; ++w) {
      const std::uint8_t* site = letters + starts[w];
      double product = 1.0;
      for (int k = 0; k < width_; ++k) product *= ratioRows_[static_cast<std::size_t>(k)][site[k]];
      ratios[w] = product;
    }
    double total = 0.0;
    for (w = 0; w < count; ++w) {
      total += ratios[w];
      ratios[w] = total;
    }
    return total / static_cast<double>(count);
  }
  // The share of regions with a site, from the weights of the sweep just made.
  void UpdateShare() {
    if (!zoops_) return;
    share_ = std::clamp(totalWeight_ / static_cast<double>(active_.size()), kLeastSiteShare,
                        kMostSiteShare);
  }

  // One run from random sites; returns its best score and alignment.
  double Restart(State& best, int& sweeps) {
    share_ = zoops_ ? kStartSiteShare : 1.0;
    totalWeight_ = 0.0;
    for (std::array<double, 4>& row : counts_) row.fill(0.0);
    for (const std::int32_t r : active_) {
      const auto first = static_cast<std::size_t>(windows_.firstWindow[r]);
      const auto pick = static_cast<std::size_t>(Uniform(engine_) * WindowCount(r));
      sites_[r] = windows_.starts[first + pick];
      weights_[r] = share_;
      totalWeight_ += share_;
      Count(r, sites_[r], share_);
    }
    double bestScore = Score();
    best = Saved();
    int sinceBetter = 0;
    for (int sweep = 1; sweep <= settings_.iterations && sinceBetter < settings_.plateau; ++sweep) {
      ++sweeps;
      for (const std::int32_t r : active_) Resample(r, Choice::kDraw);
      UpdateShare();
      double score = Score();
      if (settings_.maxShift > 0 && sweep % std::max(1, settings_.shiftEvery) == 0) {
        PhaseShift(score);
      }
      if (score > bestScore) {
        bestScore = score;
        best = Saved();
        sinceBetter = 0;
      } else {
        ++sinceBetter;
      }
    }
    return Refine(best, bestScore);
  }

  // Sampling wanders around the optimum rather than settling on it, the more so for a weak
  // motif: from the best alignment sampled, every region takes its most likely window given
  // the others, sweep after sweep, while the score rises and sites move. (Under kZoops the
  // weights keep drifting a little, and on letters without a motif the sites may never settle.)
  double Refine(State& best, double bestScore) {
    Restore(best);
    for (int sweep = 0; sweep < settings_.iterations; ++sweep) {
      bool moved = false;
      for (const std::int32_t r : active_) moved = Resample(r, Choice::kBest) || moved;
      UpdateShare();
      double score = Score();
      if (settings_.maxShift > 0) moved = PhaseShift(score) || moved;
      if (score < bestScore) break;
      bestScore = score;
      best = Saved();
      if (!moved) break;
    }
    return bestScore;
  }

  enum class Choice { kDraw, kBest };

  // Takes the region's site out, and draws a new one in proportion to its likelihood ratio
  // under the matrix of the other sites, or takes the likeliest; under kZoops the site's new
  // weight is the posterior of a site in the region. True when the site moved.
  bool Resample(std::int32_t r, Choice choice) {
    Count(r, sites_[r], -weights_[r]);
    totalWeight_ -= weights_[r];
    RatiosOf(counts_, totalWeight_, background_, pseudocounts_, ratioRows_);
    const double meanRatio = MeanRatio(r);
    const auto first = static_cast<std::size_t>(windows_.firstWindow[r]);
    const auto count = static_cast<std::size_t>(WindowCount(r));
    std::size_t pick = 0;
    if (choice == Choice::kDraw) {
      const double draw = Uniform(engine_) * cumulative_[count - 1];
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
    if (zoops_) weights_[r] = SiteWeight(share_, meanRatio);
    Count(r, sites_[r], weights_[r]);
    totalWeight_ += weights_[r];
    return sites_[r] != old;
  }

  // Moves every site by the shift, up to maxShift either way, that scores better than
  // `bestScore`, the score as the sites are, and sets it to the score kept; a site whose
  // shifted window would leave its region or hold an unknown letter stays where it is. Without
  // this, sampling can stick to a motif seen a position or two off its centre.
  bool PhaseShift(double& bestScore) {
    int bestShift = 0;
    Counts saved = counts_;
    for (int shift = -settings_.maxShift; shift <= settings_.maxShift; ++shift) {
      if (shift == 0) continue;
      Recount(shift);
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
      Count(r, sites_[r], -weights_[r]);
      sites_[r] = moved;
      Count(r, moved, weights_[r]);
    }
    return true;
  }

  std::int32_t Shifted(std::int32_t r, int shift) const {
    if (shift == 0) return sites_[r];
    const std::int32_t moved = sites_[r] + shift;
    const auto first = windows_.starts.begin() + windows_.firstWindow[r];
    const auto last = windows_.starts.begin() + windows_.firstWindow[r + 1];
    return std::binary_search(first, last, moved) ? moved : sites_[r];
  }

  const SamplerSettings& settings_;
  bool zoops_;
  int width_;
  Windows windows_;
  std::array<double, 4> background_;
  double pseudocounts_;
  std::mt19937_64 engine_;
  Counts counts_;
  std::vector<std::int32_t> sites_;
  std::vector<double> weights_;
  double share_ = 1.0;
  double totalWeight_ = 0.0;
  std::vector<std::int32_t> active_;
  std::vector<double> cumulative_;
  Counts ratioRows_;
};

}  // namespace

SiteAlignment SampleSites(std::span<const std::vector<std::uint8_t>> regions,
                          const SamplerSettings& settings) {
  const std::array<double, 4> background = BackgroundOf(regions);
  const double pseudocounts =
      settings.pseudocounts.value_or(std::sqrt(static_cast<double>(regions.size())));
  Sampler sampler(regions, settings, background, pseudocounts);
  return sampler.Run();
}

}  // namespace genetrain
