#include "motif/PositionMatrix.h"

#include "common/Format.h"

namespace genetrain {

void AppendMatrixRow(std::string& text, const MatrixRow& row, std::uint32_t precision) {
  for (int cell = 0; cell < 4; ++cell) {
    if (cell > 0) text.push_back(' ');
    AppendFixedPoint(text, row[cell], precision);
  }
  text.push_back('\n');
}

}  // namespace genetrain
