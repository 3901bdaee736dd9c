#ifndef GENETRAIN_MOTIF_SITESAMPLER_H
#define GENETRAIN_MOTIF_SITESAMPLER_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace genetrain {

// A Gibbs site sampler (Lawrence et al., Science 1993) that looks for one motif site in every
// region: ribosome binding sites in the regions upstream of gene starts.
//
// Regions are base codes (A 0, C 1, G 2, T 3, anything else 4). A window holding a code 4 (N
// and the other unknown letters) is never a site; a region without any other window takes no
// part and gets no site. The background is the 0-order letter frequency of all regions (each
// letter counted once more, so that a letter absent from the input keeps a probability).
struct SamplerSettings {
  int width = 6;
  int restarts = 10;     // independent runs from random sites; the best is kept
  int iterations = 500;  // sweeps over all regions per restart, at most
  int plateau = 25;      // a restart ends after this many sweeps without a better alignment
  // Pseudocounts per motif position, spread over the letters by the background; none: the
  // square root of the number of regions, as Lawrence et al. suggest.
  std::optional<double> pseudocounts;
  std::uint64_t seed = 1;
  int maxShift = 2;    // phase shifts try moving every site by up to this many positions
  int shiftEvery = 5;  // sweeps between two phase-shift trials
};

inline constexpr std::int32_t kNoSite = -1;

struct SiteAlignment {
  std::vector<std::int32_t> starts;  // per region, 0-based; kNoSite for a region without one
  // The log-likelihood ratio of the sites under their smoothed position matrix against the
  // background (natural log); the best restart is the one with the highest.
  double score = 0.0;
  int bestRestart = 0;  // 0-based
  int sweeps = 0;       // over all restarts
  std::array<double, 4> background{};
  double pseudocounts = 0.0;
};

// The sampler's run over the regions; every region must be at least `width` long. Deterministic
// for a seed: the random numbers come straight from a 64-bit Mersenne Twister, with no library
// distribution in between.
SiteAlignment SampleSites(std::span<const std::vector<std::uint8_t>> regions,
                          const SamplerSettings& settings);

// The letter frequencies of the regions' bases, each count raised by one.
std::array<double, 4> BackgroundOf(std::span<const std::vector<std::uint8_t>> regions);

// The score of an alignment computed from scratch: sum over motif positions k and letters b of
// count(k,b) * ln(q(k,b) / background(b)), with q(k,b) = (count(k,b) + B * background(b)) /
// (sites + B). The sampler keeps its counts up to date instead; this is the plain reference.
double AlignmentScore(std::span<const std::vector<std::uint8_t>> regions,
                      std::span<const std::int32_t> starts, int width,
                      const std::array<double, 4>& background, double pseudocounts);

// The regions with the letters of each shuffled (Fisher-Yates, from the seed): the same
// composition without any motif, on which the sampler shows how much information and how
// uneven a spacer distribution it finds by chance.
std::vector<std::vector<std::uint8_t>> ShuffledRegions(
    std::span<const std::vector<std::uint8_t>> regions, std::uint64_t seed);

// What the sites say: letter counts per motif position, consensus, information per position
// (bits, relative entropy of the site frequencies against the background) and the spacers.
struct MotifProfile {
  std::vector<std::array<std::int64_t, 4>> counts;
  std::string consensus;
  std::vector<double> information;
  double totalInformation = 0.0;
  std::vector<std::int64_t> spacers;  // by spacer length: bases from the site end to region end
  std::int32_t commonSpacer = 0;      // the most frequent (the shortest on a tie)
  // Shannon entropy of the spacer distribution over its log(number of spacer values): 1 for a
  // flat distribution, 0 when every site has one spacer.
  double spacerEvenness = 0.0;
  std::int64_t sites = 0;
};

MotifProfile ProfileOf(std::span<const std::vector<std::uint8_t>> regions,
                       std::span<const std::int32_t> starts, int width,
                       const std::array<double, 4>& background);

}  // namespace genetrain

#endif
