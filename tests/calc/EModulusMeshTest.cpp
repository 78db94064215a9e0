#include "calc/EModulusMesh.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace Tessaly;

namespace {

constexpr double missing = std::numeric_limits<double>::quiet_NaN();

// A table whose modulus is linear in area and deformation: linear interpolation reproduces it exactly
// wherever a triangle covers the point. Nodes lie on a slightly irregular grid over area 10..110 µm²
// and deformation 0.01..0.11, corners exact.
struct LinearTable
{
    std::vector<double> area, deform, emodulus;

    static double modulus(double a, double d) { return 1.0 + 0.02 * a + 30.0 * d; }

    LinearTable()
    {
        std::mt19937_64 rng(3);
        std::uniform_real_distribution<double> jitter(-0.2, 0.2);
        for (int i = 0; i <= 10; ++i)
            for (int j = 0; j <= 10; ++j) {
                const bool edge = i == 0 || i == 10 || j == 0 || j == 10;
                const double a = 10.0 + 10.0 * (i + (edge ? 0.0 : jitter(rng)));
                const double d = 0.01 + 0.01 * (j + (edge ? 0.0 : jitter(rng)));
                area.push_back(a);
                deform.push_back(d);
                emodulus.push_back(modulus(a, d));
            }
    }
};

EModulusMesh linearMesh()
{
    const LinearTable table;
    EModulusMesh mesh;
    EXPECT_TRUE(buildEModulusMesh(table.area, table.deform, table.emodulus, mesh));
    return mesh;
}

// The triangle that holds a point, searched over the whole mesh.
int holdingTriangle(const EModulusMesh& mesh, double px, double py)
{
    for (std::size_t t = 0; t < mesh.triangles.size(); ++t) {
        const auto& tri = mesh.triangles[t];
        bool inside = true;
        for (int k = 0; k < 3; ++k) {
            const auto a = static_cast<std::size_t>(tri[static_cast<std::size_t>(k)]);
            const auto b = static_cast<std::size_t>(tri[static_cast<std::size_t>((k + 1) % 3)]);
            inside = inside
                && (mesh.x[b] - mesh.x[a]) * (py - mesh.y[a]) - (mesh.y[b] - mesh.y[a]) * (px - mesh.x[a])
                    > 1e-12;
        }
        if (inside)
            return static_cast<int>(t);
    }
    return -1;
}

} // namespace

TEST(EModulusMesh, NormalisesTheNodesOntoTheUnitSquare)
{
    const EModulusMesh mesh = linearMesh();
    EXPECT_EQ(mesh.xMin, 10.0);
    EXPECT_EQ(mesh.xMax, 110.0);
    EXPECT_NEAR(mesh.yMin, 0.01, 1e-15);
    EXPECT_NEAR(mesh.yRange, 0.1, 1e-15);
    EXPECT_EQ(mesh.x.front(), 0.0);
    EXPECT_EQ(mesh.x.back(), 1.0);
    EXPECT_EQ(mesh.y.back(), 1.0);
    EXPECT_EQ(mesh.z.size(), 121u);
    ASSERT_EQ(mesh.grid.size(), 10000u);
    // 121 nodes on a full rectangle: 2 * 121 - 2 - 40 hull nodes = 200 triangles.
    EXPECT_EQ(mesh.triangles.size(), 200u);
}

TEST(EModulusMesh, InterpolationReproducesALinearTable)
{
    const EModulusMesh mesh = linearMesh();
    const LinearTable table;
    struct Case
    {
        const char* what;
        double area, deform;
    };
    const Case cases[] = {
        { "first node", 10.0, 0.01 },
        { "upper bound on both axes", 110.0, 0.11 },
        { "upper area bound", 110.0, 0.055 },
        { "upper deformation bound", 47.5, 0.11 },
        { "node inside", table.area[60], table.deform[60] },
        { "middle of a shared edge", 0.5 * (table.area[60] + table.area[61]),
            0.5 * (table.deform[60] + table.deform[61]) },
        { "on the lower border", 33.3, 0.01 },
        { "anywhere", 71.234, 0.0789 },
    };
    for (const Case& c : cases)
        EXPECT_NEAR(interpolate(mesh, c.area, c.deform), LinearTable::modulus(c.area, c.deform), 1e-9)
            << c.what;
}

TEST(EModulusMesh, NaNOutsideTheTableAndForNaNCoordinates)
{
    const EModulusMesh mesh = linearMesh();
    const std::pair<double, double> outside[]
        = { { 9.999, 0.05 }, { 110.001, 0.05 }, { 50.0, 0.0099 }, { 50.0, 0.1101 }, { missing, 0.05 },
              { 50.0, missing }, { missing, missing }, { std::numeric_limits<double>::infinity(), 0.05 } };
    for (const auto& [a, d] : outside)
        EXPECT_TRUE(std::isnan(interpolate(mesh, a, d))) << a << ", " << d;
}

TEST(EModulusMesh, CellLookupFindsTheTriangleThatHoldsThePoint)
{
    // A curved, non-linear table: the value tells which triangle answered.
    std::vector<double> area, deform, emodulus;
    std::mt19937_64 rng(11);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int i = 0; i < 3000; ++i) {
        area.push_back(20.0 + 200.0 * unit(rng));
        deform.push_back(0.005 + 0.1 * std::pow(unit(rng), 2.0));
        emodulus.push_back(std::sin(area.back() / 17.0) + 40.0 * deform.back());
    }
    EModulusMesh mesh;
    ASSERT_TRUE(buildEModulusMesh(area, deform, emodulus, mesh));
    int compared = 0;
    for (int i = 0; i < 2000; ++i) {
        const double px = unit(rng), py = unit(rng);
        const int t = holdingTriangle(mesh, px, py);
        const double value = interpolate(mesh, mesh.xMin + px * mesh.xRange, mesh.yMin + py * mesh.yRange);
        if (t < 0) {
            EXPECT_TRUE(std::isnan(value)) << px << ", " << py;
            continue;
        }
        const auto& tri = mesh.triangles[static_cast<std::size_t>(t)];
        // Barycentric weights by areas, computed apart from the lookup's own formula.
        const auto v = [&](int k) { return static_cast<std::size_t>(tri[static_cast<std::size_t>(k)]); };
        const auto twiceArea = [&](double ax, double ay, double bx, double by, double cx, double cy) {
            return (bx - ax) * (cy - ay) - (by - ay) * (cx - ax);
        };
        const double whole
            = twiceArea(mesh.x[v(0)], mesh.y[v(0)], mesh.x[v(1)], mesh.y[v(1)], mesh.x[v(2)], mesh.y[v(2)]);
        const double w0 = twiceArea(px, py, mesh.x[v(1)], mesh.y[v(1)], mesh.x[v(2)], mesh.y[v(2)]) / whole;
        const double w1 = twiceArea(mesh.x[v(0)], mesh.y[v(0)], px, py, mesh.x[v(2)], mesh.y[v(2)]) / whole;
        const double expected = w0 * mesh.z[v(0)] + w1 * mesh.z[v(1)] + (1.0 - w0 - w1) * mesh.z[v(2)];
        EXPECT_NEAR(value, expected, 1e-9);
        ++compared;
    }
    EXPECT_GT(compared, 1800);
}

TEST(EModulusMesh, NoMeshForTooFewNodesOrNoExtent)
{
    EModulusMesh mesh;
    EXPECT_FALSE(buildEModulusMesh({ 1.0, 2.0 }, { 0.1, 0.2 }, { 1.0, 1.0 }, mesh));
    EXPECT_FALSE(buildEModulusMesh({ 1.0, 2.0, 3.0 }, { 0.1, 0.2 }, { 1.0, 1.0, 1.0 }, mesh));
    EXPECT_FALSE(buildEModulusMesh({ 5.0, 5.0, 5.0 }, { 0.1, 0.2, 0.3 }, { 1.0, 1.0, 1.0 }, mesh));
    EXPECT_TRUE(mesh.triangles.empty());
    EXPECT_TRUE(std::isnan(interpolate(mesh, 5.0, 0.2)));
    ASSERT_TRUE(buildEModulusMesh({ 0.0, 1.0, 0.0 }, { 0.0, 0.0, 1.0 }, { 1.0, 2.0, 3.0 }, mesh));
    EXPECT_EQ(mesh.triangles.size(), 1u);
    EXPECT_NEAR(interpolate(mesh, 0.25, 0.25), 1.0 + 0.25 + 0.5, 1e-12);
}
