// The gene set decoder against an exhaustive search: on small random candidate sets, every
// ordered chain of candidates is tried, so the best total, the genes chosen and the best total
// through each candidate are known without the running maxima or the tree.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "predict/Schedule.h"

namespace genetrain {
namespace {

// Whether h may stand right before g in a gene set, and what it costs.
bool MayPrecede(const PredictedGene& h, const PredictedGene& g, const OverlapRule& rule) {
  return h.right < g.right && h.right < g.left + rule.maxOverlap;
}

double PairCost(const PredictedGene& h, const PredictedGene& g, const OverlapRule& rule) {
  return h.right >= g.left ? rule.Cost(h.right - g.left + 1) : 0.0;
}

struct Exhaustive {
  double total = 0;
  std::vector<std::size_t> chosen;
  std::vector<double> through;  // best total of a chain holding each candidate
};

// Every subset in right-end order whose neighbours may stand side by side.
Exhaustive Search(const std::vector<PredictedGene>& candidates, const OverlapRule& rule) {
  const std::size_t n = candidates.size();
  Exhaustive result;
  result.through.assign(n, -1e300);
  for (std::uint32_t mask = 1; mask < (1u << n); ++mask) {
    double total = 0;
    std::int64_t previous = -1;
    bool valid = true;
    for (std::size_t i = 0; i < n && valid; ++i) {
      if (!(mask >> i & 1u)) continue;
      total += candidates[i].score;
      if (previous >= 0) {
        const PredictedGene& h = candidates[static_cast<std::size_t>(previous)];
        valid = MayPrecede(h, candidates[i], rule);
        total -= PairCost(h, candidates[i], rule);
      }
      previous = static_cast<std::int64_t>(i);
    }
    if (!valid) continue;
    for (std::size_t i = 0; i < n; ++i) {
      if (mask >> i & 1u) result.through[i] = std::max(result.through[i], total);
    }
    if (total > result.total + 1e-9) {
      result.total = total;
      result.chosen.clear();
      for (std::size_t i = 0; i < n; ++i) {
        if (mask >> i & 1u) result.chosen.push_back(i);
      }
    }
  }
  return result;
}

std::vector<PredictedGene> RandomCandidates(std::mt19937& random, std::size_t count) {
  std::uniform_int_distribution<std::int64_t> leftOf(0, 400), lengthOf(20, 200);
  std::uniform_real_distribution<double> scoreOf(0.5, 12.0);
  std::vector<PredictedGene> candidates(count);
  for (PredictedGene& g : candidates) {
    g.left = leftOf(random);
    g.right = g.left + lengthOf(random);
    g.strand = random() % 2 ? Strand::kDirect : Strand::kReverse;
    g.score = scoreOf(random);
  }
  std::sort(candidates.begin(), candidates.end(),
            [](const PredictedGene& a, const PredictedGene& b) {
              return a.right != b.right ? a.right < b.right : a.left < b.left;
            });
  return candidates;
}

TEST(Schedule, MatchesExhaustiveSearch) {
  std::mt19937 random(7);
  const OverlapRule rules[] = {OverlapRule{}, OverlapRule{30, 0, 0.3}, OverlapRule{80, 4, 0.0}};
  for (int round = 0; round < 600; ++round) {
    const OverlapRule& rule = rules[round % 3];
    const std::vector<PredictedGene> candidates = RandomCandidates(random, 1 + round % 12);
    const Exhaustive expected = Search(candidates, rule);
    const Schedule schedule = BestGeneSet(candidates, rule);
    ASSERT_NEAR(schedule.total, expected.total, 1e-9) << "round " << round;
    // The genes chosen add up to the total (ties may pick another set of the same total).
    double sum = 0;
    for (std::size_t k = 0; k < schedule.chosen.size(); ++k) {
      const PredictedGene& g = candidates[schedule.chosen[k]];
      sum += g.score;
      if (k == 0) continue;
      const PredictedGene& h = candidates[schedule.chosen[k - 1]];
      ASSERT_TRUE(MayPrecede(h, g, rule)) << "round " << round;
      sum -= PairCost(h, g, rule);
    }
    ASSERT_NEAR(sum, expected.total, 1e-9) << "round " << round;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
      ASSERT_NEAR(schedule.throughBest[i], expected.through[i], 1e-9)
          << "round " << round << " candidate " << i;
    }
  }
}

// Two genes that overlap by 30 bases stand together only when the weaker one outscores the
// 26 bases of cost beyond the free four; the cost is the same in both passes.
TEST(Schedule, LongOverlapNeedsEvidence) {
  std::vector<PredictedGene> pair(2);
  pair[0].left = 0, pair[0].right = 299, pair[0].score = 10;
  pair[1].left = 270, pair[1].right = 599;
  const OverlapRule rule;
  for (const double weaker : {1.0, 1.4}) {
    pair[1].score = weaker;
    const Schedule schedule = BestGeneSet(pair, rule);
    const bool both = weaker > 26 * rule.overlapCost;
    EXPECT_EQ(schedule.chosen.size(), both ? 2u : 1u) << weaker;
    EXPECT_NEAR(schedule.throughBest[1], 10 + weaker - 26 * rule.overlapCost, 1e-12);
  }
}

}  // namespace
}  // namespace genetrain
