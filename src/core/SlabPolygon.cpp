#include "core/SlabPolygon.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tessaly {

SlabPolygon::SlabPolygon(const std::vector<PlanePoint>& vertices)
{
    // Edges that can toggle: a horizontal edge never spans a height, and an edge with a NaN
    // coordinate has a NaN crossing, which never lies right of a point.
    struct Candidate
    {
        Edge edge;
        double low;
        double high;
    };
    std::vector<Candidate> candidates;
    const std::size_t n = vertices.size();
    for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
        const double xi = vertices[i].first;
        const double yi = vertices[i].second;
        const double xj = vertices[j].first;
        const double yj = vertices[j].second;
        if (std::isnan(xi) || std::isnan(yi) || std::isnan(xj) || std::isnan(yj) || yi == yj)
            continue;
        candidates.push_back({ { xi, yi, xj - xi, yj - yi }, std::min(yi, yj), std::max(yi, yj) });
        m_floors.push_back(yi);
        m_floors.push_back(yj);
    }
    std::sort(m_floors.begin(), m_floors.end());
    m_floors.erase(std::unique(m_floors.begin(), m_floors.end()), m_floors.end());
    if (m_floors.empty()) {
        // No edge can toggle: an empty interval, so that contains() rejects every height.
        m_floors.push_back(std::numeric_limits<double>::infinity());
    }

    // An edge spans [floors[k], floors[k + 1]) when its low end is at or below the floor and its
    // high end at or above the next one: then low <= y < high for every y of the slab.
    const std::size_t slabs = m_floors.size() - 1;
    m_slabStart.assign(slabs + 1, 0);
    for (std::size_t k = 0; k < slabs; ++k) {
        m_slabStart[k] = m_edges.size();
        for (const Candidate& c : candidates) {
            if (c.low <= m_floors[k] && c.high >= m_floors[k + 1])
                m_edges.push_back(c.edge);
        }
    }
    m_slabStart[slabs] = m_edges.size();

    // With infinite heights the buckets cannot be spaced; one bucket then leaves it to the walk.
    const double height = m_floors.back() - m_floors.front();
    const bool spaced = slabs > 0 && std::isfinite(height) && height > 0.0;
    const std::size_t buckets = spaced ? 4 * slabs : 1;
    m_bucketScale = spaced ? static_cast<double>(buckets) / height : 0.0;
    m_bucketSlab.assign(buckets, 0);
    std::size_t slab = 0;
    for (std::size_t b = 1; spaced && b < buckets; ++b) {
        const double low = m_floors.front() + static_cast<double>(b) / m_bucketScale;
        while (slab + 1 < slabs && m_floors[slab + 1] <= low)
            ++slab;
        m_bucketSlab[b] = slab;
    }
}

} // namespace Tessaly
