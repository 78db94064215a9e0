#include "core/PolygonGeometry.h"

namespace Tessaly {

bool pointInPolygon(double x, double y, const std::vector<PlanePoint>& vertices)
{
    bool inside = false;
    const std::size_t n = vertices.size();
    for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
        const double xi = vertices[i].first;
        const double yi = vertices[i].second;
        const double xj = vertices[j].first;
        const double yj = vertices[j].second;
        if ((yi > y) != (yj > y) && (xj - xi) * (y - yi) / (yj - yi) + xi > x)
            inside = !inside;
    }
    return inside;
}

} // namespace Tessaly
