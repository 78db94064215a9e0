#pragma once

#include "core/FilterRule.h"

#include <cstddef>
#include <vector>

namespace Tessaly {

// A polygon prepared for many inside tests. The verdict is that of pointInPolygon, bit for bit:
// which edges a horizontal ray at height y can cross depends only on where y lies among the vertex
// heights, so the heights are cut into slabs, each listing its spanning edges, and a test looks
// at only those edges, with the same crossing arithmetic.
class SlabPolygon
{
public:
    explicit SlabPolygon(const std::vector<PlanePoint>& vertices);

    bool contains(double x, double y) const
    {
        // NaN and points below the lowest or at or above the highest slab cross nothing.
        if (!(y >= m_floors.front() && y < m_floors.back()))
            return false;
        const std::size_t slab = slabOf(y);
        bool inside = false;
        for (std::size_t e = m_slabStart[slab]; e < m_slabStart[slab + 1]; ++e) {
            const Edge& edge = m_edges[e];
            if (edge.dx * (y - edge.y) / edge.dy + edge.x > x)
                inside = !inside;
        }
        return inside;
    }

private:
    // An edge from vertex i to the previous vertex j, as the crossing formula uses it:
    // x_i, y_i, x_j - x_i and y_j - y_i.
    struct Edge
    {
        double x;
        double y;
        double dx;
        double dy;
    };

    std::size_t slabOf(double y) const
    {
        // The bucket of y gives a slab near the right one, the floors the exact one; the caller has
        // checked floors.front() <= y < floors.back(). A NaN position (infinite floors) takes the
        // last bucket and walks down.
        const double position = (y - m_floors.front()) * m_bucketScale;
        const std::size_t bucket = position < static_cast<double>(m_bucketSlab.size())
            ? static_cast<std::size_t>(position)
            : m_bucketSlab.size() - 1;
        std::size_t slab = m_bucketSlab[bucket];
        while (m_floors[slab + 1] <= y)
            ++slab;
        while (m_floors[slab] > y)
            --slab;
        return slab;
    }

    // Distinct vertex heights, rising; slab k is [floors[k], floors[k + 1]). Never empty.
    std::vector<double> m_floors;
    // Edges of slab k are m_edges[m_slabStart[k]] up to m_edges[m_slabStart[k + 1]].
    std::vector<std::size_t> m_slabStart;
    std::vector<Edge> m_edges;
    // Equal-height buckets from floors.front(), each holding the slab of its lower end.
    std::vector<std::size_t> m_bucketSlab;
    double m_bucketScale = 0.0;
};

} // namespace Tessaly
