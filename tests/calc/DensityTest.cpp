#include "calc/Density.h"

#include "support/ReferencePoints.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace Tessaly;

using Tessaly::Testing::bellWithCore;
using Tessaly::Testing::Points;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();
constexpr double kPi = 3.14159265358979323846;

// The data sets of tests/reference/density_reference.py, from the same integer formulas, so that
// both sides start from identical doubles.
Points twoClusters()
{
    Points p;
    for (int i = 0; i < 60; ++i) {
        if (i < 40) {
            p.x.push_back(2.0 + ((i * 37) % 41) / 20.0);
            p.y.push_back(1.0 + ((i * 23) % 43) / 25.0);
        } else {
            p.x.push_back(6.0 + ((i * 17) % 29) / 10.0);
            p.y.push_back(3.0 + ((i * 13) % 31) / 8.0);
        }
    }
    return p;
}

Points centreAndOutliers()
{
    Points p;
    for (int i = 0; i < 200; ++i) {
        if (i < 180) {
            p.x.push_back(4.0 + ((i * 37) % 97) / 50.0);
            p.y.push_back(4.0 + ((i * 53) % 89) / 45.0);
        } else {
            p.x.push_back(((i * 7) % 20) / 2.0);
            p.y.push_back(((i * 11) % 20) / 2.0);
        }
    }
    return p;
}

// Reference densities, printed by tests/reference/density_reference.py (numpy/scipy: quartiles by
// numpy.quantile, smoothing by scipy.ndimage.convolve1d, neighbours by testing every cell for ring
// membership).
const std::vector<double> twoClustersKde { 0.3718639262264179, 0.5694921279903309, 0.4810173314402315,
    0.6572178612502042, 0.5785847702996105, 0.6660136635074796, 0.6243374448425505, 0.6105082463202913,
    0.5931971741248879, 0.4995913991298531, 0.5097537962724009, 0.45147879046676587, 0.6079217739773767,
    0.48607042854013216, 0.6798728682233075, 0.5198069365311005, 0.6895077749069918, 0.549806216641352,
    0.6223120194227776, 0.5213199513814616, 0.4989130617079712, 0.49312853649704, 0.5397909512230679,
    0.6144760062428107, 0.5706569612569347, 0.6899800845821716, 0.5401186218808118, 0.6832991961828487,
    0.46072807336966504, 0.6047670749811846, 0.42753064963246395, 0.5273770575924688, 0.4745937828394927,
    0.6137085068418734, 0.5906257167789667, 0.6417296536511358, 0.647527603929691, 0.6067756202337892,
    0.6381099970179748, 0.5036870850122254, 0.2066276109644151, 0.13486901392761336, 0.22080087555115124,
    0.11573743194665533, 0.1836887307427852, 0.17278087886389792, 0.11636487152328283, 0.22046558346870299,
    0.13534068737069932, 0.20940033296420363, 0.12943795726176133, 0.1538905831453001, 0.20061419221474203,
    0.1355234254568057, 0.21774288179956905, 0.12092519790236125, 0.18402959767123964, 0.16521394556210484,
    0.12055597772116876, 0.21593390668723558 };
const std::vector<double> twoClustersHistogram { 2.0, 1.0, 1.0, 1.0, 1.0, 1.0, 2.0, 2.0, 1.0, 1.0, 1.0, 1.0,
    1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 2.0, 1.0, 1.0,
    1.0, 1.0, 1.0, 2.0, 2.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0,
    1.0, 1.0, 1.0, 1.0, 1.0, 1.0 };
const std::vector<double> twoClustersNeighbours { 2.6149151546608786, 7.946395161506899, 6.14667366423872,
    12.776199560129218, 12.77619956012922, 12.776199560129218, 12.77619956012922, 12.776199560129225,
    12.776199560129191, 7.327093729978745, 6.146673664238715, 5.147076006667905, 12.776199560129195,
    6.146673664238723, 12.776199560129218, 6.146673664238715, 12.776199560129218, 7.213237951720738,
    12.776199560129218, 7.213237951720728, 5.147076006667911, 6.146673664238715, 12.776199560129225,
    12.776199560129218, 12.776199560129218, 12.77619956012922, 7.21323795172074, 12.77619956012922,
    5.147076006667911, 8.912676813146133, 3.9200724899481605, 6.146673664238715, 4.321507376428504,
    12.776199560129218, 12.776199560129218, 12.776199560129218, 12.77619956012922, 12.776199560129225,
    12.776199560129218, 7.2132379517207275, 3.478117780739957, 0.3815358224805707, 3.4781177807399515,
    0.3815358224805707, 1.4954155726755252, 1.5851804025159861, 0.5460362575062725, 3.478117780739957,
    0.4069250913432778, 3.0839712156215033, 0.8695294451849892, 0.8695294451849892, 3.478117780739957,
    0.4307721997654008, 3.478117780739957, 0.4307721997654008, 1.5851804025159861, 1.4954155726755263,
    0.4688414946420905, 3.478117780739957 };
// Events 0, 1, 2, 3, 500, 999, 1000, 1250, 1499 of bellWithCore().
const std::vector<std::size_t> bellPicks { 0, 1, 2, 3, 500, 999, 1000, 1250, 1499 };
const std::vector<double> bellKdePicks { 0.03943262825347866, 1.0202261854259806, 0.33550648560890944,
    0.6402459135555089, 0.7322737759073961, 7.18765343184458, 13.820081306544287, 16.295180097121243,
    16.908019668392832 };
const std::vector<double> bellHistogramPicks { 1.0, 2.0, 1.0, 1.0, 1.0, 2.0, 6.0, 81.0, 88.0 };
// Events 0, 50, 179 of the centre, then all 20 outliers 180..199 of centreAndOutliers().
const std::vector<double> outlierNeighbourPicks { 14.755846152970234, 21.153009243361492, 55.444121856171364,
    0.1259164440286249, 6.388732936856963, 0.3287792137030291, 0.29994011469378473, 0.9392222839736786,
    0.6447829289409673, 0.3781893298019708, 0.5729192367567939, 0.8169365416598818, 0.19560591575088457,
    52.39250623148208, 0.19149411047243609, 0.8175700960355354, 0.5609059735120168, 0.35339496304584367,
    0.6929057132938097, 0.8901248050217471, 0.3059674713712722, 0.3346258160528568, 6.01629750077367 };

void expectClose(const std::vector<double>& actual, const std::vector<double>& expected, const char* what)
{
    ASSERT_EQ(actual.size(), expected.size()) << what;
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(actual[i], expected[i], 1e-9 * std::fabs(expected[i])) << what << " at " << i;
}

std::vector<double> picked(const std::vector<double>& values, const std::vector<std::size_t>& picks)
{
    std::vector<double> out;
    for (const std::size_t i : picks)
        out.push_back(values[i]);
    return out;
}

bool allNaN(const std::vector<double>& values)
{
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isnan(v); });
}

} // namespace

TEST(Density, KernelDensityMatchesTheReference)
{
    const Points p = twoClusters();
    const DensityGrid grid = kernelDensityGrid(p.x, p.y, 0);
    ASSERT_EQ(grid.size, 32);
    EXPECT_NEAR(grid.xOrigin, -1.264084724564161, 1e-12);
    EXPECT_NEAR(grid.yOrigin, -1.5232707950335969, 1e-12);
    EXPECT_NEAR(grid.xStep, 0.41650529528526004, 1e-12);
    EXPECT_NEAR(grid.yStep, 0.3373919246895998, 1e-12);
    // Maximum at y bin 9, x bin 10; the kernel's mass beyond the grid is lost, so the sum is below 60.
    const auto peak = std::max_element(grid.values.begin(), grid.values.end());
    EXPECT_EQ(peak - grid.values.begin(), 9 * 32 + 10);
    EXPECT_NEAR(*peak, 0.7037485812523672, 1e-12);
    double sum = 0.0;
    for (const double v : grid.values)
        sum += v;
    EXPECT_NEAR(sum, 59.97713842515343, 1e-9);

    expectClose(computeDensity(p.x, p.y, KernelDensity), twoClustersKde, "two clusters");

    const Points b = bellWithCore();
    const DensityGrid bellGrid = kernelDensityGrid(b.x, b.y, 0);
    EXPECT_EQ(bellGrid.size, 66);
    EXPECT_NEAR(bellGrid.xStep, 0.1655544389926022, 1e-12);
    EXPECT_NEAR(bellGrid.yOrigin, -2.0109376867808835, 1e-12);
    expectClose(picked(computeDensity(b.x, b.y, KernelDensity), bellPicks), bellKdePicks, "bell");
}

TEST(Density, SinglePointSpreadsAsTheProductOfTwoNormalisedKernels)
{
    // One point: sd 0, so h = 1 on both axes; with 20 cells from -3 to 3 the step is 0.3, the
    // kernel has c = 3.33 cells and 14 taps per side, and the point falls in bin 10. Reference:
    // scipy.ndimage.convolve1d of a unit impulse with the kernel (density_reference.kernel).
    const DensityGrid grid = kernelDensityGrid({ 0.0 }, { 0.0 }, 20);
    ASSERT_EQ(grid.size, 20);
    EXPECT_DOUBLE_EQ(grid.xOrigin, -3.0);
    EXPECT_NEAR(grid.yStep, 0.3, 1e-15);
    EXPECT_NEAR(grid.values[10 * 20 + 10], 0.014324307057861708, 1e-15);
    EXPECT_NEAR(grid.values[10 * 20 + 13], 0.00955398063921014, 1e-15);
    EXPECT_NEAR(grid.values[12 * 20 + 10], 0.011964666984540125, 1e-15);
    EXPECT_NEAR(grid.values[0 * 20 + 19], 4.156665404972873e-06, 1e-18);
    double sum = 0.0;
    for (const double v : grid.values)
        sum += v;
    EXPECT_NEAR(sum, 0.9942386569808761, 1e-13);
}

TEST(Density, HistogramCountsMatchTheReference)
{
    const Points p = twoClusters();
    EXPECT_EQ(optimalGridSize(p.x, p.y), 32);
    expectClose(computeDensity(p.x, p.y, HistogramDensity), twoClustersHistogram, "two clusters");

    const Points b = bellWithCore();
    // Candidates run 32, 37, 43, 50, 57, 66, 77, ..., 512; the dense core makes 66 the cheapest.
    EXPECT_EQ(optimalGridSize(b.x, b.y), 66);
    expectClose(picked(computeDensity(b.x, b.y, HistogramDensity), bellPicks), bellHistogramPicks, "bell");
    EXPECT_EQ(optimalGridSize({ 1, 2, 3 }, { 1, 2, 3 }), 32);
}

TEST(Density, NearestNeighboursMatchTheReferenceAtTheRim)
{
    const Points p = twoClusters();
    expectClose(computeDensity(p.x, p.y, NearestNeighbourDensity), twoClustersNeighbours, "two clusters");

    // 200 points on 3 x 3 cells with k = 14: most outliers need rings that revisit edge cells.
    const Points o = centreAndOutliers();
    std::vector<std::size_t> picks { 0, 50, 179 };
    for (std::size_t i = 180; i < 200; ++i)
        picks.push_back(i);
    expectClose(
        picked(computeDensity(o.x, o.y, NearestNeighbourDensity), picks), outlierNeighbourPicks, "rim");
}

TEST(Density, NearestNeighboursCountEdgeCellsAgainAtEachRing)
{
    // 80 points: k = 8, 2 x 2 cells of width 5. A, B, C share the corner cell (0,0); 77 points lie
    // in cell (1,1) along y = 10 at x = 10 - 0.05 j. A's ring 0 finds B and C; ring 1 is the whole
    // grid, whose border includes (0,0) again, so B and C count twice. The 8th smallest squared
    // distance is then the 4th nearest far point (j = 73) rather than the 6th.
    std::vector<double> x { 0.0, 1.0, 0.0 };
    std::vector<double> y { 0.0, 0.0, 1.0 };
    for (int j = 0; j < 77; ++j) {
        x.push_back(10.0 - j * 0.05);
        y.push_back(10.0);
    }
    const double x73 = 10.0 - 73 * 0.05;
    const std::vector<double> d = nearestNeighbourDensity(x, y);
    EXPECT_NEAR(d[0], 8.0 / (kPi * (x73 * x73 + 100.0)), 1e-15);
    EXPECT_NEAR(d[1], 8.0 / (kPi * ((x73 - 1.0) * (x73 - 1.0) + 100.0)), 1e-15);

    // Two coincident points, k = 1: the distance is 0 and the estimate is k itself.
    EXPECT_EQ(nearestNeighbourDensity({ 1.0, 1.0 }, { 2.0, 2.0 }), (std::vector<double> { 1.0, 1.0 }));
    EXPECT_EQ(nearestNeighbourDensity({ 3.0 }, { 4.0 }), (std::vector<double> { 1.0 }));
}

TEST(Density, NonFiniteEventsGetNaNAndLeaveTheOthersAlone)
{
    const Points clean = twoClusters();
    Points mixed;
    std::vector<std::size_t> bad;
    for (std::size_t i = 0; i < clean.x.size(); ++i) {
        if (i % 13 == 0) {
            bad.push_back(mixed.x.size());
            mixed.x.push_back(i % 2 == 0 ? kNaN : 1.0);
            mixed.y.push_back(i % 2 == 0 ? 1.0 : kInf);
        }
        mixed.x.push_back(clean.x[i]);
        mixed.y.push_back(clean.y[i]);
    }
    const std::vector<std::vector<double>> references { twoClustersKde, twoClustersHistogram,
        twoClustersNeighbours };
    for (const int method : { KernelDensity, HistogramDensity, NearestNeighbourDensity }) {
        const std::vector<double> d = computeDensity(mixed.x, mixed.y, method);
        ASSERT_EQ(d.size(), mixed.x.size());
        std::vector<double> finite;
        for (std::size_t i = 0; i < d.size(); ++i) {
            if (std::find(bad.begin(), bad.end(), i) != bad.end())
                EXPECT_TRUE(std::isnan(d[i])) << "method " << method << " at " << i;
            else
                finite.push_back(d[i]);
        }
        expectClose(finite, references[static_cast<std::size_t>(method)], "mixed");
    }
}

TEST(Density, TooFewPointsMismatchedLengthsAndUnknownMethodsGiveNaN)
{
    const std::vector<double> x { 1.0, 2.0, kNaN, 3.0, 4.0 };
    const std::vector<double> y { 1.0, 5.0, 2.0, kNaN, 2.0 };
    for (const int method : { 0, 1, 2 }) {
        const std::vector<double> d = computeDensity(x, y, method);
        EXPECT_EQ(d.size(), 5u);
        EXPECT_TRUE(allNaN(d)) << method;
    }
    const Points p = twoClusters();
    std::vector<double> shortY(p.y.begin(), p.y.end() - 1);
    const std::vector<double> d = computeDensity(p.x, shortY, KernelDensity);
    EXPECT_EQ(d.size(), p.x.size());
    EXPECT_TRUE(allNaN(d));
    EXPECT_TRUE(allNaN(computeDensity(p.x, p.y, 3)));
    EXPECT_TRUE(allNaN(computeDensity(p.x, p.y, -1)));
    EXPECT_TRUE(computeDensity({}, {}, KernelDensity).empty());
}

TEST(Density, ConstantColumnStillFormsAGrid)
{
    // All x equal: sd and IQR 0, so the bandwidth falls back to 1 and the grid spans 5 +- 3.
    const Points p = twoClusters();
    const std::vector<double> x(p.x.size(), 5.0);
    const DensityGrid grid = kernelDensityGrid(x, p.y, 0);
    EXPECT_DOUBLE_EQ(grid.xOrigin, 2.0);
    EXPECT_DOUBLE_EQ(grid.xStep, 6.0 / grid.size);
    for (const int method : { 0, 1, 2 }) {
        for (const double v : computeDensity(x, p.y, method)) {
            ASSERT_TRUE(std::isfinite(v)) << method;
            ASSERT_GT(v, 0.0) << method;
        }
    }
    // Both columns constant: all points share one histogram bin and one position.
    const std::vector<double> same(10, 3.0);
    EXPECT_EQ(computeDensity(same, same, HistogramDensity), std::vector<double>(10, 10.0));
    EXPECT_EQ(computeDensity(same, same, NearestNeighbourDensity), std::vector<double>(10, 3.0));
}

TEST(Density, QuantileInterpolatesBetweenOrderStatistics)
{
    const std::vector<double> sorted { 1.0, 2.0, 3.0, 4.0, 10.0 };
    EXPECT_EQ(quantile({}, 0.5), 0.0);
    EXPECT_DOUBLE_EQ(quantile(sorted, 0.0), 1.0);
    EXPECT_DOUBLE_EQ(quantile(sorted, 0.25), 2.0);
    EXPECT_DOUBLE_EQ(quantile(sorted, 0.9), 7.6); // pos 3.6: 0.4 * 4 + 0.6 * 10
    EXPECT_DOUBLE_EQ(quantile(sorted, 1.0), 10.0);
    EXPECT_DOUBLE_EQ(quantile({ 7.0 }, 0.75), 7.0);
    EXPECT_DOUBLE_EQ(quantile({ 1.0, 3.0 }, 0.75), 2.5);
}

TEST(Density, InterpolationIsBilinearBetweenCellCentresAndClampedOutside)
{
    // 3 x 3 grid, value = 10 * yBin + xBin, origin (1, 2), steps (2, 0.5): centres at
    // x = 2, 4, 6 and y = 2.25, 2.75, 3.25.
    DensityGrid grid;
    grid.size = 3;
    grid.xOrigin = 1.0;
    grid.yOrigin = 2.0;
    grid.xStep = 2.0;
    grid.yStep = 0.5;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            grid.values.push_back(10.0 * row + column);
    const std::vector<double> x { 6.0, 2.0, 3.0, 5.0, -50.0, 50.0, 4.5 };
    const std::vector<double> y { 2.25, 3.25, 2.25, 3.0, -50.0, 50.0, 2.625 };
    const std::vector<double> v = interpolateGrid(grid, x, y);
    EXPECT_DOUBLE_EQ(v[0], 2.0);
    EXPECT_DOUBLE_EQ(v[1], 20.0);
    EXPECT_DOUBLE_EQ(v[2], 0.5); // halfway between x bins 0 and 1
    EXPECT_DOUBLE_EQ(v[3], 16.5); // (1.5, 1.5) in cell units: the mean of 11, 12, 21, 22
    EXPECT_DOUBLE_EQ(v[4], 0.0); // clamped to the first cell
    EXPECT_DOUBLE_EQ(v[5], 22.0); // clamped to the last cell
    EXPECT_DOUBLE_EQ(v[6], 1.25 + 7.5); // x bin 1.25, y bin 0.75
}

TEST(Density, ColorByKeysSelectTheMethod)
{
    EXPECT_EQ(densityMethodForColorBy("__density_hist__"), HistogramDensity);
    EXPECT_EQ(densityMethodForColorBy("__density_knn__"), NearestNeighbourDensity);
    EXPECT_EQ(densityMethodForColorBy("__density__"), KernelDensity);
    EXPECT_EQ(densityMethodForColorBy("__density_kde__"), KernelDensity);
    EXPECT_EQ(densityMethodForColorBy("deform"), -1);
    EXPECT_EQ(densityMethodForColorBy("x__density_hist__"), -1);
}

// Enough points that the counting passes run in blocks on the thread pool: the estimate of each
// point can't depend on where its block begins, so shuffling the points only shuffles the
// estimates (up to the rounding of the spread's sum, whose order changes).
TEST(Density, ManyPointsGiveTheSameEstimateInAnyOrder)
{
    const std::size_t n = 120000;
    std::vector<double> x(n), y(n);
    std::uint64_t state = 12345;
    const auto next = [&state] {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<double>(state >> 11) / 9007199254740992.0;
    };
    for (std::size_t i = 0; i < n; ++i) {
        // Two clusters of unequal size, so that the halves of the data differ.
        const double u = next();
        x[i] = (i % 3 == 0 ? 10.0 : 40.0) + 8.0 * (u + next() - 1.0);
        y[i] = (i % 3 == 0 ? 0.02 : 0.05) + 0.01 * (next() - 0.5);
    }
    std::vector<std::size_t> order(n);
    for (std::size_t i = 0; i < n; ++i)
        order[i] = (i * 7919) % n; // a permutation: 7919 is prime and doesn't divide n
    std::vector<double> px(n), py(n);
    for (std::size_t i = 0; i < n; ++i) {
        px[i] = x[order[i]];
        py[i] = y[order[i]];
    }
    KernelDensityFit fit;
    const std::vector<double> density = computeDensity(x, y, KernelDensity, &fit);
    const std::vector<double> shuffled = computeDensity(px, py, KernelDensity);
    ASSERT_EQ(fit.densities, density);
    EXPECT_EQ(fit.x, x);
    double largest = 0.0;
    for (const double d : density)
        largest = std::max(largest, d);
    ASSERT_GT(largest, 0.0);
    for (std::size_t i = 0; i < n; i += 7)
        ASSERT_NEAR(shuffled[i], density[order[i]], 1e-9 * largest) << i;
}
