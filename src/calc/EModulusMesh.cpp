#include "calc/EModulusMesh.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tessaly {

namespace {

int cellOf(double normalised)
{
    const double scaled = normalised * EModulusMesh::gridSize;
    if (!(scaled >= 0.0))
        return 0;
    return std::min(static_cast<int>(scaled), EModulusMesh::gridSize - 1);
}

} // namespace

bool buildEModulusMesh(const std::vector<double>& area, const std::vector<double>& deform,
    const std::vector<double>& emodulus, EModulusMesh& mesh)
{
    const std::size_t n = area.size();
    if (n < 3 || deform.size() != n || emodulus.size() != n)
        return false;
    EModulusMesh built;
    const auto [xLow, xHigh] = std::minmax_element(area.begin(), area.end());
    const auto [yLow, yHigh] = std::minmax_element(deform.begin(), deform.end());
    built.xMin = *xLow;
    built.xMax = *xHigh;
    built.yMin = *yLow;
    built.yMax = *yHigh;
    built.xRange = built.xMax - built.xMin;
    built.yRange = built.yMax - built.yMin;
    // Nodes on one line span no triangle, and a zero range can't be normalised.
    if (!(built.xRange > 0.0 && built.yRange > 0.0 && std::isfinite(built.xRange)
            && std::isfinite(built.yRange)))
        return false;
    built.x.resize(n);
    built.y.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        built.x[i] = (area[i] - built.xMin) / built.xRange;
        built.y[i] = (deform[i] - built.yMin) / built.yRange;
    }
    built.z = emodulus;
    built.triangles = delaunayTriangulation(built.x, built.y);
    fillMeshGrid(built);
    mesh = std::move(built);
    return true;
}

void fillMeshGrid(EModulusMesh& mesh)
{
    mesh.grid.assign(static_cast<std::size_t>(EModulusMesh::gridSize * EModulusMesh::gridSize), {});
    for (std::size_t t = 0; t < mesh.triangles.size(); ++t) {
        const Triangle& tri = mesh.triangles[t];
        double xLow = mesh.x[static_cast<std::size_t>(tri[0])], xHigh = xLow;
        double yLow = mesh.y[static_cast<std::size_t>(tri[0])], yHigh = yLow;
        for (int k = 1; k < 3; ++k) {
            const auto v = static_cast<std::size_t>(tri[static_cast<std::size_t>(k)]);
            xLow = std::min(xLow, mesh.x[v]);
            xHigh = std::max(xHigh, mesh.x[v]);
            yLow = std::min(yLow, mesh.y[v]);
            yHigh = std::max(yHigh, mesh.y[v]);
        }
        const int c0 = cellOf(xLow), c1 = cellOf(xHigh), r0 = cellOf(yLow), r1 = cellOf(yHigh);
        for (int r = r0; r <= r1; ++r)
            for (int c = c0; c <= c1; ++c)
                mesh.grid[static_cast<std::size_t>(r * EModulusMesh::gridSize + c)].push_back(
                    static_cast<std::int32_t>(t));
    }

    // Coefficients of every triangle; a degenerate one is never tried.
    std::vector<EModulusMesh::Lookup> lookups(mesh.triangles.size());
    std::vector<bool> usable(mesh.triangles.size(), false);
    for (std::size_t t = 0; t < mesh.triangles.size(); ++t) {
        const Triangle& tri = mesh.triangles[t];
        const auto i0 = static_cast<std::size_t>(tri[0]), i1 = static_cast<std::size_t>(tri[1]),
                   i2 = static_cast<std::size_t>(tri[2]);
        const double x0 = mesh.x[i0], y0 = mesh.y[i0], x1 = mesh.x[i1], y1 = mesh.y[i1];
        const double x2 = mesh.x[i2], y2 = mesh.y[i2];
        const double den = (y0 - y2) * (x2 - x1) + (y1 - y2) * (x0 - x2);
        if (std::abs(den) < 1e-20)
            continue;
        usable[t] = true;
        lookups[t] = { x2, y2, (y1 - y2) / den, (x2 - x1) / den, (y2 - y0) / den, (x0 - x2) / den, mesh.z[i0],
            mesh.z[i1], mesh.z[i2] };
    }
    mesh.cellStart.assign(mesh.grid.size() + 1, 0);
    mesh.cellTriangles.clear();
    for (std::size_t cell = 0; cell < mesh.grid.size(); ++cell) {
        mesh.cellStart[cell] = static_cast<std::int32_t>(mesh.cellTriangles.size());
        for (const std::int32_t t : mesh.grid[cell])
            if (usable[static_cast<std::size_t>(t)])
                mesh.cellTriangles.push_back(lookups[static_cast<std::size_t>(t)]);
    }
    mesh.cellStart.back() = static_cast<std::int32_t>(mesh.cellTriangles.size());
}

double interpolate(const EModulusMesh& mesh, double area, double deform)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const double px = (area - mesh.xMin) / mesh.xRange;
    const double py = (deform - mesh.yMin) / mesh.yRange;
    // Written so that a NaN fails the test: a NaN must never become a cell index.
    if (!(px >= 0.0 && px <= 1.0 && py >= 0.0 && py <= 1.0)
        || mesh.cellStart.size()
            != static_cast<std::size_t>(EModulusMesh::gridSize * EModulusMesh::gridSize + 1))
        return nan;
    // The cell's triangles in list order; the first that holds the point (to a tolerance that lets
    // points on shared edges and nodes be accepted) gives its linear interpolation.
    const auto cell = static_cast<std::size_t>(cellOf(py) * EModulusMesh::gridSize + cellOf(px));
    const EModulusMesh::Lookup* it = mesh.cellTriangles.data() + mesh.cellStart[cell];
    const EModulusMesh::Lookup* end = mesh.cellTriangles.data() + mesh.cellStart[cell + 1];
    for (; it != end; ++it) {
        const double dx = px - it->x2, dy = py - it->y2;
        const double l1 = it->a * dx + it->b * dy;
        if (l1 < -1e-10)
            continue;
        const double l2 = it->c * dx + it->d * dy;
        const double l3 = 1.0 - l1 - l2;
        if (l2 >= -1e-10 && l3 >= -1e-10)
            return l1 * it->z0 + l2 * it->z1 + l3 * it->z2;
    }
    return nan;
}

} // namespace Tessaly
