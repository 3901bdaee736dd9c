#include "motif/Compare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "TestSupport.h"

namespace genetrain {
namespace {

GENE Gene(std::int32_t strand, std::int32_t left, std::int32_t right) {
  GENE gene;
  gene.strand = strand;
  gene.left = left;
  gene.right = right;
  return gene;
}

// both direct, both reverse, stop direct, stop reverse
struct Counts {
  int both_direct = 0;
  int both_reverse = 0;
  int stop_direct = 0;
  int stop_reverse = 0;
  bool operator==(const Counts&) const = default;
};

Counts CountsOf(const Compare& compare) {
  return {compare.match_both_direct, compare.match_both_reverse, compare.match_stop_direct,
          compare.match_stop_reverse};
}

std::string Show(const Counts& counts) {
  return std::to_string(counts.both_direct) + " " + std::to_string(counts.both_reverse) + " " +
         std::to_string(counts.stop_direct) + " " + std::to_string(counts.stop_reverse);
}

Counts MatchOf(const std::vector<GENE>& source, const std::vector<GENE>& target) {
  Compare compare;
  compare.source.genes = source;
  compare.target.genes = target;
  compare.Match();
  return CountsOf(compare);
}

// The matching rule word for word: every source gene scans the target in file order and the
// first target that decides ends the scan.
Counts LiteralMatch(const std::vector<GENE>& source, const std::vector<GENE>& target) {
  Counts counts;
  for (const GENE& s : source) {
    for (const GENE& t : target) {
      if (t.strand != s.strand) continue;
      const bool both = t.left == s.left && t.right == s.right;
      if (s.strand == 1) {
        if (both) {
          ++counts.both_direct;
          break;
        }
        if (t.right == s.right) {
          ++counts.stop_direct;
          break;
        }
      } else {
        if (both) {
          ++counts.both_reverse;
          break;
        }
        if (t.left == s.left) {
          ++counts.stop_reverse;
          break;
        }
      }
    }
  }
  return counts;
}

TEST(CompareMatch, FirstTargetWithTheSameStopDecides) {
  const GENE direct = Gene(1, 0, 98);
  // A stop-only partner ahead of an exact one makes a stop-only match.
  EXPECT_EQ(Show(MatchOf({direct}, {Gene(1, 3, 98), Gene(1, 0, 98)})), "0 0 1 0");
  // The exact one first.
  EXPECT_EQ(Show(MatchOf({direct}, {Gene(1, 0, 98), Gene(1, 3, 98)})), "1 0 0 0");
  // Targets that stop elsewhere or lie on the other strand do not decide.
  EXPECT_EQ(
      Show(MatchOf({direct}, {Gene(1, 0, 50), Gene(2, 3, 98), Gene(2, 0, 98), Gene(1, 0, 98)})),
      "1 0 0 0");
  EXPECT_EQ(Show(MatchOf({direct}, {Gene(1, 0, 50), Gene(2, 0, 98)})), "0 0 0 0");

  const GENE reverse = Gene(2, 499, 699);
  EXPECT_EQ(Show(MatchOf({reverse}, {Gene(2, 499, 600), Gene(2, 499, 699)})), "0 0 0 1");
  EXPECT_EQ(Show(MatchOf({reverse}, {Gene(2, 400, 699)})), "0 0 0 0");  // start only
  EXPECT_EQ(Show(MatchOf({reverse}, {Gene(1, 499, 699), Gene(2, 499, 699)})), "0 1 0 0");
}

TEST(CompareMatch, RecordsWithoutStrandPairAsReverseGenes) {
  // Lines that did not parse are default records: they match each other at both ends.
  EXPECT_EQ(Show(MatchOf({GENE{}, GENE{}}, {Gene(1, -1, -1), GENE{}})), "0 2 0 0");
  // An unplaced direct record pairs with another one.
  EXPECT_EQ(Show(MatchOf({Gene(1, -1, -1)}, {GENE{}, Gene(1, -1, -1)})), "1 0 0 0");
  // Strand 0 stops at the left end, like the reverse strand.
  EXPECT_EQ(Show(MatchOf({Gene(0, 5, 9)}, {Gene(0, 5, 7)})), "0 0 0 1");
  EXPECT_EQ(Show(MatchOf({Gene(0, 5, 9)}, {Gene(0, 4, 9)})), "0 0 0 0");
}

TEST(CompareMatch, TargetServesEverySourceCopy) {
  const GENE gene = Gene(1, 0, 98);
  EXPECT_EQ(Show(MatchOf({gene, gene, Gene(1, 6, 98)}, {gene})), "2 0 1 0");
}

TEST(CompareMatch, CountersStartAtZero) {
  Compare compare;
  compare.match_both_direct = 5;
  compare.match_stop_reverse = 7;
  compare.target.genes = {Gene(1, 0, 98)};
  compare.Match();  // empty source
  EXPECT_EQ(Show(CountsOf(compare)), "0 0 0 0");
  compare.source.genes = {Gene(1, 0, 98)};
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

std::int32_t RandomStrand(std::mt19937& random) {
  std::uniform_int_distribution<int> pick(0, 99);
  const int kind = pick(random);
  if (kind < 40) return 1;
  if (kind < 80) return 2;
  if (kind < 92) return 0;
  if (kind < 96) return -1;
  if (kind < 98) return 3;
  return kind == 98 ? INT32_MIN : 256;
}

std::vector<GENE> RandomGenes(std::mt19937& random, std::size_t count, int span) {
  std::vector<GENE> genes;
  for (std::size_t i = 0; i < count; ++i) {
    const std::int32_t strand = RandomStrand(random);
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
    if (what == 3 && (gene.strand == 1 || gene.strand == 2)) gene.strand = 3 - gene.strand;
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
    matched +=
        expected.both_direct + expected.both_reverse + expected.stop_direct + expected.stop_reverse;
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

struct RunResult {
  bool ok;
  std::string out;
  std::string err;
};

RunResult RunCompare(Param& param) {
  Compare compare;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const bool ok = compare.Run(param);
  std::string out = testing::internal::GetCapturedStdout();
  return {ok, out, testing::internal::GetCapturedStderr()};
}

TEST(CompareRun, OptionsAreReadInOrderAndTheFirstFaultStops) {
  test::ScratchDir dir;
  const std::string genes = dir.Write("genes.txt", "g + 1 99 99 1\n");
  Param param;
  param.Set("--compare", "");
  param.Set("--target", "no_such_file.txt");
  param.Set("--COMPARE_PRECISION", "-1");
  RunResult result = RunCompare(param);
  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.err, "error: missing parameter --source\n");

  param.Set("--source", genes);
  result = RunCompare(param);
  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.err, "error in value of parameter --COMPARE_PRECISION: -1\n");

  param.Set("--COMPARE_PRECISION", "2");
  result = RunCompare(param);
  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.err, "error: file <no_such_file.txt> is not found\n");
  EXPECT_EQ(result.out, "");

  param.Set("--target", genes);
  result = RunCompare(param);
  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.out, "1.00\t1.00\n");
  EXPECT_EQ(result.err, "");
}

TEST(CompareRun, WritesTheLineToTheNamedFile) {
  test::ScratchDir dir;
  Param param;
  param.Set("--compare", dir.Path("scores.txt"));
  param.Set("--source", dir.Write("a.txt", "a + 1 99 99 1\nb - 200 400 201 1\n"));
  param.Set("--target", dir.Write("b.txt", "a + 4 99 96 1\nb - 200 400 201 1\n"));
  dir.Write("scores.txt", "older text, longer than the new line\n");
  const RunResult result = RunCompare(param);
  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(test::ReadFile(dir.Path("scores.txt")), "0.5\t1.0\n");
}

TEST(CompareRun, WarnsOnStandardOutputAboutAnEmptySet) {
  test::ScratchDir dir;
  Param param;
  param.Set("--compare", dir.Path("scores.txt"));
  param.Set("--source", dir.Write("a.txt", "a + 1 99 99 1\n"));
  param.Set("--target", dir.Write("b.txt", ""));
  const RunResult result = RunCompare(param);
  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.out, "warning, gene set in comparision is empty\n");
  EXPECT_EQ(test::ReadFile(dir.Path("scores.txt")), "0.0\t0.0\n");
}

}  // namespace
}  // namespace genetrain
