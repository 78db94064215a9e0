#include "calc/DelaunayTriangulation.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace Tessaly;

namespace {

// The method written plainly: every triangle is tested for every point, bad triangles are erased in
// place, border edges are found by comparing each edge with those of all other bad triangles. The fast
// triangulation must give the same triangles in the same order.
std::vector<Triangle> plainBowyerWatson(std::vector<double> x, std::vector<double> y)
{
    const auto n = static_cast<std::int32_t>(x.size());
    x.insert(x.end(), { -10.0, 20.0, -10.0 });
    y.insert(y.end(), { -10.0, -10.0, 20.0 });
    std::vector<Triangle> tris { { n, n + 1, n + 2 } };
    for (std::int32_t p = 0; p < n; ++p) {
        const auto P = static_cast<std::size_t>(p);
        std::vector<std::size_t> bad;
        for (std::size_t t = 0; t < tris.size(); ++t) {
            const auto v
                = [&](int k) { return static_cast<std::size_t>(tris[t][static_cast<std::size_t>(k)]); };
            if (incircleDeterminant(x[v(0)] - x[P], y[v(0)] - y[P], x[v(1)] - x[P], y[v(1)] - y[P],
                    x[v(2)] - x[P], y[v(2)] - y[P])
                > 0.0)
                bad.push_back(t);
        }
        std::vector<std::pair<std::int32_t, std::int32_t>> border;
        for (const std::size_t t : bad) {
            for (int e = 0; e < 3; ++e) {
                const std::int32_t a = tris[t][static_cast<std::size_t>(e)];
                const std::int32_t b = tris[t][static_cast<std::size_t>((e + 1) % 3)];
                bool shared = false;
                for (const std::size_t o : bad) {
                    if (o == t)
                        continue;
                    for (int f = 0; f < 3; ++f) {
                        const std::int32_t c = tris[o][static_cast<std::size_t>(f)];
                        const std::int32_t d = tris[o][static_cast<std::size_t>((f + 1) % 3)];
                        shared = shared || (a == c && b == d) || (a == d && b == c);
                    }
                }
                if (!shared)
                    border.emplace_back(a, b);
            }
        }
        for (auto it = bad.rbegin(); it != bad.rend(); ++it)
            tris.erase(tris.begin() + static_cast<std::ptrdiff_t>(*it));
        for (const auto& [a, b] : border) {
            const auto A = static_cast<std::size_t>(a), B = static_cast<std::size_t>(b);
            const double cross = (x[A] - x[P]) * (y[B] - y[P]) - (y[A] - y[P]) * (x[B] - x[P]);
            tris.push_back(cross >= 0.0 ? Triangle { p, a, b } : Triangle { p, b, a });
        }
    }
    std::vector<Triangle> out;
    for (const Triangle& t : tris)
        if (t[0] < n && t[1] < n && t[2] < n)
            out.push_back(t);
    return out;
}

struct PointSet
{
    const char* name;
    std::vector<double> x, y;
};

std::vector<PointSet> pointSets()
{
    std::vector<PointSet> sets;
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    PointSet random { "random", {}, {} };
    for (int i = 0; i < 400; ++i) {
        random.x.push_back(unit(rng));
        random.y.push_back(unit(rng));
    }
    sets.push_back(random);
    // A table's usual order: column by column, each column sorted.
    PointSet sweep { "sweep", {}, {} };
    for (int i = 0; i < 20; ++i)
        for (int j = 0; j < 20; ++j) {
            sweep.x.push_back(i / 19.0);
            sweep.y.push_back(std::pow(j / 19.0, 1.7) * (0.6 + 0.4 * std::sqrt(i / 19.0)));
        }
    sets.push_back(sweep);
    // A square grid: four nodes on every circle, so the strict test decides which triangles stay.
    PointSet grid { "grid", {}, {} };
    for (int i = 0; i < 12; ++i)
        for (int j = 0; j < 12; ++j) {
            grid.x.push_back(i / 11.0);
            grid.y.push_back(j / 11.0);
        }
    sets.push_back(grid);
    // A table of the shape finite-element tables have: rows of equal modulus, curved in the plane,
    // area by area.
    PointSet table { "table", {}, {} };
    for (int i = 0; i < 30; ++i)
        for (int j = 0; j < 20; ++j) {
            const double area = i / 29.0;
            table.x.push_back(area);
            table.y.push_back((1.0 + std::sqrt(area)) * std::pow(0.8, j) / 2.0);
        }
    sets.push_back(table);
    // A duplicated node opens no cavity and makes no triangle.
    PointSet duplicate { "duplicate", { 0.0, 1.0, 0.0, 1.0, 0.5, 0.5 }, { 0.0, 0.0, 1.0, 1.0, 0.4, 0.4 } };
    sets.push_back(duplicate);
    return sets;
}

double signedArea(const std::vector<double>& x, const std::vector<double>& y, const Triangle& t)
{
    const auto a = static_cast<std::size_t>(t[0]), b = static_cast<std::size_t>(t[1]),
               c = static_cast<std::size_t>(t[2]);
    return 0.5 * ((x[b] - x[a]) * (y[c] - y[a]) - (y[b] - y[a]) * (x[c] - x[a]));
}

} // namespace

TEST(DelaunayTriangulation, SameTrianglesInTheSameOrderAsThePlainMethod)
{
    for (const PointSet& set : pointSets()) {
        const std::vector<Triangle> fast = delaunayTriangulation(set.x, set.y);
        const std::vector<Triangle> plain = plainBowyerWatson(set.x, set.y);
        ASSERT_FALSE(plain.empty()) << set.name;
        EXPECT_EQ(fast, plain) << set.name;
    }
}

TEST(DelaunayTriangulation, TrianglesAreCounterClockwiseWithEmptyCircumcircles)
{
    const PointSet set = pointSets().front();
    const std::vector<Triangle> tris = delaunayTriangulation(set.x, set.y);
    double covered = 0.0;
    for (const Triangle& t : tris) {
        EXPECT_GT(signedArea(set.x, set.y, t), 0.0);
        covered += signedArea(set.x, set.y, t);
        const auto v = [&](int k) { return static_cast<std::size_t>(t[static_cast<std::size_t>(k)]); };
        for (std::size_t p = 0; p < set.x.size(); ++p) {
            const double det
                = incircleDeterminant(set.x[v(0)] - set.x[p], set.y[v(0)] - set.y[p], set.x[v(1)] - set.x[p],
                    set.y[v(1)] - set.y[p], set.x[v(2)] - set.x[p], set.y[v(2)] - set.y[p]);
            EXPECT_LE(det, 1e-12) << "point " << p << " inside the circumcircle";
        }
    }
    // Random points in the unit square: the hull covers nearly all of it, and the triangles don't overlap.
    EXPECT_GT(covered, 0.95);
    EXPECT_LE(covered, 1.0);
}

TEST(DelaunayTriangulation, IncircleSign)
{
    // Unit circle through (1,0), (0,1), (-1,0), seen from points inside, on and outside it.
    const auto det = [](double px, double py) {
        return incircleDeterminant(1.0 - px, 0.0 - py, 0.0 - px, 1.0 - py, -1.0 - px, 0.0 - py);
    };
    EXPECT_GT(det(0.0, 0.0), 0.0);
    EXPECT_EQ(det(0.0, -1.0), 0.0);
    EXPECT_LT(det(2.0, 0.0), 0.0);
}

TEST(DelaunayTriangulation, NothingForTooFewOrCollinearPoints)
{
    EXPECT_TRUE(delaunayTriangulation({}, {}).empty());
    EXPECT_TRUE(delaunayTriangulation({ 0.0, 1.0 }, { 0.0, 1.0 }).empty());
    // On one line every triangle keeps an artificial vertex.
    EXPECT_TRUE(delaunayTriangulation({ 0.0, 0.5, 1.0 }, { 0.0, 0.5, 1.0 }).empty());
    EXPECT_EQ(delaunayTriangulation({ 0.0, 1.0, 0.0 }, { 0.0, 0.0, 1.0 }).size(), 1u);
}
