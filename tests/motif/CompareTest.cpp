#include "motif/Compare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace genetrain {
namespace {

using Counts = std::array<int, 4>;  // both direct, both reverse, stop direct, stop reverse

Counts MatchOf(const std::vector<GENE>& source, const std::vector<GENE>& target) {
  Compare compare;
  compare.source.genes = source;
  compare.target.genes = target;
  compare.Match();
  return {compare.match_both_direct, compare.match_both_reverse, compare.match_stop_direct,
          compare.match_stop_reverse};
}

// The matching rule word for word: every source gene scans the target in file order, and the
// first target on its strand with the same stop end (right if direct, else left) decides.
Counts LiteralMatch(const std::vector<GENE>& source, const std::vector<GENE>& target) {
  Counts counts{};
  for (const GENE& s : source) {
    const bool direct = s.strand == Strand::kDirect;
    for (const GENE& t : target) {
      if (t.strand != s.strand || (direct ? t.right != s.right : t.left != s.left)) continue;
      const bool both = t.left == s.left && t.right == s.right;
      ++counts[(both ? 0 : 2) + (direct ? 0 : 1)];
      break;
    }
  }
  return counts;
}

// Small coordinate ranges so that stops and starts collide often. Strand values beyond 0..2,
// extreme coordinates and values a bit or a byte apart check that strand and stop end never
// mix up: (strand 1, stop 0) is not (strand 0, stop 256) nor (strand 0, stop 1 << 24).
constexpr std::int32_t kOddValues[] = {-1, 256, 257, 1 << 16, 1 << 24, INT32_MIN, INT32_MAX};

std::int32_t RandomCoordinate(std::mt19937& random, int span) {
  std::uniform_int_distribution<int> pick(0, 99);
  std::uniform_int_distribution<int> odd(0, std::size(kOddValues) - 1);
  std::uniform_int_distribution<int> plain(-1, span);
  return pick(random) < 6 ? kOddValues[odd(random)] : plain(random);
}

Strand RandomStrand(std::mt19937& random) {
  // Besides the named strands, values cast from other numbers: none of them is direct.
  constexpr Strand kStrands[] = {Strand::kDirect,         Strand::kReverse,
                                 Strand::kNone,           static_cast<Strand>(-1),
                                 static_cast<Strand>(3),  static_cast<Strand>(INT32_MIN),
                                 static_cast<Strand>(256)};
  std::discrete_distribution<int> pick({40, 40, 12, 4, 2, 1, 1});
  return kStrands[pick(random)];
}

std::vector<GENE> RandomGenes(std::mt19937& random, std::size_t count, int span) {
  std::vector<GENE> genes(count);
  for (GENE& gene : genes) {
    gene.strand = RandomStrand(random);
    gene.left = RandomCoordinate(random, span);
    gene.right = RandomCoordinate(random, span);
  }
  return genes;
}

// A target made from the source: genes dropped, ends moved, strands swapped, order shuffled.
std::vector<GENE> Perturbed(std::mt19937& random, std::vector<GENE> genes, int span) {
  std::uniform_int_distribution<int> pick(0, 9);
  std::vector<GENE> out;
  for (GENE gene : genes) {
    const int what = pick(random);
    if (what == 0) continue;
    if (what == 1) gene.left = RandomCoordinate(random, span);
    if (what == 2) gene.right = RandomCoordinate(random, span);
    if (what == 3 && HasStrand(gene.strand)) {
      gene.strand = gene.strand == Strand::kDirect ? Strand::kReverse : Strand::kDirect;
    }
    out.push_back(gene);
  }
  std::shuffle(out.begin(), out.end(), random);
  return out;
}

TEST(CompareMatch, AgreesWithTheRuleOnRandomSets) {
  std::mt19937 random(20240607);
  std::uniform_int_distribution<std::size_t> size(0, 60);
  std::uniform_int_distribution<int> spans(0, 12);
  int matched = 0;
  for (int trial = 0; trial < 3000; ++trial) {
    const int span = spans(random);
    const std::vector<GENE> source = RandomGenes(random, size(random), span);
    const std::vector<GENE> target =
        trial % 2 == 0 ? RandomGenes(random, size(random), span) : Perturbed(random, source, span);
    const Counts expected = LiteralMatch(source, target);
    ASSERT_EQ(MatchOf(source, target), expected) << "trial " << trial;
    matched += expected[0] + expected[1] + expected[2] + expected[3];
  }
  EXPECT_GT(matched, 10000);  // the sets did pair up, at both ends and at the stop alone
}

}  // namespace
}  // namespace genetrain
