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

GENE Gene(Strand strand, std::int32_t left, std::int32_t right) {
  GENE gene;
  gene.strand = strand;
  gene.left = left;
  gene.right = right;
  return gene;
}

using Counts = std::array<int, 4>;  // both direct, both reverse, stop direct, stop reverse

Counts CountsOf(const Compare& compare) {
  return {compare.match_both_direct, compare.match_both_reverse, compare.match_stop_direct,
          compare.match_stop_reverse};
}

std::string Show(const Counts& c) {
  return std::to_string(c[0]) + " " + std::to_string(c[1]) + " " + std::to_string(c[2]) + " " +
         std::to_string(c[3]);
}

Counts MatchOf(const std::vector<GENE>& source, const std::vector<GENE>& target) {
  Compare compare;
  compare.source.genes = source;
  compare.target.genes = target;
  compare.Match();
  return CountsOf(compare);
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

TEST(CompareMatch, FirstTargetWithTheSameStrandAndStopDecides) {
  struct Case {
    std::vector<GENE> source, target;
    std::string counts;  // both direct, both reverse, stop direct, stop reverse
  };
  const GENE direct = Gene(Strand::kDirect, 0, 98), reverse = Gene(Strand::kReverse, 499, 699),
             unplaced = Gene(Strand::kDirect, -1, -1);
  const Case cases[] = {
      // A stop-only partner ahead of an exact one makes a stop-only match, and the other way.
      {{direct}, {Gene(Strand::kDirect, 3, 98), direct}, "0 0 1 0"},
      {{direct}, {direct, Gene(Strand::kDirect, 3, 98)}, "1 0 0 0"},
      // Targets that stop elsewhere or lie on the other strand do not decide.
      {{direct},
       {Gene(Strand::kDirect, 0, 50), Gene(Strand::kReverse, 3, 98), Gene(Strand::kReverse, 0, 98),
        direct},
       "1 0 0 0"},
      {{direct}, {Gene(Strand::kDirect, 0, 50), Gene(Strand::kReverse, 0, 98)}, "0 0 0 0"},
      {{reverse}, {Gene(Strand::kReverse, 499, 600), reverse}, "0 0 0 1"},
      {{reverse}, {Gene(Strand::kReverse, 400, 699)}, "0 0 0 0"},  // start only
      {{reverse}, {Gene(Strand::kDirect, 499, 699), reverse}, "0 1 0 0"},
      // A target serves every source copy.
      {{direct, direct, Gene(Strand::kDirect, 6, 98)}, {direct}, "2 0 1 0"},
      // Lines that did not parse are default records: they pair like reverse genes.
      {{GENE{}, GENE{}}, {unplaced, GENE{}}, "0 2 0 0"},
      {{unplaced}, {GENE{}, unplaced}, "1 0 0 0"},
      // No strand stops at the left end, like the reverse strand.
      {{Gene(Strand::kNone, 5, 9)}, {Gene(Strand::kNone, 5, 7)}, "0 0 0 1"},
      {{Gene(Strand::kNone, 5, 9)}, {Gene(Strand::kNone, 4, 9)}, "0 0 0 0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(&c - cases));
    EXPECT_EQ(Show(MatchOf(c.source, c.target)), c.counts);
  }
}

TEST(CompareMatch, CountersStartAtZero) {
  Compare compare;
  compare.match_both_direct = 5;
  compare.match_stop_reverse = 7;
  compare.target.genes = {Gene(Strand::kDirect, 0, 98)};
  compare.Match();  // empty source
  EXPECT_EQ(Show(CountsOf(compare)), "0 0 0 0");
  compare.source.genes = {Gene(Strand::kDirect, 0, 98)};
  compare.Match();
  compare.Match();
  EXPECT_EQ(Show(CountsOf(compare)), "1 0 0 0");
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
  std::vector<GENE> genes;
  for (std::size_t i = 0; i < count; ++i) {
    const Strand strand = RandomStrand(random);
    const std::int32_t left = RandomCoordinate(random, span);
    genes.push_back(Gene(strand, left, RandomCoordinate(random, span)));
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
    ASSERT_EQ(Show(MatchOf(source, target)), Show(expected)) << "trial " << trial;
    matched += expected[0] + expected[1] + expected[2] + expected[3];
  }
  EXPECT_GT(matched, 10000);  // the sets did pair up, at both ends and at the stop alone
}

TEST(CompareResultText, ScoresFlagsAndPrecision) {
  Compare compare;
  compare.source.genes.assign(3, GENE{});
  compare.target.genes.assign(2, GENE{});
  compare.match_both_direct = 1;
  compare.match_both_reverse = 1;
  compare.match_stop_direct = 1;
  EXPECT_EQ(compare.ResultText(1, true, true), "0.8\t1.2");  // 2*2/5, 2*3/5
  EXPECT_EQ(compare.ResultText(3, true, true), "0.800\t1.200");
  EXPECT_EQ(compare.ResultText(0, true, true), "1\t1");
  EXPECT_EQ(compare.ResultText(1, false, true), "1.2");
  EXPECT_EQ(compare.ResultText(1, true, false), "0.8");
  EXPECT_EQ(compare.ResultText(1, false, false), "");

  compare.match_both_direct = 0;
  compare.match_stop_reverse = 1;
  compare.target.genes.assign(3, GENE{});
  EXPECT_EQ(compare.ResultText(4, true, true), "0.3333\t1.0000");  // 2*1/6, 2*3/6
}

TEST(CompareResultText, NoGeneAtAllPrintsZeroWhateverTheFlags) {
  Compare compare;
  EXPECT_EQ(compare.ResultText(1, true, true), "0.0");
  EXPECT_EQ(compare.ResultText(1, false, false), "0.0");
  EXPECT_EQ(compare.ResultText(0, false, true), "0");
  EXPECT_EQ(compare.ResultText(3, true, false), "0.000");
  compare.source.genes.assign(1, GENE{});
  EXPECT_EQ(compare.ResultText(1, true, true), "0.0\t0.0");
  EXPECT_EQ(compare.ResultText(1, false, false), "");
}

}  // namespace
}  // namespace genetrain
