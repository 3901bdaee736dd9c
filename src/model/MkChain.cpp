#include "model/MkChain.h"

namespace genetrain {}  // namespace genetrain
