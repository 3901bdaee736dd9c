#ifndef GENETRAIN_PREDICT_SCHEDULE_H
#define GENETRAIN_PREDICT_SCHEDULE_H

#include <cstdint>
#include <vector>

#include "predict/Predict.h"

namespace genetrain {

// The best gene set among candidates sorted by right end (then left end): `chosen` indexes the
// candidates it holds, left to right; `total` is its score. `throughBest[i]` is the best total of
// a set that holds candidate i, whether chosen or not.
struct Schedule {
  std::vector<std::size_t> chosen;
  double total = 0;
  std::vector<double> throughBest;
};

Schedule BestGeneSet(const std::vector<PredictedGene>& candidates, const OverlapRule& rule);

}  // namespace genetrain

#endif
