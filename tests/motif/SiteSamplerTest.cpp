#include "motif/SiteSampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <string_view>
#include <vector>

namespace genetrain {
namespace {

std::vector<std::uint8_t> Codes(std::string_view letters) {
  std::vector<std::uint8_t> codes;
  for (const char letter : letters) {
    const std::string_view bases = "ACGT";
    const std::size_t code = bases.find(letter);
    codes.push_back(static_cast<std::uint8_t>(code == std::string_view::npos ? 4 : code));
  }
  return codes;
}

// Random regions of uniform letters, each holding the motif at a random place with every
// letter mutated with probability `mutation`; the truth goes to `planted`.
std::vector<std::vector<std::uint8_t>> Planted(std::string_view motif, int regions, int length,
                                               double mutation, std::uint32_t seed,
                                               std::vector<std::int32_t>& planted) {
  std::mt19937 engine(seed);
  const std::vector<std::uint8_t> site = Codes(motif);
  const int width = static_cast<int>(site.size());
  std::vector<std::vector<std::uint8_t>> out;
  planted.clear();
  for (int r = 0; r < regions; ++r) {
    std::vector<std::uint8_t> region(static_cast<std::size_t>(length));
    for (std::uint8_t& code : region) code = static_cast<std::uint8_t>(engine() % 4);
    const auto start =
        static_cast<std::int32_t>(engine() % static_cast<unsigned>(length - width + 1));
    for (int k = 0; k < width; ++k) {
      std::uint8_t code = site[static_cast<std::size_t>(k)];
      if (static_cast<double>(engine() % 1000) < mutation * 1000) {
        code = static_cast<std::uint8_t>((code + 1 + engine() % 3) % 4);
      }
      region[static_cast<std::size_t>(start + k)] = code;
    }
    planted.push_back(start);
    out.push_back(std::move(region));
  }
  return out;
}

double ShareAtTruth(const std::vector<std::int32_t>& found,
                    const std::vector<std::int32_t>& truth) {
  int same = 0;
  for (std::size_t r = 0; r < truth.size(); ++r) same += found[r] == truth[r];
  return static_cast<double>(same) / static_cast<double>(truth.size());
}

// The score of an alignment recomputed from scratch under the sampler's model.
double PlainScore(const std::vector<std::vector<std::uint8_t>>& regions,
                  const std::vector<std::int32_t>& starts, const SiteAlignment& found,
                  SiteModel model, int width = 6) {
  if (model == SiteModel::kOops) {
    return AlignmentScore(regions, starts, width, found.background, found.pseudocounts);
  }
  return ZoopsScore(regions, starts, found.weights, width, found.background, found.pseudocounts,
                    found.siteShare);
}

// The sampler recovers planted sites, mutated ones included, whatever the seed of the data or of
// the sampler, under either model; and the score it reports is the one recomputed from scratch
// for its sites (and weights), which checks the counts it keeps up to date through every
// removal, draw, reweighing and phase shift.
TEST(SiteSampler, RecoversPlantedSitesForEverySeed) {
  for (const SiteModel model : {SiteModel::kZoops, SiteModel::kOops}) {
    for (std::uint32_t seed = 1; seed <= 6; ++seed) {
      std::vector<std::int32_t> truth;
      const auto regions = Planted("TGGCAC", 60, 40, 0.1, seed, truth);
      SamplerSettings settings;
      settings.model = model;
      settings.seed = seed * 7919;
      const SiteAlignment found = SampleSites(regions, settings);
      const auto label = ::testing::Message()
                         << (model == SiteModel::kOops ? "oops" : "zoops") << " seed " << seed;
      EXPECT_GE(ShareAtTruth(found.starts, truth), 0.85) << label;
      const double plain = PlainScore(regions, found.starts, found, model);
      EXPECT_NEAR(found.score, plain, 1e-9 * std::abs(plain)) << label;
      // No alignment can beat the planted one by much: the found one is at least as good.
      EXPECT_GE(found.score, PlainScore(regions, truth, found, model) - 1e-9) << label;
      if (model == SiteModel::kOops) {
        EXPECT_EQ(found.weights, std::vector<double>(regions.size(), 1.0)) << label;
        EXPECT_EQ(found.siteShare, 1.0) << label;
      } else {
        // Every region holds a site: the share goes to its upper bound.
        EXPECT_GE(found.siteShare, 0.9) << label;
      }
    }
  }
}

// Half of the regions hold a planted site and half none: the share of regions with a site comes
// out near a half, and the weights tell the two halves apart. The plain model, by contrast,
// gives every site of an empty region full weight in the matrix.
TEST(SiteSampler, ZoopsWeighsRegionsByTheirSite) {
  for (std::uint32_t seed = 1; seed <= 4; ++seed) {
    std::vector<std::int32_t> truth;
    auto regions = Planted("TAAGGAGG", 400, 20, 0.1, seed, truth);
    std::mt19937 engine(seed + 100);
    for (std::size_t r = 1; r < regions.size(); r += 2) {
      for (std::uint8_t& code : regions[r]) code = static_cast<std::uint8_t>(engine() % 4);
    }
    SamplerSettings settings;
    settings.width = 8;
    settings.seed = seed;
    const SiteAlignment found = SampleSites(regions, settings);
    EXPECT_NEAR(found.siteShare, 0.5, 0.08) << "seed " << seed;
    double planted = 0.0, empty = 0.0;
    int plantedHigh = 0, emptyLow = 0, atTruth = 0;
    for (std::size_t r = 0; r < regions.size(); ++r) {
      const double weight = found.weights[r];
      if (r % 2 == 0) {
        planted += weight;
        plantedHigh += weight >= kLikelySite;
        atTruth += found.starts[r] == truth[r];
      } else {
        empty += weight;
        emptyLow += weight < kLikelySite;
      }
    }
    const double half = static_cast<double>(regions.size() / 2);
    EXPECT_GE(planted / half, 0.85) << "seed " << seed;
    EXPECT_LE(empty / half, 0.2) << "seed " << seed;
    EXPECT_GE(plantedHigh / half, 0.9) << "seed " << seed;
    EXPECT_GE(emptyLow / half, 0.9) << "seed " << seed;
    EXPECT_GE(atTruth / half, 0.85) << "seed " << seed;
    const double plain = PlainScore(regions, found.starts, found, SiteModel::kZoops, 8);
    EXPECT_NEAR(found.score, plain, 1e-9 * std::abs(plain)) << "seed " << seed;
  }
}

// A weak motif, short regions as upstream of genes, with a third of the regions without a site:
// most of the planted sites still come back at their place.
TEST(SiteSampler, RecoversAWeakMotifInShortRegions) {
  std::vector<std::int32_t> truth;
  auto regions = Planted("AGGAGT", 300, 20, 0.2, 11, truth);
  std::mt19937 engine(5);
  std::vector<std::int32_t> plantedOnly;
  std::vector<std::int32_t> found;
  for (std::size_t r = 0; r < regions.size(); r += 3) {
    for (std::uint8_t& code : regions[r]) code = static_cast<std::uint8_t>(engine() % 4);
  }
  const SiteAlignment alignment = SampleSites(regions, SamplerSettings{});
  for (std::size_t r = 0; r < regions.size(); ++r) {
    if (r % 3 == 0) continue;
    plantedOnly.push_back(truth[r]);
    found.push_back(alignment.starts[r]);
  }
  EXPECT_GE(ShareAtTruth(found, plantedOnly), 0.7);
}

TEST(SiteSampler, SameSeedSameSites) {
  std::vector<std::int32_t> truth;
  const auto regions = Planted("ACGGTA", 50, 30, 0.3, 3, truth);
  SamplerSettings settings;
  settings.seed = 42;
  const SiteAlignment first = SampleSites(regions, settings);
  const SiteAlignment second = SampleSites(regions, settings);
  EXPECT_EQ(first.starts, second.starts);
  EXPECT_EQ(first.score, second.score);
  EXPECT_EQ(first.sweeps, second.sweeps);
}

// A window holding an unknown letter is never a site; a region with no other window has none.
TEST(SiteSampler, UnknownLettersStayOutOfSites) {
  std::vector<std::int32_t> truth;
  auto regions = Planted("TGGCAC", 40, 30, 0.0, 9, truth);
  for (std::size_t r = 0; r < regions.size(); r += 2) regions[r][(r * 7) % 30] = 4;
  regions[5] = Codes("ACGTANACGTANACGTANACGTANACGTAN");
  const SiteAlignment found = SampleSites(regions, SamplerSettings{});
  EXPECT_EQ(found.starts[5], kNoSite);
  int recovered = 0;
  for (std::size_t r = 0; r < regions.size(); ++r) {
    if (r == 5) continue;
    ASSERT_NE(found.starts[r], kNoSite) << "region " << r;
    for (int k = 0; k < 6; ++k) {
      EXPECT_LT(regions[r][static_cast<std::size_t>(found.starts[r] + k)], 4) << "region " << r;
    }
    recovered += found.starts[r] == truth[r];
  }
  EXPECT_GE(recovered, 35);
  EXPECT_EQ(found.weights[5], 0.0);
  const double plain = PlainScore(regions, found.starts, found, SiteModel::kZoops);
  EXPECT_NEAR(found.score, plain, 1e-9 * std::abs(plain));
}

TEST(SiteSampler, PseudocountsDefaultToTheRootOfTheRegionCount) {
  const std::vector<std::vector<std::uint8_t>> regions(16, Codes("ACGTACGTAC"));
  EXPECT_DOUBLE_EQ(SampleSites(regions, SamplerSettings{}).pseudocounts, 4.0);
  SamplerSettings settings;
  settings.pseudocounts = 0.5;
  EXPECT_DOUBLE_EQ(SampleSites(regions, settings).pseudocounts, 0.5);
}

// The chance baseline keeps each region's letters and only their order changes.
TEST(SiteSampler, ShuffledRegionsKeepTheirLetters) {
  std::vector<std::int32_t> truth;
  const auto regions = Planted("TGGCAC", 30, 25, 0.0, 4, truth);
  const auto shuffled = ShuffledRegions(regions, 1);
  ASSERT_EQ(shuffled.size(), regions.size());
  int moved = 0;
  for (std::size_t r = 0; r < regions.size(); ++r) {
    auto before = regions[r], after = shuffled[r];
    moved += before != after;
    std::sort(before.begin(), before.end());
    std::sort(after.begin(), after.end());
    EXPECT_EQ(before, after) << "region " << r;
  }
  EXPECT_GE(moved, 29);
  EXPECT_EQ(ShuffledRegions(regions, 1), shuffled);
  EXPECT_NE(ShuffledRegions(regions, 2), shuffled);
}

// Hand-derived numbers for the pieces the report and the score rest on.
TEST(SiteSampler, HandComputedBackgroundScoreAndProfile) {
  const std::vector<std::vector<std::uint8_t>> two{Codes("AAC"), Codes("GTN")};
  const std::array<double, 4> background = BackgroundOf(two);  // counts 2, 1, 1, 1, each + 1
  EXPECT_DOUBLE_EQ(background[0], 3.0 / 9);
  EXPECT_DOUBLE_EQ(background[1], 2.0 / 9);
  EXPECT_DOUBLE_EQ(background[3], 2.0 / 9);

  // Two sites "A" of width 1, uniform background, B = 2: q(A) = (2 + 0.5) / 4 = 0.625, and the
  // score is 2 ln(0.625 / 0.25).
  const std::vector<std::vector<std::uint8_t>> pair{Codes("AC"), Codes("AG")};
  const std::array<double, 4> uniform{0.25, 0.25, 0.25, 0.25};
  const std::vector<std::int32_t> atStart{0, 0};
  EXPECT_NEAR(AlignmentScore(pair, atStart, 1, uniform, 2.0), 2 * std::log(2.5), 1e-12);

  // Sites A, A, T of width 1 weighing 1, 1/2, 1/4, B = 2: total 2 + 1.75, so q/background is
  // 4 (1.5 + 0.5) / 3.75 = 32/15 for A, 4 (0.25 + 0.5) / 3.75 = 4/5 for T, 8/15 for C and G.
  // Means over the windows: (32/15 + 8/15) / 2 = 4/3 for AC and AG; 4/5 for NT, whose N is no
  // window. With a share of 1/2: 2 ln(1/2 + 2/3) + ln(1/2 + 2/5).
  const std::vector<std::vector<std::uint8_t>> mixed{Codes("AC"), Codes("AG"), Codes("NT")};
  const std::vector<std::int32_t> mixedStarts{0, 0, 1};
  const std::vector<double> weights{1.0, 0.5, 0.25};
  EXPECT_NEAR(ZoopsScore(mixed, mixedStarts, weights, 1, uniform, 2.0, 0.5),
              2 * std::log(7.0 / 6) + std::log(0.9), 1e-12);

  // Sites CG, AC, CG (width 2): columns A1 C2 and C1 G2, each (1/3) log2(4/3) + (2/3) log2(8/3)
  // bits; spacers 2, 0, 0 of the four a region of 5 allows.
  const std::vector<std::vector<std::uint8_t>> three{Codes("ACGTA"), Codes("GGTAC"),
                                                     Codes("TTTCG")};
  const std::vector<std::int32_t> starts{1, 3, 3};
  const MotifProfile profile = ProfileOf(three, starts, {}, 2, uniform);
  EXPECT_EQ(profile.consensus, "CG");
  EXPECT_EQ(profile.counts[0], (std::array<double, 4>{1, 2, 0, 0}));
  EXPECT_EQ(profile.counts[1], (std::array<double, 4>{0, 1, 2, 0}));
  const double column = std::log2(4.0 / 3) / 3 + 2 * std::log2(8.0 / 3) / 3;
  EXPECT_NEAR(profile.information[0], column, 1e-12);
  EXPECT_NEAR(profile.totalInformation, 2 * column, 1e-12);
  EXPECT_EQ(profile.spacers, (std::vector<std::int64_t>{2, 0, 1, 0}));
  EXPECT_EQ(profile.commonSpacer, 0);
  EXPECT_EQ(profile.sites, 3);
  const double entropy = -(2.0 / 3 * std::log(2.0 / 3) + 1.0 / 3 * std::log(1.0 / 3));
  EXPECT_NEAR(profile.spacerEvenness, entropy / std::log(4.0), 1e-12);

  // The same sites weighing 1, 1/2 and 1/4: the letters count with their weights, and the
  // spacers only of the sites of weight 1/2 or more. Columns A 0.5 C 1.25 and C 0.5 G 1.25.
  const std::vector<double> weights3{1.0, 0.5, 0.25};
  const MotifProfile weighted = ProfileOf(three, starts, weights3, 2, uniform);
  EXPECT_EQ(weighted.consensus, "CG");
  EXPECT_EQ(weighted.counts[0], (std::array<double, 4>{0.5, 1.25, 0, 0}));
  EXPECT_EQ(weighted.counts[1], (std::array<double, 4>{0, 0.5, 1.25, 0}));
  const double weightedColumn = 2 * std::log2(8.0 / 7) / 7 + 5 * std::log2(20.0 / 7) / 7;
  EXPECT_NEAR(weighted.information[1], weightedColumn, 1e-12);
  EXPECT_NEAR(weighted.totalInformation, 2 * weightedColumn, 1e-12);
  EXPECT_EQ(weighted.spacers, (std::vector<std::int64_t>{1, 0, 1, 0}));
  EXPECT_EQ(weighted.sites, 2);
  EXPECT_NEAR(weighted.spacerEvenness, std::log(2.0) / std::log(4.0), 1e-12);
}

}  // namespace
}  // namespace genetrain
