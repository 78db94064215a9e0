#include "core/SlabPolygon.h"

#include "core/PolygonGeometry.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace Tessaly;

namespace {
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();
} // namespace

TEST(SlabPolygon, AgreesWithTheCrossingTestOnEveryPoint)
{
    // Vertices and points on a coarse lattice, so that points sit exactly on vertex heights and
    // edges, edges are often horizontal and polygons intersect themselves; some coordinates are
    // NaN or infinite.
    std::mt19937_64 rng(7);
    std::uniform_int_distribution<int> lattice(-6, 6);
    std::uniform_int_distribution<int> special(0, 29);
    const auto coordinate = [&](bool allowSpecial) {
        if (allowSpecial) {
            switch (special(rng)) {
            case 0:
                return kNaN;
            case 1:
                return kInf;
            case 2:
                return -kInf;
            default:
                break;
            }
        }
        return lattice(rng) * 0.5;
    };
    std::uniform_int_distribution<int> vertexCount(3, 25);
    std::size_t insideCount = 0;
    for (int shape = 0; shape < 300; ++shape) {
        std::vector<PlanePoint> vertices;
        const int n = vertexCount(rng);
        for (int v = 0; v < n; ++v)
            vertices.emplace_back(coordinate(shape % 3 == 0), coordinate(shape % 3 == 0));
        const SlabPolygon prepared(vertices);
        for (int p = 0; p < 400; ++p) {
            const double x = coordinate(true) + (p % 4 == 0 ? 0.25 : 0.0);
            const double y = coordinate(true) + (p % 5 == 0 ? 0.25 : 0.0);
            const bool expected = pointInPolygon(x, y, vertices);
            insideCount += expected ? 1 : 0;
            ASSERT_EQ(prepared.contains(x, y), expected)
                << "shape " << shape << " point (" << x << ", " << y << ")";
        }
    }
    // The shapes are not degenerate: a fair share of the points are inside.
    EXPECT_GT(insideCount, 300u * 400u / 10u);
}

TEST(SlabPolygon, PolygonWithoutSpanningEdgesContainsNothing)
{
    const SlabPolygon flat({ { 0, 1 }, { 4, 1 }, { 2, 1 } });
    EXPECT_FALSE(flat.contains(1.0, 1.0));
    EXPECT_FALSE(flat.contains(1.0, 0.5));
    const SlabPolygon broken({ { 0, kNaN }, { 4, 1 }, { 2, kNaN } });
    EXPECT_FALSE(broken.contains(1.0, 1.0));
}
