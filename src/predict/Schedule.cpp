// The gene set of highest total score: weighted interval scheduling in which neighbours may
// overlap a little, at a cost.
//
// best(g) = S(g) + max(0, best(h) - cost(overlap of h and g)) over the candidates h that may come
// before g: h ends before g does, and shares at most maxOverlap bases with it. For the h that end
// before g begins the cost is 0 and a running maximum in right-end order answers the query; the
// few that overlap g (their right end lies in a window of maxOverlap bases) are visited one by
// one. Two starts of one ORF share their stop, and so never both appear.
//
// The overlap cost: in annotated genomes the overlaps of neighbouring genes cluster at 1 to 4
// bases (a stop codon sharing bases with the next start, as in ATGA), and longer ones become rarer
// by about e-fold every 20 bases (fitted on the curated E. coli set and five archaeal and
// bacterial annotations from 33 to 64 % GC: 0.03 to 0.075 per base). Each overlapping base beyond
// four therefore costs 0.05 nats, so a long overlap needs the evidence of both genes.

#include "predict/Schedule.h"

#include <algorithm>

namespace genetrain {

namespace {

// Candidate h may precede candidate g when h ends before this limit: the two share at most
// maxOverlap bases, and h ends before g does.
std::int64_t Limit(const PredictedGene& g, std::int64_t maxOverlap) {
  return std::min(g.left + maxOverlap, g.right);
}

// The index of the first of candidates[0, end) whose right end is at least `value`.
std::size_t FirstRightAtLeast(const std::vector<PredictedGene>& candidates, std::size_t end,
                              std::int64_t value) {
  const auto it =
      std::lower_bound(candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(end),
                       value, [](const PredictedGene& g, std::int64_t v) { return g.right < v; });
  return static_cast<std::size_t>(it - candidates.begin());
}

struct ForwardPass {
  std::vector<double> best;        // the best total of a set whose rightmost gene is i
  std::vector<std::int64_t> from;  // i's gene before it in that set, -1 for none
  std::int64_t last = -1;          // the rightmost gene of the best set
  double total = 0;
};

ForwardPass Forward(const std::vector<PredictedGene>& candidates, const OverlapRule& rule) {
  const std::size_t count = candidates.size();
  ForwardPass pass;
  pass.best.resize(count);
  pass.from.assign(count, -1);
  std::vector<double> prefixBest(count);
  std::vector<std::int64_t> prefixArg(count, -1);
  for (std::size_t i = 0; i < count; ++i) {
    const PredictedGene& g = candidates[i];
    const std::size_t disjoint = FirstRightAtLeast(candidates, i, g.left);
    const std::size_t allowed = FirstRightAtLeast(candidates, i, Limit(g, rule.maxOverlap));
    double before = 0;
    std::int64_t from = -1;
    if (disjoint > 0 && prefixBest[disjoint - 1] > 0) {
      before = prefixBest[disjoint - 1];
      from = prefixArg[disjoint - 1];
    }
    for (std::size_t k = disjoint; k < allowed; ++k) {
      const double value = pass.best[k] - rule.Cost(candidates[k].right - g.left + 1);
      if (value > before) {
        before = value;
        from = static_cast<std::int64_t>(k);
      }
    }
    pass.best[i] = g.score + before;
    pass.from[i] = from;
    const bool improves = i == 0 || pass.best[i] > prefixBest[i - 1];
    prefixBest[i] = improves ? pass.best[i] : prefixBest[i - 1];
    prefixArg[i] = improves ? static_cast<std::int64_t>(i) : prefixArg[i - 1];
  }
  if (count > 0) {
    pass.last = prefixArg[count - 1];
    pass.total = prefixBest[count - 1];
  }
  return pass;
}

// A running maximum of values stored at positions, queried beyond a position: a Fenwick tree over
// the sorted positions, indexed from the largest down.
class MaxBeyond {
 public:
  explicit MaxBeyond(std::vector<std::int64_t> positions) : positions_(std::move(positions)) {
    std::sort(positions_.begin(), positions_.end());
    positions_.erase(std::unique(positions_.begin(), positions_.end()), positions_.end());
    tree_.assign(positions_.size() + 1, 0.0);
  }
  // The largest value stored beyond `position`, 0 when none is.
  double Beyond(std::int64_t position) const {
    const auto first = static_cast<std::size_t>(
        std::upper_bound(positions_.begin(), positions_.end(), position) - positions_.begin());
    double best = 0;
    for (std::size_t p = positions_.size() - first; p > 0; p -= p & (~p + 1)) {
      best = std::max(best, tree_[p]);
    }
    return best;
  }
  void Store(std::int64_t position, double value) {
    const auto rank = static_cast<std::size_t>(
        std::lower_bound(positions_.begin(), positions_.end(), position) - positions_.begin());
    for (std::size_t p = positions_.size() - rank; p <= positions_.size(); p += p & (~p + 1)) {
      tree_[p] = std::max(tree_[p], value);
    }
  }

 private:
  std::vector<std::int64_t> positions_;
  std::vector<double> tree_;
};

// after[i]: the best total of a set whose leftmost gene is i. The genes that may follow i all end
// to the right of it, so walking right to left finds them done. Those that begin after i ends
// come from a running maximum over left ends; those that overlap i are visited one by one, in
// left-end order, and pay the same cost as in the forward pass.
std::vector<double> Backward(const std::vector<PredictedGene>& candidates,
                             const OverlapRule& rule) {
  const std::size_t count = candidates.size();
  std::vector<std::int64_t> lefts;
  lefts.reserve(count);
  for (const PredictedGene& g : candidates) lefts.push_back(g.left);
  MaxBeyond disjoint(lefts);
  std::vector<std::size_t> byLeft(count);
  for (std::size_t i = 0; i < count; ++i) byLeft[i] = i;
  std::sort(byLeft.begin(), byLeft.end(),
            [&](std::size_t a, std::size_t b) { return candidates[a].left < candidates[b].left; });
  std::vector<double> after(count);
  for (std::size_t i = count; i-- > 0;) {
    const PredictedGene& h = candidates[i];
    double follow = disjoint.Beyond(h.right);
    const auto first = std::lower_bound(
        byLeft.begin(), byLeft.end(), h.right - rule.maxOverlap + 1,
        [&](std::size_t k, std::int64_t value) { return candidates[k].left < value; });
    for (auto it = first; it != byLeft.end() && candidates[*it].left <= h.right; ++it) {
      const PredictedGene& g = candidates[*it];
      if (*it <= i || h.right >= Limit(g, rule.maxOverlap)) continue;
      follow = std::max(follow, after[*it] - rule.Cost(h.right - g.left + 1));
    }
    after[i] = h.score + follow;
    disjoint.Store(h.left, after[i]);
  }
  return after;
}

}  // namespace

Schedule BestGeneSet(const std::vector<PredictedGene>& candidates, const OverlapRule& rule) {
  const ForwardPass forward = Forward(candidates, rule);
  Schedule schedule;
  for (std::int64_t i = forward.last; i >= 0; i = forward.from[static_cast<std::size_t>(i)]) {
    schedule.chosen.push_back(static_cast<std::size_t>(i));
  }
  std::reverse(schedule.chosen.begin(), schedule.chosen.end());
  schedule.total = forward.total;
  const std::vector<double> after = Backward(candidates, rule);
  schedule.throughBest.resize(candidates.size());
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    schedule.throughBest[i] = forward.best[i] + after[i] - candidates[i].score;
  }
  return schedule;
}

}  // namespace genetrain
