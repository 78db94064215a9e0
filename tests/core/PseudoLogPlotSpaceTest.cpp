#include "core/ScaleModes.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

using namespace Tessaly;

// Density and contour code move columns into plot space with transformValues and take points back
// with untransformPoint; a point must come back to the value it was made from. Modes other than 0
// and 1 are pseudo-log both ways.
TEST(PseudoLogPlotSpace, UntransformPointUndoesTransformValuesForEveryMode)
{
    const std::vector<double> values { -1e6, -2500.0, -100.0, -37.5, 0.0, 12.0, 100.0, 999.0, 4.2e7 };
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

    // By hand: on a log axis non-positive values land where 1 lands (log10 1 = 0), and 1000 at 3;
    // on a pseudo-log axis 1000 lies at log10(1000) - 1.5 = 1.5 and -40 at 0.005 * -40 = -0.2.
    EXPECT_EQ(transformValues({ -3.0, 0.0, 1.0 }, 1), (std::vector<double> { 0.0, 0.0, 0.0 }));
    EXPECT_NEAR(transformValues({ 1000.0 }, 1)[0], 3.0, 1e-12);
    const std::vector<double> pseudo = transformValues({ 1000.0, -40.0 }, 2);
    EXPECT_NEAR(pseudo[0], 1.5, 1e-12);
    EXPECT_NEAR(pseudo[1], -0.2, 1e-12);
}
