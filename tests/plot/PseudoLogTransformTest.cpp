#include "plot/PseudoLogTransform.h"

#include "plot/PseudoLogScaleEngine.h"

#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <tuple>
#include <vector>

using namespace Tessaly;

// Reference values by hand: with threshold 100 and slope 0.005 the offset is
// 0.005 * 100 - log10(100) = -1.5, so |x| > 100 maps to ±(log10|x| - 1.5) and the linear piece
// 0.005 * x reaches ±0.5 at ±100.
TEST(PseudoLogTransform, DefaultsAreLinearToTheThresholdAndLogarithmicBeyond)
{
    const PseudoLogTransform t;
    EXPECT_EQ(t.linearThreshold(), 100.0);
    EXPECT_EQ(t.slope(), 0.005);

    struct Pair
    {
        double value;
        double transformed;
    };
    const std::vector<Pair> pairs { { 0.0, 0.0 }, { 100.0, 0.5 }, { -100.0, -0.5 }, { 1000.0, 1.5 },
        { -1000.0, -1.5 }, { 40.0, 0.2 }, { -60.0, -0.3 }, { 1e6, 4.5 }, { -1e5, -3.5 } };
    for (const Pair& p : pairs) {
        EXPECT_NEAR(t.transform(p.value), p.transformed, 1e-12) << p.value;
        EXPECT_NEAR(t.invTransform(p.transformed), p.value, 1e-12 * std::max(1.0, std::fabs(p.value)))
            << p.transformed;
    }
}

TEST(PseudoLogTransform, InverseUndoesTheTransformAndOrderIsKept)
{
    // Ascending: half decades from -1e7 to -100, the linear region, half decades from 100 to 1e7.
    // Every value comes back, and the transform rises strictly on both sides and across the joins.
    std::vector<double> values;
    for (int k = 14; k >= 4; --k)
        values.push_back(-std::pow(10.0, k / 2.0));
    for (double v = -90.0; v <= 90.0; v += 15.0)
        values.push_back(v);
    for (int k = 4; k <= 14; ++k)
        values.push_back(std::pow(10.0, k / 2.0));

    const PseudoLogTransform t;
    double previous = -HUGE_VAL;
    for (const double v : values) {
        const double y = t.transform(v);
        EXPECT_GT(y, previous) << v;
        previous = y;
        EXPECT_NEAR(t.invTransform(y), v, 1e-12 * std::max(1.0, std::fabs(v))) << v;
    }
}

TEST(PseudoLogTransform, OtherParametersCopyAndTheEnginesTransform)
{
    // Threshold 10 with slope 0.1: the offset is 1 - log10(10) = 0, so 1000 maps to 3 and 5 to 0.5.
    const PseudoLogTransform t(10.0, 0.1);
    EXPECT_NEAR(t.transform(1000.0), 3.0, 1e-12);
    EXPECT_NEAR(t.transform(-1000.0), -3.0, 1e-12);
    EXPECT_NEAR(t.transform(5.0), 0.5, 1e-12);
    EXPECT_NEAR(t.invTransform(2.0), 100.0, 1e-10);

    const std::unique_ptr<QwtTransform> copy(t.copy());
    const auto* same = dynamic_cast<const PseudoLogTransform*>(copy.get());
    ASSERT_NE(same, nullptr);
    EXPECT_NE(same, &t);
    EXPECT_EQ(same->linearThreshold(), 10.0);
    EXPECT_EQ(same->slope(), 0.1);

    // The engine's transform has the slope linearRange / linearThreshold: the axes' (100, 0.5) give
    // the default 0.005, and (10, 2) give 0.2.
    for (const auto& [threshold, range, slope] : { std::tuple { 100.0, 0.5, 0.005 }, { 10.0, 2.0, 0.2 } }) {
        const PseudoLogScaleEngine engine(threshold, range);
        EXPECT_EQ(engine.linearThreshold(), threshold);
        EXPECT_EQ(engine.linearRange(), range);
        const std::unique_ptr<QwtTransform> installed(engine.transformation());
        const auto* p = dynamic_cast<const PseudoLogTransform*>(installed.get());
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(p->linearThreshold(), threshold);
        EXPECT_DOUBLE_EQ(p->slope(), slope);
    }
}
