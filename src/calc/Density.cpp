#include "calc/Density.h"

#include <algorithm>
#include <armadillo>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Tessaly {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Extent of one axis; a degenerate or empty axis gets the width 1.0 so that bins stay finite.
struct AxisExtent
{
    double minimum;
    double maximum;
    double range;
};

AxisExtent axisExtent(const std::vector<double>& values, std::size_t count)
{
    double lo = std::numeric_limits<double>::infinity();
    double hi = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < count; ++i) {
        if (values[i] < lo)
            lo = values[i];
        if (values[i] > hi)
            hi = values[i];
    }
    const double range = hi - lo;
    return { lo, hi, range > 0.0 ? range : 1.0 };
}

// Bin of a fractional position: truncated and clamped to 0..n-1. Clamping before the conversion
// keeps NaN and huge values defined.
int clampedBin(double position, int n)
{
    if (!(position >= 1.0))
        return 0;
    if (position >= n)
        return n - 1;
    return static_cast<int>(position);
}

// An already integral index clamped to 0..n-1.
int clampedIndex(double index, int n)
{
    if (!(index > 0.0))
        return 0;
    if (index >= n - 1)
        return n - 1;
    return static_cast<int>(index);
}

// NaN sorts last, which keeps the ordering strict and weak for any input.
bool lessNanLast(double a, double b)
{
    if (std::isnan(a))
        return false;
    if (std::isnan(b))
        return true;
    return a < b;
}

// quantile() of the sorted order of `work`, by selection instead of a full sort; `work` is
// reordered. Gives the same value as sorting first.
double selectQuantile(std::vector<double>& work, double q)
{
    const std::size_t n = work.size();
    if (n == 0)
        return 0.0;
    const double pos = q * static_cast<double>(n - 1);
    const double lowerIndex = std::floor(pos);
    const double f = pos - lowerIndex;
    const std::size_t i = static_cast<std::size_t>(lowerIndex);
    const std::size_t next = std::min(i + 1, n - 1);
    std::nth_element(work.begin(), work.begin() + static_cast<std::ptrdiff_t>(i), work.end(), lessNanLast);
    const double lower = work[i];
    const double upper = next == i
        ? lower
        : *std::min_element(work.begin() + static_cast<std::ptrdiff_t>(next), work.end(), lessNanLast);
    return (1.0 - f) * lower + f * upper;
}

// Spread of one axis for the bandwidth: the smaller of IQR / 1.34 and the population standard
// deviation, or the deviation alone when the IQR is zero.
double robustSpread(const std::vector<double>& values, std::size_t count)
{
    if (count == 0)
        return 0.0;
    std::vector<double> work(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count));
    const double q25 = selectQuantile(work, 0.25);
    const double q75 = selectQuantile(work, 0.75);
    const double iqr = q75 - q25;

    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i)
        sum += values[i];
    const double mean = sum / static_cast<double>(count);
    double squares = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        const double d = values[i] - mean;
        squares += d * d;
    }
    const double sd = std::sqrt(squares / static_cast<double>(count));
    return iqr > 0.0 ? std::min(iqr / 1.34, sd) : sd;
}

// Normalised Gaussian taps -r..r for a bandwidth of `cells` grid cells, at least one tap either
// side. A kernel wider than the grid would only add taps that meet zeros.
arma::rowvec gaussianKernel(double cells, int gridSize)
{
    const double reach = std::ceil(4.0 * cells);
    int radius = 1;
    if (reach > gridSize)
        radius = gridSize;
    else if (reach > 1.0)
        radius = static_cast<int>(reach);
    arma::rowvec weights(static_cast<arma::uword>(2 * radius + 1));
    double sum = 0.0;
    for (int k = -radius; k <= radius; ++k) {
        const double z = k / cells;
        const double w = std::exp(-0.5 * (z * z));
        weights(static_cast<arma::uword>(k + radius)) = w;
        sum += w;
    }
    weights /= sum;
    return weights;
}

// Histogram counts of `count` points on an n x n grid, row-major with y as the row. The offsets
// from the minima are given, so that each binning pass only divides.
void countBins(const std::vector<double>& xOffsets, const std::vector<double>& yOffsets, double xStep,
    double yStep, int n, std::vector<int>& counts)
{
    counts.assign(static_cast<std::size_t>(n) * static_cast<std::size_t>(n), 0);
    const std::size_t count = xOffsets.size();
    for (std::size_t i = 0; i < count; ++i) {
        const int xBin = clampedBin(xOffsets[i] / xStep, n);
        const int yBin = clampedBin(yOffsets[i] / yStep, n);
        ++counts[static_cast<std::size_t>(yBin) * static_cast<std::size_t>(n)
            + static_cast<std::size_t>(xBin)];
    }
}

std::vector<double> offsetsFrom(const std::vector<double>& values, std::size_t count, double origin)
{
    std::vector<double> offsets(count);
    for (std::size_t i = 0; i < count; ++i)
        offsets[i] = values[i] - origin;
    return offsets;
}

} // namespace

int densityMethodForColorBy(const std::string& key)
{
    if (key == densityHistogramKey)
        return HistogramDensity;
    if (key == densityNeighboursKey)
        return NearestNeighbourDensity;
    if (key.rfind(densityColorPrefix, 0) == 0)
        return KernelDensity;
    return -1;
}

int optimalGridSize(const std::vector<double>& x, const std::vector<double>& y)
{
    const std::size_t count = std::min(x.size(), y.size());
    if (count < 4)
        return 32;
    const AxisExtent ex = axisExtent(x, count);
    const AxisExtent ey = axisExtent(y, count);
    const std::vector<double> xOffsets = offsetsFrom(x, count, ex.minimum);
    const std::vector<double> yOffsets = offsetsFrom(y, count, ey.minimum);

    int best = 64;
    double bestCost = std::numeric_limits<double>::infinity();
    int previous = 0;
    std::vector<int> counts;
    for (int k = 0; k < 20; ++k) {
        // 20 candidates spaced evenly in log from 32 (e^3.4657359) to 512 (times e^2.7725888).
        const int n = static_cast<int>(std::round(std::exp(k * 2.7725888 / 19 + 3.4657359)));
        if (n == previous)
            continue;
        previous = n;
        const double dx = ex.range / n;
        const double dy = ey.range / n;
        countBins(xOffsets, yOffsets, dx, dy, n, counts);
        const double cells = static_cast<double>(n) * static_cast<double>(n);
        const double mean = static_cast<double>(count) / cells;
        double squares = 0.0;
        for (const int c : counts) {
            const double d = c - mean;
            squares += d * d;
        }
        const double variance = squares / cells;
        const double area = dx * dy;
        const double cost = (2.0 * mean - variance) / (area * area);
        if (cost < bestCost) {
            bestCost = cost;
            best = n;
        }
    }
    return best;
}

double quantile(const std::vector<double>& sorted, double q)
{
    const std::size_t n = sorted.size();
    if (n == 0)
        return 0.0;
    const double pos = q * static_cast<double>(n - 1);
    const double lowerIndex = std::floor(pos);
    const double f = pos - lowerIndex;
    const std::size_t i = std::min(static_cast<std::size_t>(std::max(lowerIndex, 0.0)), n - 1);
    return (1.0 - f) * sorted[i] + f * sorted[std::min(i + 1, n - 1)];
}

DensityGrid kernelDensityGrid(const std::vector<double>& x, const std::vector<double>& y, int gridSize)
{
    const std::size_t count = std::min(x.size(), y.size());
    const int g = gridSize < 1 ? optimalGridSize(x, y) : gridSize;

    const double scale = count > 0 ? std::pow(static_cast<double>(count), -1.0 / 6.0) : 0.0;
    double hx = scale * robustSpread(x, count);
    double hy = scale * robustSpread(y, count);
    if (!(hx > 0.0))
        hx = 1.0;
    if (!(hy > 0.0))
        hy = 1.0;

    // With no points the extent is taken as the single value 0.
    const AxisExtent ex = count > 0 ? axisExtent(x, count) : AxisExtent { 0.0, 0.0, 1.0 };
    const AxisExtent ey = count > 0 ? axisExtent(y, count) : AxisExtent { 0.0, 0.0, 1.0 };

    DensityGrid grid;
    grid.size = g;
    grid.xOrigin = ex.minimum - 3.0 * hx;
    grid.yOrigin = ey.minimum - 3.0 * hy;
    grid.xStep = (ex.maximum + 3.0 * hx - grid.xOrigin) / g;
    grid.yStep = (ey.maximum + 3.0 * hy - grid.yOrigin) / g;

    // Counts as a matrix with the y bin as the row, so that smoothing a matrix row runs along x.
    const arma::uword n = static_cast<arma::uword>(g);
    arma::mat counts(n, n, arma::fill::zeros);
    for (std::size_t i = 0; i < count; ++i) {
        const int xBin = clampedBin((x[i] - grid.xOrigin) / grid.xStep, g);
        const int yBin = clampedBin((y[i] - grid.yOrigin) / grid.yStep, g);
        counts(static_cast<arma::uword>(yBin), static_cast<arma::uword>(xBin)) += 1.0;
    }

    // Both passes convolve matrix rows with a row kernel, which sums the taps left to right; the
    // transpose in between turns the y direction into rows. "same" treats the outside as zero.
    const arma::rowvec kernelX = gaussianKernel(hx / grid.xStep, g);
    const arma::rowvec kernelY = gaussianKernel(hy / grid.yStep, g);
    const arma::mat alongX = arma::conv2(counts, kernelX, "same");
    const arma::mat smoothed = arma::conv2(alongX.t(), kernelY, "same");
    // smoothed(xBin, yBin) in column-major order is yBin * g + xBin: already the row-major layout.
    grid.values.assign(smoothed.memptr(), smoothed.memptr() + smoothed.n_elem);
    return grid;
}

std::vector<double> interpolateGrid(
    const DensityGrid& grid, const std::vector<double>& x, const std::vector<double>& y)
{
    const std::size_t count = std::min(x.size(), y.size());
    const int g = grid.size;
    const std::size_t stride = static_cast<std::size_t>(std::max(g, 0));
    if (g < 1 || grid.values.size() != stride * stride)
        return std::vector<double>(count, kNaN);

    std::vector<double> out(count);
    const double* v = grid.values.data();
    for (std::size_t p = 0; p < count; ++p) {
        const double fx = (x[p] - grid.xOrigin) / grid.xStep - 0.5;
        const double fy = (y[p] - grid.yOrigin) / grid.yStep - 0.5;
        const double i = std::floor(fx);
        const double j = std::floor(fy);
        const double tx = fx - i;
        const double ty = fy - j;
        const std::size_t i0 = static_cast<std::size_t>(clampedIndex(i, g));
        const std::size_t i1 = static_cast<std::size_t>(clampedIndex(i + 1.0, g));
        const std::size_t row0 = static_cast<std::size_t>(clampedIndex(j, g)) * stride;
        const std::size_t row1 = static_cast<std::size_t>(clampedIndex(j + 1.0, g)) * stride;
        out[p] = (1.0 - tx) * (1.0 - ty) * v[row0 + i0] + tx * (1.0 - ty) * v[row0 + i1]
            + (1.0 - tx) * ty * v[row1 + i0] + tx * ty * v[row1 + i1];
    }
    return out;
}

std::vector<double> histogramDensity(const std::vector<double>& x, const std::vector<double>& y)
{
    const std::size_t count = std::min(x.size(), y.size());
    const int g = optimalGridSize(x, y);
    const AxisExtent ex = axisExtent(x, count);
    const AxisExtent ey = axisExtent(y, count);
    const std::vector<double> xOffsets = offsetsFrom(x, count, ex.minimum);
    const std::vector<double> yOffsets = offsetsFrom(y, count, ey.minimum);
    const double dx = ex.range / g;
    const double dy = ey.range / g;
    std::vector<int> counts;
    countBins(xOffsets, yOffsets, dx, dy, g, counts);

    std::vector<double> out(count);
    for (std::size_t i = 0; i < count; ++i) {
        const int xBin = clampedBin(xOffsets[i] / dx, g);
        const int yBin = clampedBin(yOffsets[i] / dy, g);
        out[i] = counts[static_cast<std::size_t>(yBin) * static_cast<std::size_t>(g)
            + static_cast<std::size_t>(xBin)];
    }
    return out;
}

std::vector<double> nearestNeighbourDensity(const std::vector<double>& x, const std::vector<double>& y)
{
    const std::size_t count = std::min(x.size(), y.size());
    if (count < 2)
        return std::vector<double>(count, 1.0);

    const std::size_t k
        = std::max<std::size_t>(static_cast<std::size_t>(std::sqrt(static_cast<double>(count))), 1);
    const int cellsPerAxis = std::max(static_cast<int>(std::sqrt(static_cast<double>(count) / 20.0)), 1);
    const AxisExtent ex = axisExtent(x, count);
    const AxisExtent ey = axisExtent(y, count);
    const double dx = ex.range / cellsPerAxis;
    const double dy = ey.range / cellsPerAxis;

    // Points of each cell in input order, as one flat list with offsets per cell number
    // (row * cellsPerAxis + column).
    const std::size_t cellCount
        = static_cast<std::size_t>(cellsPerAxis) * static_cast<std::size_t>(cellsPerAxis);
    std::vector<int> rowOf(count);
    std::vector<int> columnOf(count);
    std::vector<std::size_t> cellStart(cellCount + 1, 0);
    for (std::size_t i = 0; i < count; ++i) {
        rowOf[i] = clampedBin((y[i] - ey.minimum) / dy, cellsPerAxis);
        columnOf[i] = clampedBin((x[i] - ex.minimum) / dx, cellsPerAxis);
        ++cellStart[static_cast<std::size_t>(rowOf[i] * cellsPerAxis + columnOf[i]) + 1];
    }
    for (std::size_t c = 0; c < cellCount; ++c)
        cellStart[c + 1] += cellStart[c];
    std::vector<std::size_t> cellPoints(count);
    {
        std::vector<std::size_t> fill(cellStart.begin(), cellStart.end() - 1);
        for (std::size_t i = 0; i < count; ++i)
            cellPoints[fill[static_cast<std::size_t>(rowOf[i] * cellsPerAxis + columnOf[i])]++] = i;
    }

    std::vector<double> out(count);
    std::vector<double> distances;
    for (std::size_t p = 0; p < count; ++p) {
        distances.clear();
        const double px = x[p];
        const double py = y[p];
        auto visitCell = [&](int row, int column) {
            const std::size_t cell = static_cast<std::size_t>(row * cellsPerAxis + column);
            for (std::size_t s = cellStart[cell]; s < cellStart[cell + 1]; ++s) {
                const std::size_t q = cellPoints[s];
                if (q == p)
                    continue;
                const double ddx = x[q] - px;
                const double ddy = y[q] - py;
                distances.push_back(ddx * ddx + ddy * ddy);
            }
        };
        // Ring r visits the border of the square of half-width r clamped to the grid. A cell on
        // the grid's edge stays on that border for several rings and is counted at each of them;
        // this weighting at the rim is part of the estimate.
        for (int r = 0; distances.size() < k && r <= cellsPerAxis; ++r) {
            const int top = std::max(rowOf[p] - r, 0);
            const int bottom = std::min(rowOf[p] + r, cellsPerAxis - 1);
            const int left = std::max(columnOf[p] - r, 0);
            const int right = std::min(columnOf[p] + r, cellsPerAxis - 1);
            for (int row = top; row <= bottom; ++row) {
                if (row == top || row == bottom) {
                    for (int column = left; column <= right; ++column)
                        visitCell(row, column);
                } else {
                    visitCell(row, left);
                    if (right != left)
                        visitCell(row, right);
                }
            }
        }
        const std::size_t m = std::min(distances.size(), k);
        if (m == 0) {
            out[p] = 0.0;
            continue;
        }
        std::nth_element(distances.begin(), distances.begin() + static_cast<std::ptrdiff_t>(m - 1),
            distances.end(), lessNanLast);
        const double d2 = distances[m - 1];
        out[p] = d2 > 0.0 ? static_cast<double>(m) / (kPi * d2) : static_cast<double>(m);
    }
    return out;
}

std::vector<double> computeDensity(const std::vector<double>& x, const std::vector<double>& y, int method)
{
    std::vector<double> result(x.size(), kNaN);
    if (x.size() != y.size())
        return result;

    std::vector<double> fx;
    std::vector<double> fy;
    std::vector<std::size_t> positions;
    fx.reserve(x.size());
    fy.reserve(x.size());
    positions.reserve(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (std::isfinite(x[i]) && std::isfinite(y[i])) {
            fx.push_back(x[i]);
            fy.push_back(y[i]);
            positions.push_back(i);
        }
    }
    if (positions.size() < 4)
        return result;

    std::vector<double> estimates;
    switch (method) {
    case KernelDensity:
        estimates = interpolateGrid(kernelDensityGrid(fx, fy, 0), fx, fy);
        break;
    case HistogramDensity:
        estimates = histogramDensity(fx, fy);
        break;
    case NearestNeighbourDensity:
        estimates = nearestNeighbourDensity(fx, fy);
        break;
    default:
        return result;
    }
    for (std::size_t i = 0; i < positions.size(); ++i)
        result[positions[i]] = estimates[i];
    return result;
}

} // namespace Tessaly
