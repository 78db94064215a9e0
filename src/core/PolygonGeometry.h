#pragma once

#include "core/FilterRule.h"

#include <vector>

namespace Tessaly {

// Even-odd crossing test against the closed polygon through the vertices. A point with a NaN
// coordinate crosses nothing and so lies outside.
bool pointInPolygon(double x, double y, const std::vector<PlanePoint>& vertices);

} // namespace Tessaly
