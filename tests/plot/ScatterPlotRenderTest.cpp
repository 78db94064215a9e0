#include "plot/ColorMaps.h"
#include "plot/ScatterPlot.h"

#include <QImage>
#include <QTest>
#include <cstdlib>
#include <gtest/gtest.h>
#include <qwt_scale_widget.h>
#include <utility>

using namespace Tessaly;

namespace {

bool near(const QColor& a, const QColor& b, int tolerance)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance
        && std::abs(a.blue() - b.blue()) <= tolerance;
}

} // namespace

TEST(ScatterPlotRender, HighlightAndColouredPointsLandOnTheirPixels)
{
    ScatterPlot plot;
    plot.resize(640, 480);
    const std::vector<double> x { 1.3, 3.7, 6.3, 8.7 };
    const std::vector<double> y { 2.3, 7.7, 4.3, 8.3 };
    plot.setData(x, y, "x", "y", { 0.0, 1.0, 0.5, 0.25 }, "c");
    plot.setAxisScale(QwtPlot::xBottom, 0.0, 10.0);
    plot.setAxisScale(QwtPlot::yLeft, 0.0, 10.0);
    plot.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&plot));
    plot.replot();
    const auto pixel = [&](std::size_t i) {
        return QPointF(
            plot.canvasMap(QwtPlot::xBottom).transform(x[i]), plot.canvasMap(QwtPlot::yLeft).transform(y[i]))
            .toPoint();
    };

    plot.highlightPoint(1);
    QImage canvas = plot.canvas()->grab().toImage();
    EXPECT_EQ(canvas.pixelColor(pixel(1)), QColor(254, 204, 0));
    EXPECT_TRUE(near(canvas.pixelColor(pixel(0)), QColor(68, 1, 84), 2));
    EXPECT_TRUE(near(canvas.pixelColor(pixel(3)), QColor(59, 82, 139), 2));

    // Contour mode "Only": the points are gone, the highlight stays.
    plot.setDataVisible(false);
    canvas = plot.canvas()->grab().toImage();
    EXPECT_EQ(canvas.pixelColor(pixel(1)), QColor(254, 204, 0));
    EXPECT_EQ(canvas.pixelColor(pixel(0)), QColor(Qt::white));

    // Plain points in their translucent blue; every point is drawn, so one that is given twice
    // shows darker.
    plot.setDataVisible(true);
    plot.setData({ 1.3, 3.7, 3.7, 6.3, 8.7 }, { 2.3, 7.7, 7.7, 4.3, 8.3 }, "x", "y");
    plot.clearHighlight();
    canvas = plot.canvas()->grab().toImage();
    const QColor once = canvas.pixelColor(pixel(0));
    const QColor twice = canvas.pixelColor(pixel(1));
    EXPECT_LT(once.red(), 180);
    EXPECT_GT(once.blue(), once.red());
    EXPECT_LT(twice.red(), once.red() - 20);
}

TEST(ScatterPlotRender, ColourBarRunsFromTheMapsLowToItsHighColour)
{
    ScatterPlot plot;
    plot.resize(640, 480);
    plot.setData({ 1.0, 2.0, 3.0 }, { 1.0, 2.0, 3.0 }, "x", "y", { 10.0, 20.0, 30.0 }, "c");
    plot.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&plot));
    QwtScaleWidget* bar = plot.axisWidget(QwtPlot::yRight);
    ASSERT_TRUE(bar->isVisible());

    const auto ends = [&] {
        const QImage image = bar->grab().toImage();
        const QRect rect = bar->colorBarRect(bar->contentsRect()).toRect();
        EXPECT_GE(rect.height(), 50);
        return std::make_pair(image.pixelColor(rect.center().x(), rect.top() + 1),
            image.pixelColor(rect.center().x(), rect.bottom() - 1));
    };
    auto [top, bottom] = ends();
    EXPECT_TRUE(near(top, QColor(253, 231, 37), 8)) << top.name().toStdString();
    EXPECT_TRUE(near(bottom, QColor(68, 1, 84), 8)) << bottom.name().toStdString();

    plot.setColorMapIndex(GrayscaleMap);
    std::tie(top, bottom) = ends();
    EXPECT_TRUE(near(top, QColor(Qt::white), 8)) << top.name().toStdString();
    EXPECT_TRUE(near(bottom, QColor(Qt::black), 8)) << bottom.name().toStdString();
}
