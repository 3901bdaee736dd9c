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
// Every region gets a site, since genetrain --gibbs takes one per region; but not every gene has
// a ribosome binding site (four in ten E. coli genes show none), and under the plain model the
// sites of those regions drag the matrix towards whatever their letters share. The default
// model (zero or one occurrence per sequence, as in MEME) weighs each region's site by the
// posterior that the region holds one at all:
//   w = lambda m / (1 - lambda + lambda m),
// m the mean likelihood ratio of the region's windows under the matrix of the other sites and
// lambda the share of regions with a site, re-estimated after every sweep as the mean weight.
// The matrix counts each site with its weight; the score is the log-likelihood of the regions
// under the mixture, sum of ln(1 - lambda + lambda m) with the matrix of all sites.
//
// Regions are base codes (A 0, C 1, G 2, T 3, anything else 4). A window holding a code 4 (N
// and the other unknown letters) is never a site; a region without any other window takes no
// part and gets no site. The background is the 0-order letter frequency of all regions (each
// letter counted once more, so that a letter absent from the input keeps a probability).
enum class SiteModel {
  kZoops,  // zero or one site per region: sites weighed by the posterior of holding one
  kOops,   // one site per region, every site counting fully (Lawrence et al.)
};

struct SamplerSettings {
  SiteModel model = SiteModel::kZoops;
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

// The share of regions with a site starts here and stays within the bounds: a share of 0 or 1
// would freeze every weight at that value.
inline constexpr double kStartSiteShare = 0.5;
inline constexpr double kLeastSiteShare = 0.05;
inline constexpr double kMostSiteShare = 0.95;

struct SiteAlignment {
  std::vector<std::int32_t> starts;  // per region, 0-based; kNoSite for a region without one
  // Per region, the weight of its site in the matrix: under kZoops the posterior that the
  // region holds a site, from its last resampling; 1 under kOops; 0 for a region without one.
  std::vector<double> weights;
  double siteShare = 1.0;  // lambda under kZoops; 1 under kOops
  // kZoops: ZoopsScore of the sites; kOops: AlignmentScore. Natural logs; the best restart is
  // the one with the highest.
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

// The log-likelihood of the regions under the mixture of the weighted sites' matrix and the
// background, computed from scratch: the matrix is q(k,b) = (c(k,b) + B * background(b)) /
// (W + B) with c(k,b) the summed weights of the sites with letter b at position k and W the
// summed weights; m of a region is the mean, over its windows without an unknown letter, of the
// product of q(k,b) / background(b); the score is the sum over regions with a site of
// ln(1 - siteShare + siteShare m).
double ZoopsScore(std::span<const std::vector<std::uint8_t>> regions,
                  std::span<const std::int32_t> starts, std::span<const double> weights, int width,
                  const std::array<double, 4>& background, double pseudocounts, double siteShare);

// The regions with the letters of each shuffled (Fisher-Yates, from the seed): the same
// composition without any motif, on which the sampler shows how much information and how
// uneven a spacer distribution it finds by chance.
std::vector<std::vector<std::uint8_t>> ShuffledRegions(
    std::span<const std::vector<std::uint8_t>> regions, std::uint64_t seed);

// What the sites say: letter counts per motif position (each site counted with its weight),
// consensus, information per position (bits, relative entropy of the weighted site frequencies
// against the background) and the spacers of the sites whose weight is kLikelySite or more.
struct MotifProfile {
  std::vector<std::array<double, 4>> counts;
  std::string consensus;
  std::vector<double> information;
  double totalInformation = 0.0;
  std::vector<std::int64_t> spacers;  // by spacer length: bases from the site end to region end
  std::int32_t commonSpacer = 0;      // the most frequent (the shortest on a tie)
  // Shannon entropy of the spacer distribution over its log(number of spacer values): 1 for a
  // flat distribution, 0 when every site has one spacer.
  double spacerEvenness = 0.0;
  std::int64_t sites = 0;  // the sites counted in the spacers
};

// A site counts in the spacers when its region more likely holds one than not.
inline constexpr double kLikelySite = 0.5;

// No weights: every site weighs 1.
MotifProfile ProfileOf(std::span<const std::vector<std::uint8_t>> regions,
                       std::span<const std::int32_t> starts, std::span<const double> weights,
                       int width, const std::array<double, 4>& background);

}  // namespace genetrain

#endif
