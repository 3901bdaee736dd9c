#ifndef GENETRAIN_MOTIF_POSITIONMATRIX_H
#define GENETRAIN_MOTIF_POSITIONMATRIX_H

#include <array>
#include <cstdint>
#include <string>

namespace genetrain {

// One motif position: counts, later probabilities, of A, C, G, T and of any other letter (the
// fifth cell is counted but never normalised or printed).
using MatrixRow = std::array<double, 5>;

// The A, C, G, T cells in fixed notation with the point always shown, separated by blanks, and an
// end of line.
void AppendMatrixRow(std::string& text, const MatrixRow& row, std::uint32_t precision);

}  // namespace genetrain

#endif
