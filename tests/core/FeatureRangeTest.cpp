#include "core/FeatureRange.h"

#include <gtest/gtest.h>
#include <limits>

using namespace Tessaly;

namespace {
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();
} // namespace

TEST(FeatureRange, OnlyFiniteValuesCount)
{
    EXPECT_EQ(finiteRange({ nan, 3.0, -inf, -2.5, 7.25, inf, nan }), std::make_pair(-2.5, 7.25));
    // The first finite value may be the largest or the smallest.
    EXPECT_EQ(finiteRange({ 9.0, 1.0, 5.0 }), std::make_pair(1.0, 9.0));
    EXPECT_EQ(finiteRange({ 4.0 }), std::make_pair(4.0, 4.0));
    EXPECT_FALSE(finiteRange({}).has_value());
    EXPECT_FALSE(finiteRange({ nan, inf, -inf }).has_value());
}

TEST(FeatureRange, DecimalsAndStepFollowTheWidth)
{
    const struct
    {
        double width;
        int decimals;
        double step;
    } cases[] = {
        { 0.0, 6, 0.01 }, // a constant feature
        { 0.05, 6, 0.0005 },
        { 0.0999, 6, 0.000999 },
        { 0.1, 4, 0.001 },
        { 0.99, 4, 0.0099 },
        { 1.0, 2, 0.01 },
        { 99.5, 2, 0.995 },
        { 100.0, 1, 1.0 },
        { 25000.0, 1, 250.0 },
    };
    for (const auto& c : cases) {
        EXPECT_EQ(rangeDecimals(c.width), c.decimals) << c.width;
        EXPECT_DOUBLE_EQ(rangeStep(c.width), c.step) << c.width;
    }
}
