#include "plot/PseudoLogScaleEngine.h"

#include "support/MessageCapture.h"

#include <QList>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace Tessaly;
using Tessaly::Testing::MessageCapture;

namespace {

QList<double> majorTicks(const QwtScaleDiv& div)
{
    return div.ticks(QwtScaleDiv::MajorTick);
}
QList<double> minorTicks(const QwtScaleDiv& div)
{
    return div.ticks(QwtScaleDiv::MinorTick);
}

// Every axis of the program uses these parameters.
constexpr double axisThreshold = 100.0;
constexpr double axisLinearRange = 0.5;

} // namespace

// Tick lists below are worked out by hand from the decade ladder: from a lower bound v the next
// rung is 10^(floor(log10 v) + 1) for v > 0, -10^(floor(log10 -v) - 1) for v < 0 and 1 for v = 0,
// rounded; rungs with |n| >= 100 below the upper bound are ticks, and so is zero.

TEST(PseudoLogScaleEngine, PositiveIntervalShowsTheBoundsAndTheDecadesFromTheThreshold)
{
    const PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    // Ladder 0 -> 1 -> 10 -> 100 -> 1000 -> 10000 (stop): 1 and 10 lie inside the linear region.
    EXPECT_EQ(majorTicks(engine.divideScale(0.0, 5000.0, 8, 0, 1000.0)),
        (QList<double> { 0.0, 100.0, 1000.0, 5000.0 }));
    // Without a step, 5000 / 8 = 625 is rounded up to the step 1000: the same ticks.
    const QwtScaleDiv div = engine.divideScale(0.0, 5000.0, 8, 0);
    EXPECT_EQ(majorTicks(div), (QList<double> { 0.0, 100.0, 1000.0, 5000.0 }));
    EXPECT_EQ(div.lowerBound(), 0.0);
    EXPECT_EQ(div.upperBound(), 5000.0);
    EXPECT_TRUE(minorTicks(div).isEmpty());
    EXPECT_TRUE(div.ticks(QwtScaleDiv::MediumTick).isEmpty());
}

TEST(PseudoLogScaleEngine, TicksOutsideTheIntervalAreStripped)
{
    // [30, 4500] is aligned to [0, 5000] for the ladder, giving 0, 100, 1000, 5000; the aligned
    // bounds lie outside the interval and go, the interval itself stays the division's range.
    const QwtScaleDiv div
        = PseudoLogScaleEngine(axisThreshold, axisLinearRange).divideScale(30.0, 4500.0, 8, 0, 1000.0);
    EXPECT_EQ(majorTicks(div), (QList<double> { 100.0, 1000.0 }));
    EXPECT_EQ(div.lowerBound(), 30.0);
    EXPECT_EQ(div.upperBound(), 4500.0);
}

TEST(PseudoLogScaleEngine, SymmetricIntervalCrossesZeroOnTheLadder)
{
    const PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    // Step 1000 keeps the bounds: -5000 -> -100 (the decade -1000 is skipped) -> -10 -> -1 -> -0.1,
    // which rounds to zero -> 1 -> 10 -> 100 -> 1000 -> 10000 (stop).
    const QList<double> ticks = majorTicks(engine.divideScale(-5000.0, 5000.0, 8, 0, 1000.0));
    EXPECT_EQ(ticks, (QList<double> { -5000.0, -100.0, 0.0, 100.0, 1000.0, 5000.0 }));
    // The zero comes from rounding -0.1; it must be a plain zero, not -0, or it is labelled "-0".
    ASSERT_EQ(ticks.size(), 6);
    EXPECT_FALSE(std::signbit(ticks[2]));

    // With the default of 8 steps, 10000 / 8 = 1250 is rounded to the step 2000, the ladder runs
    // from -6000 to 6000, and its bounds are stripped.
    EXPECT_EQ(majorTicks(engine.divideScale(-5000.0, 5000.0, 8, 0)),
        (QList<double> { -100.0, 0.0, 100.0, 1000.0 }));
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

TEST(PseudoLogScaleEngine, TicksNearZeroAreSnappedToZero)
{
    // Majors -1, 0, 1 with step 0.5. From -1 the minor increment is 10^(0 - 1) = 0.1; ten additions
    // of 0.1 to -1 end at -1.39e-16 (computed with Python floats), not at 0. That is within
    // 0.5 * 1e-6 of zero and becomes exactly 0.
    const QwtScaleDiv div
        = PseudoLogScaleEngine(axisThreshold, axisLinearRange).divideScale(-1.0, 1.0, 8, 5, 0.5);
    EXPECT_EQ(majorTicks(div), (QList<double> { -1.0, 0.0, 1.0 }));
    const QList<double> minor = minorTicks(div);
    ASSERT_EQ(minor.size(), 10);
    EXPECT_NEAR(minor.front(), -0.9, 1e-12);
    EXPECT_NEAR(minor[8], -0.1, 1e-12);
    EXPECT_EQ(minor.back(), 0.0);
    EXPECT_FALSE(std::signbit(minor.back()));
    EXPECT_FALSE(std::signbit(majorTicks(div)[1]));
}

TEST(PseudoLogScaleEngine, ReversedBoundsGiveAnInvertedDivision)
{
    const QwtScaleDiv div
        = PseudoLogScaleEngine(axisThreshold, axisLinearRange).divideScale(5000.0, 0.0, 8, 0, -1000.0);
    EXPECT_EQ(div.lowerBound(), 5000.0);
    EXPECT_EQ(div.upperBound(), 0.0);
    QList<double> ticks = majorTicks(div);
    std::sort(ticks.begin(), ticks.end());
    EXPECT_EQ(ticks, (QList<double> { 0.0, 100.0, 1000.0, 5000.0 }));
}

TEST(PseudoLogScaleEngine, ZeroWidthIsWidenedByAutoScaleOnly)
{
    const PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    // divideScale has nothing to divide.
    const QwtScaleDiv empty = engine.divideScale(1000.0, 1000.0, 8, 5);
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_TRUE(majorTicks(empty).isEmpty());

    // autoScale widens 1000 by half its value to [500, 1500]; 1000 / 8 = 125 rounds to the step 200,
    // and the bounds are aligned outward to 400 and 1600. The ladder from 400 reaches 1000.
    double x1 = 1000.0;
    double x2 = 1000.0;
    double step = 0.0;
    engine.autoScale(8, x1, x2, step);
    EXPECT_DOUBLE_EQ(x1, 400.0);
    EXPECT_DOUBLE_EQ(x2, 1600.0);
    EXPECT_DOUBLE_EQ(step, 200.0);
    EXPECT_EQ(majorTicks(engine.divideScale(x1, x2, 8, 0, step)), (QList<double> { 400.0, 1000.0, 1600.0 }));

    // Zero is widened by 0.5 to [-0.5, 0.5]; 1 / 8 = 0.125 rounds to 0.2; aligned to ±3 * 0.2.
    x1 = x2 = 0.0;
    engine.autoScale(8, x1, x2, step);
    EXPECT_DOUBLE_EQ(x1, -0.6);
    EXPECT_DOUBLE_EQ(x2, 0.6);
    EXPECT_DOUBLE_EQ(step, 0.2);
    const QList<double> ticks = majorTicks(engine.divideScale(x1, x2, 8, 0, step));
    ASSERT_EQ(ticks.size(), 3);
    EXPECT_DOUBLE_EQ(ticks[0], -0.6);
    EXPECT_EQ(ticks[1], 0.0);
    EXPECT_DOUBLE_EQ(ticks[2], 0.6);
}

TEST(PseudoLogScaleEngine, AutoScaleAlignsToTheStepAndHonoursTheAttributes)
{
    // [30, 4500]: 4470 / 8 = 558.75 rounds up to the step 1000; aligned outward to [0, 5000].
    double x1 = 30.0;
    double x2 = 4500.0;
    double step = 0.0;
    PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    engine.autoScale(8, x1, x2, step);
    EXPECT_EQ(x1, 0.0);
    EXPECT_EQ(x2, 5000.0);
    EXPECT_EQ(step, 1000.0);

    // Floating keeps the bounds, here widened by the margins to [20, 4520].
    PseudoLogScaleEngine floating(axisThreshold, axisLinearRange);
    floating.setAttribute(QwtScaleEngine::Floating);
    floating.setMargins(10.0, 20.0);
    x1 = 30.0;
    x2 = 4500.0;
    floating.autoScale(8, x1, x2, step);
    EXPECT_EQ(x1, 20.0);
    EXPECT_EQ(x2, 4520.0);
    EXPECT_EQ(step, 1000.0);

    // Symmetric about 0: [-4500, 4500], 9000 / 8 = 1125 rounds to 2000, aligned to [-6000, 6000].
    PseudoLogScaleEngine symmetric(axisThreshold, axisLinearRange);
    symmetric.setAttribute(QwtScaleEngine::Symmetric);
    symmetric.setReference(0.0);
    x1 = 30.0;
    x2 = 4500.0;
    symmetric.autoScale(8, x1, x2, step);
    EXPECT_EQ(x1, -6000.0);
    EXPECT_EQ(x2, 6000.0);
    EXPECT_EQ(step, 2000.0);

    // Including -250: [-250, 4500], 4750 / 8 = 593.75 rounds to 1000, aligned to [-1000, 5000].
    PseudoLogScaleEngine including(axisThreshold, axisLinearRange);
    including.setAttribute(QwtScaleEngine::IncludeReference);
    including.setReference(-250.0);
    x1 = 30.0;
    x2 = 4500.0;
    including.autoScale(8, x1, x2, step);
    EXPECT_EQ(x1, -1000.0);
    EXPECT_EQ(x2, 5000.0);
    EXPECT_EQ(step, 1000.0);

    // Inverted swaps the aligned bounds and negates the step.
    PseudoLogScaleEngine inverted(axisThreshold, axisLinearRange);
    inverted.setAttribute(QwtScaleEngine::Inverted);
    x1 = 30.0;
    x2 = 4500.0;
    inverted.autoScale(8, x1, x2, step);
    EXPECT_EQ(x1, 5000.0);
    EXPECT_EQ(x2, 0.0);
    EXPECT_EQ(step, -1000.0);
}

TEST(PseudoLogScaleEngine, OverflowingIntervalWarnsAndGivesAnEmptyDivision)
{
    const PseudoLogScaleEngine engine(axisThreshold, axisLinearRange);
    MessageCapture capture;
    // 2e308 exceeds the largest double (about 1.8e308).
    const QwtScaleDiv div = engine.divideScale(-1e308, 1e308, 8, 5);
    EXPECT_TRUE(div.isEmpty());
    EXPECT_TRUE(majorTicks(div).isEmpty());
    EXPECT_TRUE(capture.contains(QtWarningMsg, QString::fromLatin1(pseudoLogOverflowWarning)));
    EXPECT_EQ(QString::fromLatin1(pseudoLogOverflowWarning),
        QStringLiteral("PseudoLogScaleEngine::divideScale: overflow"));

    // 1.6e308 still fits: no warning, and ticks.
    capture.clear();
    EXPECT_FALSE(majorTicks(engine.divideScale(-8e307, 8e307, 8, 0)).isEmpty());
    EXPECT_TRUE(capture.messages().isEmpty());
}

TEST(PseudoLogScaleEngine, LadderWalkIsBoundedOnExtremeIntervals)
{
    // [-1e300, 1e300]: 2e300 / 8 = 2.5e299 rounds to the step 5e299, to which the bounds are already
    // aligned. The ladder descends one decade a round from -1e299 and stops after a hundred rounds,
    // at -1e200: the bounds and 100 rungs. Rungs within 5e299 * 1e-6 = 5e293 of zero, from -1e293
    // on (94 of them), count as zero.
    const QList<double> ticks
        = majorTicks(PseudoLogScaleEngine(axisThreshold, axisLinearRange).divideScale(-1e300, 1e300, 8, 0));
    ASSERT_EQ(ticks.size(), 102);
    for (int i = 0; i <= 6; ++i)
        EXPECT_NEAR(ticks[i] / -std::pow(10.0, 300 - i), 1.0, 1e-12) << i;
    EXPECT_EQ(std::count(ticks.begin(), ticks.end(), 0.0), 94);
    EXPECT_EQ(ticks.back(), 1e300);
}
