#pragma once

#include "calc/Density.h"
#include "core/FilterRule.h"

#include <vector>

namespace Tessaly {

using Polyline = std::vector<PlanePoint>;

// Lines of constant `level` through a density grid, with the cell centres as the corners of the
// squares. Segments that share an edge are chained into polylines; a closed line ends on a point
// equal to its first.
std::vector<Polyline> marchingSquares(const DensityGrid& grid, double level);

} // namespace Tessaly
