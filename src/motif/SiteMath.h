#ifndef GENETRAIN_MOTIF_SITEMATH_H
#define GENETRAIN_MOTIF_SITEMATH_H

// The arithmetic the site sampler and its from-scratch references share.

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace genetrain::sitemath {

// A uniform number in [0, 1) from the top 53 bits of one engine draw: the same on every
// standard library, which std::uniform_real_distribution does not promise.
inline double Uniform(std::mt19937_64& engine) {
  return static_cast<double>(engine() >> 11) * 0x1.0p-53;
}

using Counts = std::vector<std::array<double, 4>>;

// The score of counts from `sites` sites; see AlignmentScore.
inline double ScoreOf(const Counts& counts, double sites, const std::array<double, 4>& background,
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

// Per motif position and letter, q(k,b) / background(b) for counts of the given total weight:
// (c + B bg) / (T bg) = c / (T bg) + B / T, with one division per call.
inline void RatiosOf(const Counts& counts, double weight, const std::array<double, 4>& background,
                     double pseudocounts, Counts& ratios) {
  ratios.resize(counts.size());
  const double share = 1.0 / (weight + pseudocounts);
  const double floor = pseudocounts * share;
  std::array<double, 4> scale{};
  for (int b = 0; b < 4; ++b) scale[b] = share / background[b];
  for (std::size_t k = 0; k < counts.size(); ++k) {
    for (int b = 0; b < 4; ++b) {
      // Weights added and taken out again may leave a rounding error below zero.
      ratios[k][b] = std::max(0.0, counts[k][b]) * scale[b] + floor;
    }
  }
}

inline double SiteWeight(double share, double meanRatio) {
  return share * meanRatio / (1.0 - share + share * meanRatio);
}

}  // namespace genetrain::sitemath

#endif
