#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace Tessaly {

using Triangle = std::array<std::int32_t, 3>;

// The 3-by-3 determinant whose sign tells whether the point of origin lies inside the circumcircle of
// the counter-clockwise triangle (a, b, c), all given relative to that point: positive inside, zero on
// the circle.
double incircleDeterminant(double ax, double ay, double bx, double by, double cx, double cy);

// Incremental Delaunay triangulation (Bowyer-Watson) of points that lie in the unit square, inserted in
// the order given. Three artificial vertices (-10, -10), (20, -10), (-10, 20) enclose them and are
// dropped at the end with every triangle that uses them, so thin slivers along the hull may stay
// uncovered. A triangle is replaced only when the new point lies strictly inside its circumcircle.
//
// The triangles come out counter-clockwise and in the order of their making: a point's new triangles
// follow the edges of the cavity it opens, taken triangle by triangle in that order. Each point finds
// its cavity by walking from the last triangle made and growing over neighbours, so the work per point
// is that of its cavity, not of the whole mesh.
std::vector<Triangle> delaunayTriangulation(const std::vector<double>& x, const std::vector<double>& y);

} // namespace Tessaly
