#include "model/ModelFile.h"

namespace genetrain {}  // namespace genetrain
