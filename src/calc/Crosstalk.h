#pragma once

#include <cstddef>
#include <vector>

namespace Tessaly {

// A square matrix as rows of columns: matrix[row][column].
using SquareMatrix = std::vector<std::vector<double>>;

// Whether `matrix` has n rows of n columns each, n >= 1.
bool isSquare(const SquareMatrix& matrix, std::size_t n);

// The inverse of a square matrix. False when it has no inverse: it is not square, not finite, or
// singular. Rows equal to each other, or a zero row, are singular.
bool invertMatrix(const SquareMatrix& matrix, SquareMatrix& inverse);

// Undoes crosstalk for events [begin, end): with the spillover model y = S x, in which channel i sees
// S(i, j) of the light of dye j, each event's true values are x = S⁻¹ y. `sources` holds one column
// of measured values y per channel and `inverse` is S⁻¹; outputs[i][e] receives x_i of event e. A value
// beyond the end of a source column counts as NaN, and a NaN spreads to every channel of its event.
// `outputs` must hold one column of at least `end` values per channel.
void compensateEvents(const std::vector<const std::vector<double>*>& sources, const SquareMatrix& inverse,
    std::size_t begin, std::size_t end, std::vector<std::vector<double>>& outputs);

} // namespace Tessaly
