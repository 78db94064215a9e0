#include "core/ScaleModes.h"

#include "core/PolygonGeometry.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace Tessaly;

namespace {
const double kNaN = std::numeric_limits<double>::quiet_NaN();
}

TEST(ScaleModes, PseudoLogIsLinearInsideTheThresholdAndLogBeyond)
{
    // With threshold 100 and slope 0.005 the log pieces are log10(|x|) - 1.5.
    EXPECT_DOUBLE_EQ(pseudoLogTransform(0.0), 0.0);
    EXPECT_DOUBLE_EQ(pseudoLogTransform(100.0), 0.5);
    EXPECT_DOUBLE_EQ(pseudoLogTransform(-100.0), -0.5);
    EXPECT_DOUBLE_EQ(pseudoLogTransform(40.0), 0.2);
    EXPECT_DOUBLE_EQ(pseudoLogTransform(1000.0), 1.5);
    EXPECT_DOUBLE_EQ(pseudoLogTransform(-1000.0), -1.5);
    EXPECT_DOUBLE_EQ(pseudoLogTransform(1e6), 4.5);
    for (const double v : { 0.0, 40.0, -100.0, 100.0, 1000.0, -1000.0, 123456.0, -0.25 })
        EXPECT_NEAR(pseudoLogInverse(pseudoLogTransform(v)), v, 1e-9 * std::max(1.0, std::fabs(v))) << v;
    // Other parameters: threshold 10, slope 0.1 meet at 1.0; 1000 is log10(1000) + 1 - 1 = 3.
    EXPECT_DOUBLE_EQ(pseudoLogTransform(1000.0, 10.0, 0.1), 3.0);
}

TEST(ScaleModes, ScaleValueUsesTheNaturalLogAndPutsNonPositiveValuesAtZero)
{
    EXPECT_DOUBLE_EQ(scaleValue(std::exp(2.0), LogScale), 2.0);
    EXPECT_EQ(scaleValue(0.0, LogScale), 0.0);
    EXPECT_EQ(scaleValue(-3.0, LogScale), 0.0);
    EXPECT_EQ(scaleValue(kNaN, LogScale), 0.0);
    EXPECT_DOUBLE_EQ(scaleValue(1000.0, PseudoLogScale), 1.5);
    EXPECT_EQ(scaleValue(-7.5, LinearScale), -7.5);
    EXPECT_EQ(scaleValue(1000.0, 5), 1000.0);
    EXPECT_TRUE(std::isnan(scaleValue(kNaN, LinearScale)));
}

TEST(ScaleModes, TransformValuesUsesBaseTenAndAnyOtherModeIsPseudoLog)
{
    const std::vector<double> v { 1000.0, 0.01, 0.0, -3.0 };
    EXPECT_EQ(transformValues(v, LinearScale), v);
    const std::vector<double> log = transformValues(v, LogScale);
    EXPECT_DOUBLE_EQ(log[0], 3.0);
    EXPECT_DOUBLE_EQ(log[1], -2.0);
    EXPECT_EQ(log[2], 0.0);
    EXPECT_EQ(log[3], 0.0);
    for (const int mode : { 2, 3, -1 }) {
        const std::vector<double> pseudo = transformValues(v, mode);
        EXPECT_DOUBLE_EQ(pseudo[0], 1.5) << mode;
        EXPECT_DOUBLE_EQ(pseudo[3], -0.015) << mode;
    }
}

TEST(ScaleModes, UntransformPointInvertsEachAxisByItsMode)
{
    double x = 2.0;
    double y = 1.5;
    untransformPoint(x, y, LogScale, PseudoLogScale);
    EXPECT_DOUBLE_EQ(x, 100.0);
    EXPECT_DOUBLE_EQ(y, 1000.0);
    x = -0.25;
    y = -2.0;
    untransformPoint(x, y, PseudoLogScale, LinearScale);
    EXPECT_DOUBLE_EQ(x, -50.0);
    EXPECT_EQ(y, -2.0);
}

TEST(PolygonGeometry, EvenOddTestOnConvexAndConcaveShapes)
{
    EXPECT_FALSE(pointInPolygon(0.0, 0.0, {}));
    // A "U": the notch between x = 1 and 3 above y = 1 is outside.
    const std::vector<PlanePoint> u { { 0, 0 }, { 4, 0 }, { 4, 3 }, { 3, 3 }, { 3, 1 }, { 1, 1 }, { 1, 3 },
        { 0, 3 } };
    EXPECT_TRUE(pointInPolygon(0.5, 2.0, u));
    EXPECT_TRUE(pointInPolygon(3.5, 2.0, u));
    EXPECT_TRUE(pointInPolygon(2.0, 0.5, u));
    EXPECT_FALSE(pointInPolygon(2.0, 2.0, u));
    EXPECT_FALSE(pointInPolygon(5.0, 2.0, u));
    EXPECT_FALSE(pointInPolygon(-1.0, 0.5, u));
    // The winding direction does not matter.
    const std::vector<PlanePoint> reversed(u.rbegin(), u.rend());
    EXPECT_TRUE(pointInPolygon(0.5, 2.0, reversed));
    EXPECT_FALSE(pointInPolygon(2.0, 2.0, reversed));
    // NaN crosses nothing.
    EXPECT_FALSE(pointInPolygon(kNaN, 0.5, u));
    EXPECT_FALSE(pointInPolygon(2.0, kNaN, u));
    // A self-intersecting bow tie: both lobes are inside, its crossing point's neighbourhood above
    // and below is outside.
    const std::vector<PlanePoint> bowTie { { 0, 0 }, { 4, 4 }, { 4, 0 }, { 0, 4 } };
    EXPECT_TRUE(pointInPolygon(0.5, 2.0, bowTie));
    EXPECT_TRUE(pointInPolygon(3.5, 2.0, bowTie));
    EXPECT_FALSE(pointInPolygon(2.0, 0.5, bowTie));
}
