#include "calc/Crosstalk.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace Tessaly;

namespace {

const double notANumber = std::numeric_limits<double>::quiet_NaN();

std::vector<std::vector<double>> compensated(
    const std::vector<std::vector<double>>& measured, const SquareMatrix& spillover)
{
    SquareMatrix inverse;
    EXPECT_TRUE(invertMatrix(spillover, inverse));
    std::vector<const std::vector<double>*> sources;
    for (const std::vector<double>& column : measured)
        sources.push_back(&column);
    const std::size_t events = measured.front().size();
    std::vector<std::vector<double>> outputs(measured.size(), std::vector<double>(events, -1.0));
    compensateEvents(sources, inverse, 0, events, outputs);
    return outputs;
}

} // namespace

TEST(Crosstalk, TrueValuesAreRecovered)
{
    // Channel i sees S(i, j) of dye j: true values (100, 200, 300) are measured as
    // (100 + 0.1 * 200, 0.2 * 100 + 200 + 0.1 * 300, 0.3 * 200 + 300) = (120, 250, 360).
    const SquareMatrix spillover = { { 1.0, 0.1, 0.0 }, { 0.2, 1.0, 0.1 }, { 0.0, 0.3, 1.0 } };
    const auto x = compensated({ { 120, 0 }, { 250, 0 }, { 360, 10 } }, spillover);
    EXPECT_NEAR(x[0][0], 100.0, 1e-9);
    EXPECT_NEAR(x[1][0], 200.0, 1e-9);
    EXPECT_NEAR(x[2][0], 300.0, 1e-9);
    // A dye seen only in channel 3 (0, 0, 10) is undone through channel 2's leak into channel 3:
    // x = S⁻¹ (0, 0, 10) = 10 * third column of S⁻¹. det S = 1 - 0.03 - 0.02 = 0.95, cofactors give
    // (0.01, -0.1, 0.98) / 0.95 for that column.
    EXPECT_NEAR(x[0][1], 0.1 / 0.95, 1e-12);
    EXPECT_NEAR(x[1][1], -1.0 / 0.95, 1e-12);
    EXPECT_NEAR(x[2][1], 9.8 / 0.95, 1e-12);
}

TEST(Crosstalk, IdentityAndMissingValues)
{
    const auto same = compensated({ { 1.5, -3.0 }, { 7.0, 0.0 } }, { { 1, 0 }, { 0, 1 } });
    EXPECT_EQ(same, (std::vector<std::vector<double>> { { 1.5, -3.0 }, { 7.0, 0.0 } }));

    // A NaN spreads to every channel of its event, and only of its event; a short column ends in NaN.
    const auto x = compensated({ { notANumber, 10.0, 20.0 }, { 5.0, 5.0 } }, { { 1, 0.5 }, { 0.2, 1 } });
    EXPECT_TRUE(std::isnan(x[0][0]) && std::isnan(x[1][0]));
    EXPECT_NEAR(x[0][1], (10.0 - 2.5) / 0.9, 1e-12);
    EXPECT_NEAR(x[1][1], (5.0 - 2.0) / 0.9, 1e-12);
    EXPECT_TRUE(std::isnan(x[0][2]) && std::isnan(x[1][2]));
}

TEST(Crosstalk, MatricesWithoutInverse)
{
    const SquareMatrix cases[] = {
        { { 1, 1 }, { 1, 1 } }, // two equal rows
        { { 1, 0.5, 0.2 }, { 0, 1, 0 }, { 1, 0.5, 0.2 } },
        { { 1, 2 }, { 0.5, 1 } }, // rows proportional
        { { 1, notANumber }, { 0, 1 } },
        { { 1, 0 }, { 0 } }, // not square
        {},
    };
    for (const SquareMatrix& matrix : cases) {
        SquareMatrix inverse = { { 42 } };
        EXPECT_FALSE(invertMatrix(matrix, inverse)) << matrix.size();
    }
}
