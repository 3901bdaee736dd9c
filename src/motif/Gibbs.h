#ifndef GENETRAIN_MOTIF_GIBBS_H
#define GENETRAIN_MOTIF_GIBBS_H

#include "common/Param.h"
#include "common/Report.h"

namespace genetrain {

// The ribosome binding site model built from a Gibbs sampler's motif sites.
class Gibbs : public Report {
 public:
  bool Run(Param& param);
};

}  // namespace genetrain

#endif
