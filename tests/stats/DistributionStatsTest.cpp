#include "stats/DistributionStats.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

void expectStats(const DistributionStats& actual, const DistributionStats& expected, double tolerance)
{
    EXPECT_NEAR(actual.mean, expected.mean, tolerance);
    EXPECT_NEAR(actual.sd, expected.sd, tolerance);
    EXPECT_NEAR(actual.q1, expected.q1, tolerance);
    EXPECT_NEAR(actual.median, expected.median, tolerance);
    EXPECT_NEAR(actual.q3, expected.q3, tolerance);
    EXPECT_NEAR(actual.iqr, expected.iqr, tolerance);
}

} // namespace

TEST(DistributionStats, NoOneAndTwoValues)
{
    expectStats(computeDistributionStats({}), { 0, 0, 0, 0, 0, 0 }, 0.0);

    // One value: no spread, every quantile is the value.
    expectStats(computeDistributionStats({ 3.5 }), { 3.5, 0.0, 3.5, 3.5, 3.5, 0.0 }, 0.0);

    // By hand: mean 1.5, SD sqrt((0.25 + 0.25) / 1) = 0.7071068, quantile q at rank q of [0, 1].
    // Given in falling order, so that the quantiles need the sort.
    expectStats(computeDistributionStats({ 2.0, 1.0 }), { 1.5, std::sqrt(0.5), 1.25, 1.5, 1.75, 0.5 }, 1e-15);
}

TEST(DistributionStats, AgreesWithNumpyOnMeasuredAreas)
{
    // Reference: numpy 1.24 np.mean, np.std(ddof=1) and np.quantile(method='linear'), whose
    // interpolation at rank q * (n - 1) is this definition. n - 1 = 13, so no quartile is a rank.
    const std::vector<double> area { 88.4, 132.7, 57.25, 210.0, 101.3, 95.6, 143.9, 77.05, 66.8, 118.2,
        250.45, 91.0, 104.75, 84.15 };
    expectStats(computeDistributionStats(area),
        { 115.82500000000002, 54.43684679021681, 85.2125, 98.45, 129.075, 43.8625 }, 1e-10);

    // Same definition where (n - 1) / 4 is whole: ranks 2, 4 and 6 of the sorted nine.
    const std::vector<double> nine { 9, 1, 8, 2, 7, 3, 6, 4, 5 };
    const DistributionStats s = computeDistributionStats(nine);
    EXPECT_EQ(s.q1, 3.0);
    EXPECT_EQ(s.median, 5.0);
    EXPECT_EQ(s.q3, 7.0);
    // By hand: squared deviations 2 * (16 + 9 + 4 + 1) = 60, / 8 = 7.5.
    EXPECT_NEAR(s.sd, std::sqrt(7.5), 1e-15);
}

TEST(DistributionStats, SpreadOfLargeValuesWithSmallDifferences)
{
    // A sum of squares minus the squared sum would lose every digit here. Reference: numpy
    // np.std([1e9+1, 1e9+4, 1e9+2, 1e9+3], ddof=1) = 1.2909944487358056 (= sqrt(5/3)).
    const DistributionStats s = computeDistributionStats({ 1e9 + 1, 1e9 + 4, 1e9 + 2, 1e9 + 3 });
    EXPECT_NEAR(s.sd, 1.2909944487358056, 1e-9);
    EXPECT_EQ(s.mean, 1e9 + 2.5);
    EXPECT_NEAR(s.iqr, 1.5, 1e-6);
}
