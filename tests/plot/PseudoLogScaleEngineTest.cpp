#include "plot/PseudoLogScaleEngine.h"

#include "support/MessageCapture.h"

#include <QList>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace Tessaly;
using Tessaly::Testing::MessageCapture;

namespace {

// Every axis of the program uses these parameters.
constexpr double axisThreshold = 100.0;
constexpr double axisLinearRange = 0.5;

QList<double> majorTicks(const QwtScaleDiv& div)
{
    return div.ticks(QwtScaleDiv::MajorTick);
}
QList<double> minorTicks(const QwtScaleDiv& div)
{
    return div.ticks(QwtScaleDiv::MinorTick);
}

} // namespace

// Tick lists are worked out by hand from the decade ladder: from v the next rung is
// 10^(floor(log10 v) + 1) for v > 0, -10^(floor(log10 -v) - 1) for v < 0 and 1 for v = 0, rounded;
// rungs with |n| >= 100 below the upper bound are ticks, and so is zero. The ladder starts at the
// bounds aligned to the step, which are ticks too until stripped to the interval.
TEST(PseudoLogScaleEngine, MajorTicksFollowTheDecadeLadder)
{
    struct Case
    {
        double x1, x2, step;
        QList<double> ticks;
    };
    const Case cases[] = {
        // 0 -> 1 -> 10 -> 100 -> 1000 -> 10000 (stop); 1 and 10 lie in the linear region.
        { 0.0, 5000.0, 1000.0, { 0.0, 100.0, 1000.0, 5000.0 } },
        // Without a step, 5000 / 8 = 625 rounds up to 1000: the same ticks.
        { 0.0, 5000.0, 0.0, { 0.0, 100.0, 1000.0, 5000.0 } },
        // Aligned to [0, 5000]; the aligned bounds lie outside [30, 4500] and are stripped.
        { 30.0, 4500.0, 1000.0, { 100.0, 1000.0 } },
        // -5000 -> -100 (the decade -1000 is skipped) -> -10 -> -1 -> -0.1, rounded to 0 -> 1 ...
        { -5000.0, 5000.0, 1000.0, { -5000.0, -100.0, 0.0, 100.0, 1000.0, 5000.0 } },
        // 10000 / 8 = 1250 rounds to the step 2000: the ladder runs from -6000 to 6000, stripped.
        { -5000.0, 5000.0, 0.0, { -100.0, 0.0, 100.0, 1000.0 } },
    };
    const PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    for (const Case& c : cases) {
        const QwtScaleDiv div = engine.divideScale(c.x1, c.x2, 8, 0, c.step);
        EXPECT_EQ(majorTicks(div), c.ticks) << c.x1 << " " << c.x2 << " " << c.step;
        EXPECT_EQ(div.lowerBound(), c.x1);
        EXPECT_EQ(div.upperBound(), c.x2);
        EXPECT_TRUE(minorTicks(div).isEmpty());
    }

    // Reversed bounds give the inverted division of the same ticks.
    const QwtScaleDiv reversed = engine.divideScale(5000.0, 0.0, 8, 0, -1000.0);
    EXPECT_EQ(reversed.lowerBound(), 5000.0);
    EXPECT_EQ(reversed.upperBound(), 0.0);
    QList<double> ticks = majorTicks(reversed);
    std::sort(ticks.begin(), ticks.end());
    EXPECT_EQ(ticks, (QList<double> { 0.0, 100.0, 1000.0, 5000.0 }));
}

TEST(PseudoLogScaleEngine, MinorTicksStepByTheDecadeOfTheMajorTickBefore)
{
    const PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    // Majors 0, 100, 1000, 5000. From 0 the increment is 100 / 10 = 10 (ten ticks up to 100), from
    // 100 it is 100 (up to 1000; 1100 passes the next major), from 1000 it is 1000 (up to 5000).
    const QwtScaleDiv positive = engine.divideScale(0.0, 5000.0, 8, 5, 1000.0);
    EXPECT_EQ(minorTicks(positive),
        (QList<double> { 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 200, 300, 400, 500, 600, 700, 800, 900,
            1000, 2000, 3000, 4000, 5000 }));
    EXPECT_TRUE(positive.ticks(QwtScaleDiv::MediumTick).isEmpty());

    // Majors -1000, -100, 0, 100, 1000. A negative major steps by the decade below its own:
    // -1000 by 100, -100 by 10.
    const QwtScaleDiv symmetric = engine.divideScale(-1000.0, 1000.0, 8, 5, 1000.0);
    EXPECT_EQ(majorTicks(symmetric), (QList<double> { -1000.0, -100.0, 0.0, 100.0, 1000.0 }));
    EXPECT_EQ(minorTicks(symmetric),
        (QList<double> { -900, -800, -700, -600, -500, -400, -300, -200, -100, -90, -80, -70, -60, -50, -40,
            -30, -20, -10, 0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 200, 300, 400, 500, 600, 700, 800, 900,
            1000 }));
}

TEST(PseudoLogScaleEngine, TicksNearZeroBecomeExactlyZero)
{
    const PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    // The ladder's zero comes from rounding -0.1, which gives -0; it must be labelled "0", not "-0".
    const QList<double> major = majorTicks(engine.divideScale(-5000.0, 5000.0, 8, 0, 1000.0));
    ASSERT_EQ(major.size(), 6);
    EXPECT_FALSE(std::signbit(major[2]));

    // Majors -1, 0, 1 with step 0.5. From -1 the minor increment is 10^(0 - 1) = 0.1; ten additions
    // of 0.1 to -1 end at -1.39e-16 (Python floats), within 0.5 * 1e-6 of zero.
    const QList<double> minor = minorTicks(engine.divideScale(-1.0, 1.0, 8, 5, 0.5));
    ASSERT_EQ(minor.size(), 10);
    EXPECT_NEAR(minor[8], -0.1, 1e-12);
    EXPECT_EQ(minor[9], 0.0);
    EXPECT_FALSE(std::signbit(minor[9]));
}

TEST(PseudoLogScaleEngine, AutoScaleWidensAlignsAndHonoursTheAttributes)
{
    struct Case
    {
        QwtScaleEngine::Attribute attribute;
        double reference, x1, x2, expectedX1, expectedX2, expectedStep;
    };
    const Case cases[] = {
        // 4470 / 8 = 558.75 rounds up to the step 1000; aligned outward.
        { QwtScaleEngine::NoAttribute, 0.0, 30.0, 4500.0, 0.0, 5000.0, 1000.0 },
        // Zero width: 1000 widened by half to [500, 1500], 1000 / 8 rounds to 200, aligned outward.
        { QwtScaleEngine::NoAttribute, 0.0, 1000.0, 1000.0, 400.0, 1600.0, 200.0 },
        // Zero widened by 0.5; 1 / 8 rounds to 0.2; aligned to ±3 * 0.2.
        { QwtScaleEngine::NoAttribute, 0.0, 0.0, 0.0, -0.6, 0.6, 0.2 },
        { QwtScaleEngine::Floating, 0.0, 30.0, 4500.0, 30.0, 4500.0, 1000.0 },
        // [-4500, 4500]: 9000 / 8 = 1125 rounds to 2000.
        { QwtScaleEngine::Symmetric, 0.0, 30.0, 4500.0, -6000.0, 6000.0, 2000.0 },
        // [-250, 4500]: 4750 / 8 = 593.75 rounds to 1000.
        { QwtScaleEngine::IncludeReference, -250.0, 30.0, 4500.0, -1000.0, 5000.0, 1000.0 },
        { QwtScaleEngine::Inverted, 0.0, 30.0, 4500.0, 5000.0, 0.0, -1000.0 },
    };
    for (const Case& c : cases) {
        PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
        engine.setAttribute(c.attribute);
        engine.setReference(c.reference);
        double x1 = c.x1;
        double x2 = c.x2;
        double step = 0.0;
        engine.autoScale(8, x1, x2, step);
        EXPECT_DOUBLE_EQ(x1, c.expectedX1) << c.attribute << " " << c.x1;
        EXPECT_DOUBLE_EQ(x2, c.expectedX2) << c.attribute << " " << c.x1;
        EXPECT_DOUBLE_EQ(step, c.expectedStep) << c.attribute << " " << c.x1;
    }

    // divideScale itself does not widen; after autoScale the ladder from 400 reaches 1000.
    const PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    EXPECT_TRUE(engine.divideScale(1000.0, 1000.0, 8, 5).isEmpty());
    EXPECT_EQ(majorTicks(engine.divideScale(400.0, 1600.0, 8, 0, 200.0)),
        (QList<double> { 400.0, 1000.0, 1600.0 }));
}

TEST(PseudoLogScaleEngine, OverflowingIntervalWarnsAndGivesAnEmptyDivision)
{
    const PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    MessageCapture capture;
    // 2e308 exceeds the largest double (about 1.8e308); 1.6e308 does not.
    const QwtScaleDiv div = engine.divideScale(-1e308, 1e308, 8, 5);
    EXPECT_TRUE(div.isEmpty());
    EXPECT_TRUE(majorTicks(div).isEmpty());
    EXPECT_TRUE(capture.contains(QtWarningMsg, "PseudoLogScaleEngine::divideScale: overflow"));

    capture.clear();
    EXPECT_FALSE(majorTicks(engine.divideScale(-8e307, 8e307, 8, 0)).isEmpty());
    EXPECT_TRUE(capture.messages().isEmpty());
}

TEST(PseudoLogScaleEngine, LadderWalkIsBoundedOnExtremeIntervals)
{
    // [-1e300, 1e300]: 2e300 / 8 rounds to the step 5e299, to which the bounds are aligned. The
    // ladder descends a decade a round from -1e299 and stops after a hundred rounds, at -1e200:
    // the two bounds and 100 rungs. The 94 rungs within 5e299 * 1e-6 of zero count as zero.
    const PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    const QList<double> ticks = majorTicks(engine.divideScale(-1e300, 1e300, 8, 0));
    ASSERT_EQ(ticks.size(), 102);
    for (int i = 0; i <= 6; ++i)
        EXPECT_NEAR(ticks[i] / -std::pow(10.0, 300 - i), 1.0, 1e-12) << i;
    EXPECT_EQ(std::count(ticks.begin(), ticks.end(), 0.0), 94);
}
