#include "plot/HighlightSymbol.h"
#include "plot/ScatterPlot.h"

#include <QImage>
#include <QTest>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <qwt_plot_canvas.h>
#include <qwt_scale_div.h>
#include <vector>

using namespace Tessaly;

namespace {

struct Bounds
{
    double low;
    double high;
};

Bounds boundsOf(const ScatterPlot& plot, int axis)
{
    const QwtScaleDiv& div = plot.axisScaleDiv(axis);
    return { std::min(div.lowerBound(), div.upperBound()), std::max(div.lowerBound(), div.upperBound()) };
}

// 3,000 values spread over 10 to 1,000 in equal steps of the logarithm, of which every 60th is 0:
// 50 zeros, as a column with empty measurements has them.
std::vector<double> positivesWithZeros()
{
    std::vector<double> values(3000);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = i % 60 == 0 ? 0.0 : std::pow(10.0, 1.0 + 2.0 * static_cast<double>(i % 97) / 96.0);
    return values;
}

} // namespace

TEST(ScatterPlotAxes, LogAxisScalesToThePositiveValuesOnly)
{
    ScatterPlot plot;
    plot.resize(600, 400);
    const std::vector<double> x = positivesWithZeros();
    std::vector<double> y(x.size());
    for (std::size_t i = 0; i < y.size(); ++i)
        y[i] = static_cast<double>(i % 50) - 10.0; // -10 to 39: negatives, zeros and positives
    plot.setAxisScaleMode(QwtPlot::xBottom, 1);
    plot.setData(x, y, "x", "y");
    plot.replot();

    // The positive values span 10 to 1,000: the axis stays within a decade of them, instead of
    // reaching down to the library's limit for the zeros.
    const Bounds logX = boundsOf(plot, QwtPlot::xBottom);
    EXPECT_GE(logX.low, 1.0);
    EXPECT_LE(logX.low, 10.0);
    EXPECT_GE(logX.high, 1000.0);
    EXPECT_LE(logX.high, 10000.0);
    // A linear axis still shows every value, negatives included.
    const Bounds linearY = boundsOf(plot, QwtPlot::yLeft);
    EXPECT_LE(linearY.low, -10.0);
    EXPECT_GE(linearY.high, 39.0);

    // The same column on a log axis: 1 to 39 are the drawable values.
    plot.setAxisScaleMode(QwtPlot::yLeft, 1);
    plot.replot();
    const Bounds logY = boundsOf(plot, QwtPlot::yLeft);
    EXPECT_GE(logY.low, 0.1);
    EXPECT_LE(logY.low, 1.0);
    EXPECT_GE(logY.high, 39.0);
    EXPECT_LE(logY.high, 1000.0);

    // Back to linear, the zeros and negatives count again.
    plot.setAxisScaleMode(QwtPlot::yLeft, 0);
    plot.replot();
    EXPECT_LE(boundsOf(plot, QwtPlot::yLeft).low, -10.0);

    // Nothing drawable on a log axis: the plot keeps a valid positive range and doesn't fail.
    plot.setAxisScaleMode(QwtPlot::yLeft, 1);
    plot.setData({ 1.0, 2.0 }, { 0.0, -3.0 }, "x", "y");
    plot.replot();
    const Bounds none = boundsOf(plot, QwtPlot::yLeft);
    EXPECT_GT(none.low, 0.0);
    EXPECT_TRUE(std::isfinite(none.high));
    EXPECT_GT(none.high, none.low);
}

TEST(ScatterPlotAxes, AnEmptiedPlotShowsNothingOfTheLastOne)
{
    ScatterPlot plot;
    plot.resize(600, 400);
    plot.setData({ 120.0, 480.0, 300.0 }, { 0.02, 0.09, 0.05 }, "Area [µm²]", "Deformation",
        { 1.0, 2.0, 3.0 }, "Brightness");
    plot.replot();
    ASSERT_GE(boundsOf(plot, QwtPlot::xBottom).high, 480.0);

    plot.clearData();
    EXPECT_TRUE(plot.axisTitle(QwtPlot::xBottom).text().isEmpty());
    EXPECT_TRUE(plot.axisTitle(QwtPlot::yLeft).text().isEmpty());
    EXPECT_TRUE(plot.axisTitle(QwtPlot::yRight).text().isEmpty());
    const Bounds x = boundsOf(plot, QwtPlot::xBottom);
    EXPECT_EQ(x.low, 0.0);
    EXPECT_EQ(x.high, 1.0);
    EXPECT_LE(boundsOf(plot, QwtPlot::yLeft).high, 1.0);

    // An empty log axis gets a range that a log axis can show.
    plot.setAxisScaleMode(QwtPlot::yLeft, 1);
    plot.clearData();
    const Bounds logY = boundsOf(plot, QwtPlot::yLeft);
    EXPECT_EQ(logY.low, 1.0);
    EXPECT_EQ(logY.high, 10.0);

    // New data scales the axes again.
    plot.setAxisScaleMode(QwtPlot::yLeft, 0);
    plot.setData({ 50.0, 70.0 }, { 5.0, 8.0 }, "a", "b");
    plot.replot();
    EXPECT_GE(boundsOf(plot, QwtPlot::yLeft).high, 8.0);
    EXPECT_EQ(plot.axisTitle(QwtPlot::xBottom).text(), "a");
}

// On the bright end of a colour map a yellow mark among yellow points would vanish; its dark ring
// must stand out there.
TEST(ScatterPlotAxes, SelectionStandsOutAmongBrightPoints)
{
    ScatterPlot plot;
    plot.resize(500, 400);
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> color;
    // A dense block of points at the top of the colour range around (5, 5), one dark point far off.
    for (int i = 0; i <= 40; ++i) {
        for (int j = 0; j <= 40; ++j) {
            x.push_back(4.0 + i * 0.05);
            y.push_back(4.0 + j * 0.05);
            color.push_back(1.0);
        }
    }
    x.push_back(0.0);
    y.push_back(0.0);
    color.push_back(0.0);
    plot.setData(x, y, "x", "y", color, "c");
    plot.setAxisScale(QwtPlot::xBottom, 0.0, 10.0);
    plot.setAxisScale(QwtPlot::yLeft, 0.0, 10.0);
    plot.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&plot));
    const int selected = 20 * 41 + 20; // the point at (5, 5)
    plot.highlightPoint(selected);
    const QImage canvas = plot.canvas()->grab().toImage();
    const QPoint centre = QPointF(
        plot.canvasMap(QwtPlot::xBottom).transform(5.0), plot.canvasMap(QwtPlot::yLeft).transform(5.0))
                              .toPoint();

    const auto brightness = [&](QPoint p) {
        const QColor c = canvas.pixelColor(p);
        return c.red() + c.green() + c.blue();
    };
    // The surroundings are the map's bright yellow, the mark's centre its own yellow.
    EXPECT_GT(brightness(centre + QPoint(40, 0)), 450);
    EXPECT_EQ(canvas.pixelColor(centre), QColor(254, 204, 0));
    // Between the yellow dot and the bright points, in all four directions, a dark ring.
    const int rim = HighlightSymbol::rimDiameter / 2;
    for (const QPoint direction : { QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1) }) {
        int darkest = 3 * 255;
        for (int r = 6; r <= rim; ++r)
            darkest = std::min(darkest, brightness(centre + direction * r));
        EXPECT_LT(darkest, 200) << direction.x() << "," << direction.y();
    }
}
