#include "core/ScaleModes.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

using namespace Tessaly;

// Density and contour code move columns into plot space with transformValues and take points back
// with untransformPoint; a point must come back to the value it was made from.
TEST(PseudoLogPlotSpace, UntransformPointUndoesTransformValuesForEveryMode)
{
    const std::vector<double> values { -1e6, -2500.0, -100.0, -37.5, 0.0, 12.0, 100.0, 999.0, 4.2e7 };
    // Log axes only take positive values back.
    const std::vector<double> positive { 1e-3, 0.5, 12.0, 999.0, 4.2e7 };

    for (const int mode : { 0, 1, 2, 7, -1 }) {
        const std::vector<double>& column = mode == 1 ? positive : values;
        const std::vector<double> plotted = transformValues(column, mode);
        ASSERT_EQ(plotted.size(), column.size());
        for (std::size_t i = 0; i < column.size(); ++i) {
            double x = plotted[i];
            double y = plotted[i];
            untransformPoint(x, y, mode, 0);
            EXPECT_NEAR(x, column[i], 1e-12 * std::max(1.0, std::fabs(column[i]))) << mode << " " << i;
            EXPECT_EQ(y, plotted[i]) << "mode 0 leaves the value alone";
        }
    }
}

TEST(PseudoLogPlotSpace, PlotSpaceValuesByMode)
{
    // By hand: log10 of 1000 is 3, of 0.01 is -2; pseudo-log (threshold 100, slope 0.005) of
    // 1000 is log10(1000) - 1.5 = 1.5, of -40 is -0.2.
    const std::vector<double> column { -3.0, 0.0, 1.0, 1000.0, 0.01, -40.0 };
    EXPECT_EQ(transformValues(column, 0), column);
    const std::vector<double> log = transformValues(column, 1);
    // Non-positive values land where 1 lands.
    EXPECT_EQ(log[0], 0.0);
    EXPECT_EQ(log[1], 0.0);
    EXPECT_EQ(log[2], 0.0);
    EXPECT_NEAR(log[3], 3.0, 1e-12);
    EXPECT_NEAR(log[4], -2.0, 1e-12);
    for (const int mode : { 2, 5 }) {
        const std::vector<double> pseudo = transformValues(column, mode);
        EXPECT_NEAR(pseudo[3], 1.5, 1e-12) << mode;
        EXPECT_NEAR(pseudo[5], -0.2, 1e-12) << mode;
        EXPECT_EQ(pseudo[1], 0.0) << mode;
    }

    // And back: 10^2 for a log axis, 10^(1.5 + 1.5) for a pseudo-log one.
    double x = 2.0;
    double y = 1.5;
    untransformPoint(x, y, 1, 3);
    EXPECT_NEAR(x, 100.0, 1e-12);
    EXPECT_NEAR(y, 1000.0, 1e-9);
}
