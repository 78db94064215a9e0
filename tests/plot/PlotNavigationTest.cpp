#include "plot/PlotNavigation.h"

#include <cmath>
#include <gtest/gtest.h>
#include <qwt_scale_map.h>
#include <qwt_transform.h>

using namespace Tessaly;

TEST(PlotNavigation, APressAndReleaseAreADragOnlyWhenOverFivePixelsBothWays)
{
    struct Case
    {
        QPoint release;
        bool drag;
        bool bandShown;
    };
    const QPoint press(100, 100);
    const Case cases[] = {
        { QPoint(100, 100), false, false },
        { QPoint(105, 105), false, false },
        { QPoint(106, 106), true, true },
        { QPoint(94, 94), true, true },
        { QPoint(106, 105), false, true },
        { QPoint(100, 200), false, true },
        { QPoint(95, 106), false, true },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.release.x() << ", " << c.release.y());
        EXPECT_EQ(isRubberBandDrag(press, c.release), c.drag);
        EXPECT_EQ(isRubberBandVisible(rubberBandRect(press, c.release)), c.bandShown);
    }
    // The band runs from the smaller to the larger coordinates, whichever way the mouse went.
    const QRect band = rubberBandRect(QPoint(50, 80), QPoint(20, 10));
    EXPECT_EQ(band.topLeft(), QPoint(20, 10));
    EXPECT_EQ(band.bottomRight(), QPoint(50, 80));
}

TEST(PlotNavigation, WheelZoomKeepsTheValueUnderTheMouse)
{
    EXPECT_EQ(wheelZoomFactor(120), 0.8);
    EXPECT_EQ(wheelZoomFactor(-120), 1.25);
    EXPECT_EQ(wheelZoomFactor(0), 1.25);

    struct Case
    {
        AxisRange range;
        double centre;
        double factor;
        AxisRange expected;
    };
    const Case cases[] = {
        { { 0.0, 10.0 }, 5.0, 0.8, { 1.0, 9.0 } },
        { { 0.0, 10.0 }, 0.0, 1.25, { 0.0, 12.5 } },
        { { 0.0, 10.0 }, 2.0, 0.8, { 0.4, 8.4 } },
        { { -4.0, 4.0 }, 4.0, 1.25, { -6.0, 4.0 } },
        // A centre outside the range: the whole range moves towards it on zooming in.
        { { 0.0, 10.0 }, 20.0, 0.8, { 4.0, 12.0 } },
    };
    for (const Case& c : cases) {
        const AxisRange zoomed = zoomedAbout(c.range, c.centre, c.factor);
        EXPECT_DOUBLE_EQ(zoomed.lower, c.expected.lower);
        EXPECT_DOUBLE_EQ(zoomed.upper, c.expected.upper);
    }
}

TEST(PlotNavigation, PanningShiftsByTheValuesUnderThePixels)
{
    QwtScaleMap linear;
    linear.setPaintInterval(0.0, 600.0);
    linear.setScaleInterval(0.0, 1000.0);
    // Moving right by 60 pixels brings the values 100 lower into view.
    EXPECT_DOUBLE_EQ(panShift(linear, 60.0), -100.0);
    const AxisRange moved = shiftedBy({ 0.0, 1000.0 }, panShift(linear, 60.0));
    EXPECT_DOUBLE_EQ(moved.lower, -100.0);
    EXPECT_DOUBLE_EQ(moved.upper, 900.0);

    // A vertical axis runs from the bottom up: moving down by 40 pixels shows higher values.
    QwtScaleMap vertical;
    vertical.setPaintInterval(400.0, 0.0);
    vertical.setScaleInterval(0.0, 10.0);
    EXPECT_DOUBLE_EQ(panShift(vertical, 40.0), 1.0);

    // On a log axis the shift is that of the values at pixel 0 and at the pixel moved to.
    QwtScaleMap log;
    log.setTransformation(new QwtLogTransform);
    log.setPaintInterval(0.0, 400.0);
    log.setScaleInterval(1.0, 10000.0);
    EXPECT_NEAR(panShift(log, 100.0), 1.0 - 10.0, 1e-9);
}

TEST(PlotNavigation, ALogAxisNeedsPositiveFiniteBounds)
{
    EXPECT_TRUE(fitsLogAxis({ 1e-3, 1e6 }));
    EXPECT_FALSE(fitsLogAxis({ 0.0, 10.0 }));
    EXPECT_FALSE(fitsLogAxis({ -2.0, 10.0 }));
    EXPECT_FALSE(fitsLogAxis({ 1.0, std::nan("") }));
    EXPECT_FALSE(fitsLogAxis({ 1.0, HUGE_VAL }));
}
