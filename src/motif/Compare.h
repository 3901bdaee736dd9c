#ifndef GENETRAIN_MOTIF_COMPARE_H
#define GENETRAIN_MOTIF_COMPARE_H

#include "common/Param.h"
#include "common/Report.h"

namespace genetrain {

// The agreement of two gene sets.
class Compare : public Report {
 public:
  bool Run(Param& param);
};

}  // namespace genetrain

#endif
