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

// The sampler recovers planted sites, mutated ones included, whatever the seed of the data or of
// the sampler; and the score it reports is the one recomputed from scratch for its sites, which
// checks the counts it keeps up to date through every removal, draw and phase shift.
TEST(SiteSampler, RecoversPlantedSitesForEverySeed) {
  for (std::uint32_t seed = 1; seed <= 6; ++seed) {
    std::vector<std::int32_t> truth;
    const auto regions = Planted("TGGCAC", 60, 40, 0.1, seed, truth);
    SamplerSettings settings;
    settings.seed = seed * 7919;
    const SiteAlignment found = SampleSites(regions, settings);
    EXPECT_GE(ShareAtTruth(found.starts, truth), 0.85) << "seed " << seed;
    const double plain =
        AlignmentScore(regions, found.starts, 6, found.background, found.pseudocounts);
    EXPECT_NEAR(found.score, plain, 1e-9 * std::abs(plain)) << "seed " << seed;
    // No alignment can beat the planted one by much: the found one is at least as good.
    EXPECT_GE(found.score,
              AlignmentScore(regions, truth, 6, found.background, found.pseudocounts) - 1e-9);
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
  const double plain =
      AlignmentScore(regions, found.starts, 6, found.background, found.pseudocounts);
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

  // Sites CG, AC, CG (width 2): columns A1 C2 and C1 G2, each (1/3) log2(4/3) + (2/3) log2(8/3)
  // bits; spacers 2, 0, 0 of the four a region of 5 allows.
  const std::vector<std::vector<std::uint8_t>> three{Codes("ACGTA"), Codes("GGTAC"),
                                                     Codes("TTTCG")};
  const std::vector<std::int32_t> starts{1, 3, 3};
  const MotifProfile profile = ProfileOf(three, starts, 2, uniform);
  EXPECT_EQ(profile.consensus, "CG");
  EXPECT_EQ(profile.counts[0], (std::array<std::int64_t, 4>{1, 2, 0, 0}));
  EXPECT_EQ(profile.counts[1], (std::array<std::int64_t, 4>{0, 1, 2, 0}));
  const double column = std::log2(4.0 / 3) / 3 + 2 * std::log2(8.0 / 3) / 3;
  EXPECT_NEAR(profile.information[0], column, 1e-12);
  EXPECT_NEAR(profile.totalInformation, 2 * column, 1e-12);
  EXPECT_EQ(profile.spacers, (std::vector<std::int64_t>{2, 0, 1, 0}));
  EXPECT_EQ(profile.commonSpacer, 0);
  EXPECT_EQ(profile.sites, 3);
  const double entropy = -(2.0 / 3 * std::log(2.0 / 3) + 1.0 / 3 * std::log(1.0 / 3));
  EXPECT_NEAR(profile.spacerEvenness, entropy / std::log(4.0), 1e-12);
}

}  // namespace
}  // namespace genetrain
