#include "seq/MSSeq.h"
#include "seq/SSeq.h"

namespace genetrain {}  // namespace genetrain
