#include "calc/Density.h"

#include "calc/OrderStatistics.h"
#include "core/ParallelBlocks.h"

#include <algorithm>
#include <armadillo>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
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

// std::floor, without a library call where truncation gives the same result.
double floorOf(double v)
{
    if (!(std::fabs(v) < 4.0e15))
        return std::floor(v);
    const double truncated = static_cast<double>(static_cast<long long>(v));
    return truncated > v ? truncated - 1.0 : truncated;
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

// quantile() of the sorted order of the first `count` values, at two fractions.
std::pair<double, double> unsortedQuantiles(
    const std::vector<double>& values, std::size_t count, double p, double q)
{
    if (count == 0)
        return { 0.0, 0.0 };
    std::vector<std::size_t> ranks;
    std::vector<double> fractions;
    for (const double fraction : { p, q }) {
        const double pos = fraction * static_cast<double>(count - 1);
        const double lowerIndex = std::floor(pos);
        const std::size_t i = static_cast<std::size_t>(lowerIndex);
        ranks.push_back(i);
        ranks.push_back(std::min(i + 1, count - 1));
        fractions.push_back(pos - lowerIndex);
    }
    const std::vector<double> v = orderStatistics(count == values.size()
            ? values
            : std::vector<double>(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count)),
        ranks);
    return { (1.0 - fractions[0]) * v[0] + fractions[0] * v[1],
        (1.0 - fractions[1]) * v[2] + fractions[1] * v[3] };
}

// Spread of one axis for the bandwidth: the smaller of IQR / 1.34 and the population standard
// deviation, or the deviation alone when the IQR is zero.
double robustSpread(const std::vector<double>& values, std::size_t count)
{
    if (count == 0)
        return 0.0;
    const auto [q25, q75] = unsortedQuantiles(values, count, 0.25, 0.75);
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

// Normalised Gaussian taps -r..r, r = ceil(4 * cells) but at least 1, for a bandwidth of `cells`
// grid cells. The grid reaches three bandwidths beyond the data on each side, so a bandwidth is
// under a sixth of the grid and r stays within it; the cap only guards non-finite input.
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

// Shifted block bounds for one kernel tap: out(first..last) takes in(first + k..last + k),
// the positions i with 0 <= i + k < size. False when the tap reaches past the grid.
bool tapBlock(arma::sword k, arma::sword size, arma::uword& first, arma::uword& last, arma::uword& source)
{
    if (k >= size || -k >= size)
        return false;
    const arma::sword from = std::max<arma::sword>(0, -k);
    first = static_cast<arma::uword>(from);
    last = static_cast<arma::uword>(size - 1 - std::max<arma::sword>(0, k));
    source = static_cast<arma::uword>(from + k);
    return true;
}

// Convolution with a symmetric kernel along x, the matrix's first index, taking the grid as zero
// outside. Each output accumulates its taps in order from -r to r, one shifted block per tap, so
// every sum runs left to right while the block operations run over contiguous memory.
arma::mat smoothAlongX(const arma::mat& in, const arma::rowvec& kernel)
{
    const arma::sword radius = static_cast<arma::sword>(kernel.n_elem / 2);
    const arma::sword size = static_cast<arma::sword>(in.n_rows);
    arma::mat out(in.n_rows, in.n_cols, arma::fill::zeros);
    arma::uword first = 0, last = 0, source = 0;
    for (arma::sword k = -radius; k <= radius; ++k) {
        if (tapBlock(k, size, first, last, source))
            out.rows(first, last)
                += kernel(static_cast<arma::uword>(k + radius)) * in.rows(source, source + last - first);
    }
    return out;
}

// The same along y, the matrix's second index.
arma::mat smoothAlongY(const arma::mat& in, const arma::rowvec& kernel)
{
    const arma::sword radius = static_cast<arma::sword>(kernel.n_elem / 2);
    const arma::sword size = static_cast<arma::sword>(in.n_cols);
    arma::mat out(in.n_rows, in.n_cols, arma::fill::zeros);
    arma::uword first = 0, last = 0, source = 0;
    for (arma::sword k = -radius; k <= radius; ++k) {
        if (tapBlock(k, size, first, last, source))
            out.cols(first, last)
                += kernel(static_cast<arma::uword>(k + radius)) * in.cols(source, source + last - first);
    }
    return out;
}

// Points measured from the lower corner of their extent, with the extent's ranges; the histogram
// bins of the grid-size search and of the histogram estimate are taken from the offsets.
struct OffsetPoints
{
    const double* x;
    const double* y;
    std::size_t count;
    double xMinimum;
    double yMinimum;
    double xRange;
    double yRange;
};

OffsetPoints offsetPoints(const std::vector<double>& x, const std::vector<double>& y, std::size_t count)
{
    const AxisExtent ex = axisExtent(x, count);
    const AxisExtent ey = axisExtent(y, count);
    return { x.data(), y.data(), count, ex.minimum, ey.minimum, ex.range, ey.range };
}

// The binning loops divide several offsets per instruction; where the processor has AVX2 a second
// build of them divides four at once. Division, comparison and truncation round alike in both,
// so the bins are the same. The resolver that picks a build runs while the program is being loaded,
// before a ThreadSanitizer runtime can take the calls its instrumentation makes, so a build under
// ThreadSanitizer keeps one build of the loops.
#if defined(__SANITIZE_THREAD__)
#define TESSALY_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TESSALY_THREAD_SANITIZER
#endif
#endif
#if defined(__x86_64__) && defined(__linux__) && (defined(__GNUC__) || defined(__clang__))                   \
    && !defined(TESSALY_THREAD_SANITIZER)
#define TESSALY_WIDE_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define TESSALY_WIDE_VECTOR_CLONES
#endif

// clampedBin(offset / step, n) for a block of offsets, written without branches so that the
// compiler can divide several offsets at once: NaN and negative quotients go to 0, quotients
// of n and more to n - 1, the rest are truncated.
TESSALY_WIDE_VECTOR_CLONES void binBlock(
    const double* offsets, std::size_t count, double step, int n, int* bins)
{
    const double top = n;
    const double last = n - 1;
    for (std::size_t i = 0; i < count; ++i) {
        double q = offsets[i] / step;
        q = q >= 0.0 ? q : 0.0;
        q = q < top ? q : last;
        bins[i] = static_cast<int>(q);
    }
}

constexpr std::size_t binBlockSize = 1024;

// Points per block of work on the thread pool: below this, handing work over costs more than it
// saves.
constexpr std::size_t minimumParallelBlock = 25000;

// Scratch space for the cells of one block of points.
struct CellBlock
{
    double xOffsets[binBlockSize];
    double yOffsets[binBlockSize];
    int xBins[binBlockSize];
};

// The offsets of points [first, first + count) from the lower corner; count is at most
// binBlockSize.
void offsetBlock(const OffsetPoints& points, std::size_t first, std::size_t count, CellBlock& scratch)
{
    for (std::size_t i = 0; i < count; ++i) {
        scratch.xOffsets[i] = points.x[first + i] - points.xMinimum;
        scratch.yOffsets[i] = points.y[first + i] - points.yMinimum;
    }
}

// The cell (yBin * n + xBin) of an n x n histogram of each point whose offsets offsetBlock left in
// `scratch`.
void cellsOfOffsets(std::size_t count, double xStep, double yStep, int n, CellBlock& scratch, int* cells)
{
    binBlock(scratch.xOffsets, count, xStep, n, scratch.xBins);
    binBlock(scratch.yOffsets, count, yStep, n, cells);
    for (std::size_t i = 0; i < count; ++i)
        cells[i] = cells[i] * n + scratch.xBins[i];
}

// Bins per axis with the lowest Shimazaki-Shinomoto cost, for at least 4 points. The independent
// `alongside` work runs with the search's own blocks, on the thread pool when they do.
int optimalGridSizeOf(const OffsetPoints& points, const std::vector<std::function<void()>>& alongside = {})
{
    // 20 candidates spaced evenly in log from 32 (e^3.4657359) to 512 (times e^2.7725888); a
    // candidate equal to the one before is dropped.
    std::vector<int> candidates;
    for (int k = 0; k < 20; ++k) {
        const int n = static_cast<int>(std::round(std::exp(k * 2.7725888 / 19 + 3.4657359)));
        if (candidates.empty() || candidates.back() != n)
            candidates.push_back(n);
    }

    // The histograms are counted a block of points at a time for several candidates at once, so
    // that the points are read from memory once per group rather than once per candidate; a group
    // holds as many candidates as keep its histograms within about a megabyte, and no more than
    // three: the groups run in parallel, and one group of many small candidates would be left
    // running alone after all the others.
    const std::size_t total = points.count;
    constexpr std::size_t groupCells = 200000;
    constexpr std::size_t groupCandidates = 3;
    std::vector<std::pair<std::size_t, std::size_t>> groups;
    for (std::size_t start = 0; start < candidates.size();) {
        std::size_t end = start;
        std::size_t cellSum = 0;
        while (end < candidates.size() && end - start < groupCandidates) {
            const std::size_t size
                = static_cast<std::size_t>(candidates[end]) * static_cast<std::size_t>(candidates[end]);
            if (end > start && cellSum + size > groupCells)
                break;
            cellSum += size;
            ++end;
        }
        groups.emplace_back(start, end);
        start = end;
    }
    // The pool takes the tasks in order: the largest groups go first, the small ones and the
    // `alongside` work fill in at the end.
    std::stable_sort(groups.begin(), groups.end(),
        [](const auto& a, const auto& b) { return a.second - a.first > b.second - b.first; });

    // Groups are independent: with enough points they are counted on the thread pool at once,
    // each cost in its own slot.
    std::vector<double> costs(candidates.size());
    // The cost needs the sum over cells of (count - mean)^2, which is sumOfSquares - N^2 / cells
    // exactly: the sum of squared counts grows by 2k + 1 whenever a cell holding k gains a point,
    // so it is kept in whole numbers while counting and no pass over the cells is needed.
    const auto countGroup = [&](std::size_t start, std::size_t end) {
        std::vector<std::vector<std::uint32_t>> counts(end - start);
        std::vector<std::uint64_t> sumsOfSquares(end - start, 0);
        for (std::size_t c = start; c < end; ++c)
            counts[c - start].assign(
                static_cast<std::size_t>(candidates[c]) * static_cast<std::size_t>(candidates[c]), 0);
        CellBlock scratch;
        int cells[binBlockSize];
        for (std::size_t first = 0; first < total; first += binBlockSize) {
            const std::size_t count = std::min(binBlockSize, total - first);
            offsetBlock(points, first, count, scratch);
            for (std::size_t c = start; c < end; ++c) {
                const int n = candidates[c];
                cellsOfOffsets(count, points.xRange / n, points.yRange / n, n, scratch, cells);
                std::uint32_t* histogram = counts[c - start].data();
                std::uint64_t growth = 0;
                for (std::size_t i = 0; i < count; ++i)
                    growth += 2 * std::uint64_t { histogram[cells[i]]++ } + 1;
                sumsOfSquares[c - start] += growth;
            }
        }
        for (std::size_t c = start; c < end; ++c) {
            const int n = candidates[c];
            const double dx = points.xRange / n;
            const double dy = points.yRange / n;
            const double binCount = static_cast<double>(n) * static_cast<double>(n);
            const double mean = static_cast<double>(total) / binCount;
            // cells^2 * variance = cells * sumOfSquares - N^2, a whole number that is never
            // negative; 128 bits hold it for any count of points that fits in memory.
            const unsigned __int128 scaled = static_cast<unsigned __int128>(sumsOfSquares[c - start])
                    * static_cast<unsigned __int128>(
                        static_cast<std::uint64_t>(n) * static_cast<std::uint64_t>(n))
                - static_cast<unsigned __int128>(total) * total;
            const double variance = static_cast<double>(scaled) / (binCount * binCount);
            const double area = dx * dy;
            costs[c] = (2.0 * mean - variance) / (area * area);
        }
    };
    const std::size_t tasks = alongside.size() + groups.size();
    runInBlocks(tasks, total >= minimumParallelBlock ? tasks : 1,
        [&](std::size_t, std::size_t first, std::size_t last) {
            for (std::size_t t = first; t < last; ++t) {
                if (t < groups.size())
                    countGroup(groups[t].first, groups[t].second);
                else
                    alongside[t - groups.size()]();
            }
        });

    // The smallest cost wins, the earlier candidate on a tie; 64 if no cost compares (NaN).
    int best = 64;
    double bestCost = std::numeric_limits<double>::infinity();
    for (std::size_t c = 0; c < candidates.size(); ++c) {
        if (costs[c] < bestCost) {
            bestCost = costs[c];
            best = candidates[c];
        }
    }
    return best;
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
    return optimalGridSizeOf(offsetPoints(x, y, count));
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
    const double scale = count > 0 ? std::pow(static_cast<double>(count), -1.0 / 6.0) : 0.0;
    double spreadX = 0.0;
    double spreadY = 0.0;
    // The grid size and the spreads are independent: the spreads are worked out among the blocks
    // of the grid-size search.
    int g = gridSize;
    const std::vector<std::function<void()>> spreads { [&] { spreadX = robustSpread(x, count); },
        [&] { spreadY = robustSpread(y, count); } };
    // With no points the extent is taken as the single value 0.
    const AxisExtent ex = count > 0 ? axisExtent(x, count) : AxisExtent { 0.0, 0.0, 1.0 };
    const AxisExtent ey = count > 0 ? axisExtent(y, count) : AxisExtent { 0.0, 0.0, 1.0 };
    if (g < 1 && count >= 4)
        g = optimalGridSizeOf(
            { x.data(), y.data(), count, ex.minimum, ey.minimum, ex.range, ey.range }, spreads);
    else
        runBoth(spreads[0], spreads[1], count >= minimumParallelBlock);
    if (g < 1)
        g = 32;
    double hx = scale * spreadX;
    double hy = scale * spreadY;
    if (!(hx > 0.0))
        hx = 1.0;
    if (!(hy > 0.0))
        hy = 1.0;

    DensityGrid grid;
    grid.size = g;
    grid.xOrigin = ex.minimum - 3.0 * hx;
    grid.yOrigin = ey.minimum - 3.0 * hy;
    grid.xStep = (ex.maximum + 3.0 * hx - grid.xOrigin) / g;
    grid.yStep = (ey.maximum + 3.0 * hy - grid.yOrigin) / g;

    // Counts as a matrix indexed (xBin, yBin): a column holds one row of the grid, contiguous in
    // memory, and the column-major layout of the matrix is the grid's row-major order.
    // Each block of points counts into a grid of its own; whole counts add up exactly.
    const arma::uword n = static_cast<arma::uword>(g);
    const std::size_t blocks = parallelBlockCount(count, minimumParallelBlock);
    std::vector<arma::mat> blockCounts(blocks);
    runInBlocks(count, blocks, [&](std::size_t b, std::size_t from, std::size_t to) {
        arma::mat& counts = blockCounts[b];
        counts.zeros(n, n);
        double xOffsets[binBlockSize];
        double yOffsets[binBlockSize];
        int xBins[binBlockSize];
        int yBins[binBlockSize];
        for (std::size_t first = from; first < to; first += binBlockSize) {
            const std::size_t block = std::min(binBlockSize, to - first);
            for (std::size_t i = 0; i < block; ++i) {
                xOffsets[i] = x[first + i] - grid.xOrigin;
                yOffsets[i] = y[first + i] - grid.yOrigin;
            }
            binBlock(xOffsets, block, grid.xStep, g, xBins);
            binBlock(yOffsets, block, grid.yStep, g, yBins);
            for (std::size_t i = 0; i < block; ++i)
                counts(static_cast<arma::uword>(xBins[i]), static_cast<arma::uword>(yBins[i])) += 1.0;
        }
    });
    arma::mat& counts = blockCounts.front();
    for (std::size_t b = 1; b < blocks; ++b)
        counts += blockCounts[b];

    const arma::mat alongX = smoothAlongX(counts, gaussianKernel(hx / grid.xStep, g));
    const arma::mat smoothed = smoothAlongY(alongX, gaussianKernel(hy / grid.yStep, g));
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
    runInBlocks(count, parallelBlockCount(count, minimumParallelBlock),
        [&](std::size_t, std::size_t from, std::size_t to) {
            for (std::size_t p = from; p < to; ++p) {
                const double fx = (x[p] - grid.xOrigin) / grid.xStep - 0.5;
                const double fy = (y[p] - grid.yOrigin) / grid.yStep - 0.5;
                const double i = floorOf(fx);
                const double j = floorOf(fy);
                const double tx = fx - i;
                const double ty = fy - j;
                const std::size_t i0 = static_cast<std::size_t>(clampedIndex(i, g));
                const std::size_t i1 = static_cast<std::size_t>(clampedIndex(i + 1.0, g));
                const std::size_t row0 = static_cast<std::size_t>(clampedIndex(j, g)) * stride;
                const std::size_t row1 = static_cast<std::size_t>(clampedIndex(j + 1.0, g)) * stride;
                out[p] = (1.0 - tx) * (1.0 - ty) * v[row0 + i0] + tx * (1.0 - ty) * v[row0 + i1]
                    + (1.0 - tx) * ty * v[row1 + i0] + tx * ty * v[row1 + i1];
            }
        });
    return out;
}

std::vector<double> histogramDensity(const std::vector<double>& x, const std::vector<double>& y)
{
    const std::size_t count = std::min(x.size(), y.size());
    const OffsetPoints points = offsetPoints(x, y, count);
    const int g = count < 4 ? 32 : optimalGridSizeOf(points);
    const double dx = points.xRange / g;
    const double dy = points.yRange / g;

    // Each point's cell is kept from the counting pass for the lookup.
    std::vector<int> cells(count);
    CellBlock scratch;
    for (std::size_t first = 0; first < count; first += binBlockSize) {
        const std::size_t block = std::min(binBlockSize, count - first);
        offsetBlock(points, first, block, scratch);
        cellsOfOffsets(block, dx, dy, g, scratch, cells.data() + first);
    }
    std::vector<int> counts(static_cast<std::size_t>(g) * static_cast<std::size_t>(g), 0);
    for (const int cell : cells)
        ++counts[static_cast<std::size_t>(cell)];

    std::vector<double> out(count);
    for (std::size_t i = 0; i < count; ++i)
        out[i] = counts[static_cast<std::size_t>(cells[i])];
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
    // Squared distances of finite points are never NaN, and plain comparisons select faster.
    bool allFinite = true;
    for (std::size_t i = 0; i < count; ++i)
        allFinite = allFinite && std::isfinite(x[i]) && std::isfinite(y[i]);

    // Coordinates in cell order, so that a cell's distances come from contiguous memory.
    std::vector<std::size_t> cellPoints(count);
    std::vector<std::size_t> slotOf(count);
    {
        std::vector<std::size_t> fill(cellStart.begin(), cellStart.end() - 1);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t slot = fill[static_cast<std::size_t>(rowOf[i] * cellsPerAxis + columnOf[i])]++;
            cellPoints[slot] = i;
            slotOf[i] = slot;
        }
    }
    std::vector<double> cellX(count);
    std::vector<double> cellY(count);
    for (std::size_t s = 0; s < count; ++s) {
        cellX[s] = x[cellPoints[s]];
        cellY[s] = y[cellPoints[s]];
    }

    std::vector<double> out(count);
    std::vector<double> distances(count);
    // Points are taken in cell order, which keeps the neighbouring cells in the cache.
    for (std::size_t visit = 0; visit < count; ++visit) {
        const std::size_t p = cellPoints[visit];
        const std::size_t self = slotOf[p];
        const double px = x[p];
        const double py = y[p];
        std::size_t found = 0;
        auto addRange = [&](std::size_t from, std::size_t to) {
            if (distances.size() < found + (to - from))
                distances.resize(2 * (found + (to - from)));
            double* d = distances.data() + found;
            for (std::size_t s = from; s < to; ++s) {
                const double ddx = cellX[s] - px;
                const double ddy = cellY[s] - py;
                d[s - from] = ddx * ddx + ddy * ddy;
            }
            found += to - from;
        };
        auto visitCell = [&](int row, int column) {
            const std::size_t cell = static_cast<std::size_t>(row * cellsPerAxis + column);
            const std::size_t from = cellStart[cell];
            const std::size_t to = cellStart[cell + 1];
            // Every point of the cell but the one being estimated.
            if (self >= from && self < to) {
                addRange(from, self);
                addRange(self + 1, to);
            } else {
                addRange(from, to);
            }
        };
        // Ring r visits the border of the square of half-width r clamped to the grid. A cell on
        // the grid's edge stays on that border for several rings and is counted at each of them;
        // this weighting at the rim is part of the estimate.
        for (int r = 0; found < k && r <= cellsPerAxis; ++r) {
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
        const std::size_t m = std::min(found, k);
        if (m == 0) {
            out[p] = 0.0;
            continue;
        }
        const auto begin = distances.begin();
        const auto nth = begin + static_cast<std::ptrdiff_t>(m - 1);
        const auto end = begin + static_cast<std::ptrdiff_t>(found);
        if (allFinite)
            std::nth_element(begin, nth, end);
        else
            std::nth_element(begin, nth, end, lessNanLast);
        const double d2 = distances[m - 1];
        out[p] = d2 > 0.0 ? static_cast<double>(m) / (kPi * d2) : static_cast<double>(m);
    }
    return out;
}

namespace {

std::vector<double> estimate(
    const std::vector<double>& x, const std::vector<double>& y, int method, KernelDensityFit* fit)
{
    switch (method) {
    case KernelDensity: {
        DensityGrid grid = kernelDensityGrid(x, y, 0);
        std::vector<double> densities = interpolateGrid(grid, x, y);
        if (fit)
            *fit = KernelDensityFit { x, y, std::move(grid), densities };
        return densities;
    }
    case HistogramDensity:
        return histogramDensity(x, y);
    default:
        return nearestNeighbourDensity(x, y);
    }
}

} // namespace

std::vector<double> computeDensity(
    const std::vector<double>& x, const std::vector<double>& y, int method, KernelDensityFit* fit)
{
    if (fit)
        *fit = KernelDensityFit();
    const bool known
        = method == KernelDensity || method == HistogramDensity || method == NearestNeighbourDensity;
    if (x.size() != y.size() || !known)
        return std::vector<double>(x.size(), kNaN);

    std::size_t finite = 0;
    for (std::size_t i = 0; i < x.size(); ++i)
        finite += std::isfinite(x[i]) && std::isfinite(y[i]) ? 1 : 0;
    if (finite < 4)
        return std::vector<double>(x.size(), kNaN);
    if (finite == x.size())
        return estimate(x, y, method, fit);

    std::vector<double> fx;
    std::vector<double> fy;
    fx.reserve(finite);
    fy.reserve(finite);
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (std::isfinite(x[i]) && std::isfinite(y[i])) {
            fx.push_back(x[i]);
            fy.push_back(y[i]);
        }
    }
    const std::vector<double> estimates = estimate(fx, fy, method, fit);
    std::vector<double> result(x.size(), kNaN);
    for (std::size_t i = 0, next = 0; i < x.size(); ++i) {
        if (std::isfinite(x[i]) && std::isfinite(y[i]))
            result[i] = estimates[next++];
    }
    return result;
}

} // namespace Tessaly
