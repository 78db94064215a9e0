#pragma once

#include <string>
#include <vector>

namespace Tessaly {

enum DensityMethod : int {
    KernelDensity = 0,
    HistogramDensity = 1,
    NearestNeighbourDensity = 2,
};

// "Color by" keys that colour the points by density instead of by a feature.
inline constexpr const char* densityColorPrefix = "__density_";
inline constexpr const char* densityHistogramKey = "__density_hist__";
inline constexpr const char* densityNeighboursKey = "__density_knn__";

// The density method that a "Color by" key selects, or -1 for a key that names a feature.
int densityMethodForColorBy(const std::string& key);

// Smoothed point counts on a square grid in plot space. Row-major with the y bin as the row:
// values[yBin * size + xBin]. Cell (xBin, yBin) spans [xOrigin + xBin * xStep, ... + xStep).
struct DensityGrid
{
    std::vector<double> values;
    int size = 0;
    double xOrigin = 0.0;
    double yOrigin = 0.0;
    double xStep = 1.0;
    double yStep = 1.0;
};

// A kernel density estimate kept for reuse: the finite points it was made of, in plot space, the
// grid, and the density at each of those points. Contours of the same points need nothing more.
struct KernelDensityFit
{
    std::vector<double> x;
    std::vector<double> y;
    DensityGrid grid;
    std::vector<double> densities;
};

// Density at each event, in plot space (callers map x and y by the axes' scale modes first).
// Events with a non-finite coordinate get NaN, and so does every event when fewer than four are
// finite, when the method is unknown, or when x and y differ in length. A kernel estimate is kept
// in `fit` when one is given (and `fit` is emptied otherwise).
std::vector<double> computeDensity(
    const std::vector<double>& x, const std::vector<double>& y, int method, KernelDensityFit* fit = nullptr);

// The parts, for callers that need the grid itself. All expect finite values of equal length.

// Bins per axis (32 to 512) that minimise the Shimazaki-Shinomoto cost of a 2-D histogram.
int optimalGridSize(const std::vector<double>& x, const std::vector<double>& y);

// Point counts binned on a gridSize x gridSize grid (optimalGridSize when gridSize < 1) that
// reaches three bandwidths beyond the data, smoothed by a separable Gaussian kernel. The values are
// smoothed counts per cell, not normalised.
DensityGrid kernelDensityGrid(const std::vector<double>& x, const std::vector<double>& y, int gridSize);

// Bilinear interpolation between cell centres, clamped at the grid's edge.
std::vector<double> interpolateGrid(
    const DensityGrid& grid, const std::vector<double>& x, const std::vector<double>& y);

// Linear interpolation between order statistics of a sorted vector; 0.0 when it is empty.
double quantile(const std::vector<double>& sorted, double q);

// Raw count of the optimalGridSize histogram bin of each point.
std::vector<double> histogramDensity(const std::vector<double>& x, const std::vector<double>& y);

// k / (pi d²) with k = sqrt(N) neighbours found ring by ring on a hash grid.
std::vector<double> nearestNeighbourDensity(const std::vector<double>& x, const std::vector<double>& y);

} // namespace Tessaly
