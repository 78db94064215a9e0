#pragma once

#include "calc/DelaunayTriangulation.h"

#include <cstdint>
#include <vector>

namespace Tessaly {

// The triangulated look-up table in normalised coordinates: area and deformation are mapped onto the
// unit square by the bounds of the table, so that one fixed grid of 100 by 100 cells fits any table.
struct EModulusMesh
{
    static constexpr int gridSize = 100;

    std::vector<double> x; // (area - xMin) / xRange of each node
    std::vector<double> y; // (deform - yMin) / yRange of each node
    std::vector<double> z; // Young's modulus of each node, kPa
    double xMin = 0.0, xMax = 0.0, yMin = 0.0, yMax = 0.0;
    double xRange = 0.0, yRange = 0.0;
    std::vector<Triangle> triangles; // counter-clockwise
    // Cell row * 100 + column: the triangles whose bounding box touches the cell, ascending.
    std::vector<std::vector<std::int32_t>> grid;

    // The same, prepared for lookups by fillMeshGrid: each cell's triangles as a slice of one flat
    // list (cellStart[cell] to cellStart[cell + 1]), without degenerate triangles, each with its
    // barycentric coefficients and node values, so that a lookup reads one contiguous record per try.
    struct Lookup
    {
        double x2, y2; // third node
        double a, b, c, d; // l1 = a (px - x2) + b (py - y2), l2 = c (px - x2) + d (py - y2)
        double z0, z1, z2;
    };
    std::vector<std::int32_t> cellStart;
    std::vector<Lookup> cellTriangles;
};

// Triangulates the table's nodes and fills the cell grid. False, with `mesh` untouched, for fewer than
// 3 nodes, columns of different lengths, or nodes without extent in area or deformation.
bool buildEModulusMesh(const std::vector<double>& area, const std::vector<double>& deform,
    const std::vector<double>& emodulus, EModulusMesh& mesh);

// Lists each triangle in every cell that its bounding box touches, and prepares the lookups.
void fillMeshGrid(EModulusMesh& mesh);

// The modulus at (area, deform) by linear interpolation in the triangle that holds the point; NaN
// outside the table's bounds, in an uncovered sliver, or for a NaN coordinate. Points on an edge or a
// node take the first triangle of their cell that accepts them.
double interpolate(const EModulusMesh& mesh, double area, double deform);

} // namespace Tessaly
