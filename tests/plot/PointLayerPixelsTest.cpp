// The scatter plot's fast point drawing against the straightforward drawing it replaces: the same
// plot is rendered once with each and the images must agree to the bit.
#include "plot/ColorMaps.h"
#include "plot/PlainPointsCurve.h"
#include "plot/RoundDotLayer.h"
#include "plot/RoundSpectroCurve.h"

#include <QImage>
#include <QPainter>
#include <QPicture>
#include <QTest>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <qwt_color_map.h>
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_renderer.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_map.h>
#include <qwt_symbol.h>
#include <random>

using namespace Tessaly;

namespace {

// The coloured points as they were drawn before tiles: one dot after another onto the layer.
class DotByDotCurve : public QwtPlotSpectroCurve
{
public:
    explicit DotByDotCurve(const QVector<QwtPoint3D>& samples)
        : points(samples)
    {
        setSamples(samples);
    }

protected:
    void drawDots(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
        const QRectF& canvasRect, int from, int to) const override
    {
        RoundDotLayer layer(painter, canvasRect, penWidth());
        if (!layer.isActive()) {
            ADD_FAILURE() << "the reference draws on raster devices only";
            return;
        }
        for (int i = from; i <= to; ++i) {
            const QwtPoint3D& p = points[i];
            layer.addDot(xMap.transform(p.x()), yMap.transform(p.y()), colorMap()->rgb(colorRange(), p.z()));
        }
        layer.finish();
    }

private:
    QVector<QwtPoint3D> points;
};

struct Case
{
    const char* name;
    int count;
    // The visible part of the data, which spans [0, 100] on both axes.
    double xLow, xHigh, yLow, yHigh;
    bool logAxes;
    // Share of points that are not finite or, on log axes, at or below zero.
    double badShare;
};

// Two crowded populations, many points on top of each other, some beyond every edge.
struct Points
{
    QVector<QPointF> xy;
    QVector<QwtPoint3D> xyz;
    // The points that have a place on the canvas. The library rounds a position that is not a
    // number to an arbitrary pixel and draws a stray symbol there; the plot draws nothing.
    QVector<QPointF> placed;
};

Points pointsFor(const Case& c)
{
    std::mt19937 rng(11);
    std::normal_distribution<double> spread(0.0, 6.0);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    Points points;
    for (int i = 0; i < c.count; ++i) {
        const bool second = unit(rng) < 0.4;
        double x = (second ? 70.0 : 30.0) + spread(rng) * (second ? 1.5 : 1.0);
        double y = (second ? 60.0 : 35.0) + spread(rng);
        if (unit(rng) < 0.05) { // a thin spread over and beyond the whole range
            x = -20.0 + 140.0 * unit(rng);
            y = -20.0 + 140.0 * unit(rng);
        }
        if (unit(rng) < c.badShare) {
            const double bad
                = c.logAxes ? (unit(rng) < 0.5 ? 0.0 : -3.0) : std::numeric_limits<double>::quiet_NaN();
            (unit(rng) < 0.5 ? x : y) = bad;
        }
        points.xy.append(QPointF(x, y));
        if (!std::isnan(x) && !std::isnan(y) && !(c.logAxes && (x < 0.0 || y < 0.0)))
            points.placed.append(QPointF(x, y));
        points.xyz.append(QwtPoint3D(x, y, unit(rng) * unit(rng)));
    }
    return points;
}

void setUpPlot(QwtPlot& plot, const Case& c)
{
    plot.setCanvasBackground(Qt::white);
    plot.resize(500, 380);
    for (const int axis : { int(QwtPlot::xBottom), int(QwtPlot::yLeft) }) {
        if (c.logAxes)
            plot.setAxisScaleEngine(axis, new QwtLogScaleEngine(10));
    }
    plot.setAxisScale(QwtPlot::xBottom, c.xLow, c.xHigh);
    plot.setAxisScale(QwtPlot::yLeft, c.yLow, c.yHigh);
}

QImage render(QwtPlot& plot, QImage::Format format)
{
    QImage image(500, 380, format);
    image.fill(Qt::white);
    QwtPlotRenderer().renderTo(&plot, image);
    return image;
}

// The number of pixels that differ in their stored bits, with a note on the first one.
int differences(const QImage& expected, const QImage& actual, std::string& first)
{
    if (expected.size() != actual.size() || expected.format() != actual.format() || expected.depth() != 32)
        return -1;
    int count = 0;
    for (int y = 0; y < expected.height(); ++y) {
        const auto* e = reinterpret_cast<const QRgb*>(expected.constScanLine(y));
        const auto* a = reinterpret_cast<const QRgb*>(actual.constScanLine(y));
        for (int x = 0; x < expected.width(); ++x) {
            if (e[x] != a[x] && count++ == 0)
                first = QString::asprintf("(%d, %d): %08x, expected %08x", x, y, a[x], e[x]).toStdString();
        }
    }
    return count;
}

// The plain points' symbol, as the scatter plot sets it up.
QwtSymbol* plainSymbol()
{
    QColor fill(0, 68, 108);
    fill.setAlpha(100);
    return new QwtSymbol(QwtSymbol::Ellipse, QBrush(fill),
        QPen(QBrush(QColor(0, 68, 108)), 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin), QSize(6, 6));
}

template <class Curve> Curve* plainCurve(const QVector<QPointF>& points)
{
    auto* curve = new Curve;
    curve->setStyle(QwtPlotCurve::NoCurve);
    curve->setPaintAttribute(QwtPlotCurve::FilterPoints, false);
    curve->setRenderHint(QwtPlotItem::RenderAntialiased, true);
    curve->setSymbol(plainSymbol());
    curve->setSamples(points);
    return curve;
}

const Case cases[] = {
    { "whole range", 20000, -10, 110, -10, 110, false, 0.0 },
    { "zoomed into the crowd", 20000, 20, 45, 25, 45, false, 0.0 },
    { "zoomed out", 12000, -300, 400, -250, 350, false, 0.0 },
    { "not finite points", 12000, -10, 110, -10, 110, false, 0.05 },
    { "log axes, values at and below zero", 12000, 1, 150, 1, 150, true, 0.05 },
    { "a few points", 30, -10, 110, -10, 110, false, 0.0 },
};

} // namespace

TEST(PointLayerPixels, ColouredDotsMatchDrawingThemOneByOne)
{
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Points points = pointsFor(c);
        // Dots narrower than the groups of pixels blended at once, as wide as they, and wider.
        for (const auto& [format, diameter] :
            { std::pair { QImage::Format_RGB32, 6.0 }, std::pair { QImage::Format_ARGB32_Premultiplied, 6.0 },
                std::pair { QImage::Format_ARGB32_Premultiplied, 3.5 },
                std::pair { QImage::Format_RGB32, 11.0 }, std::pair { QImage::Format_RGB32, 27.0 } }) {
            SCOPED_TRACE(diameter);
            QImage images[2];
            for (int fast = 0; fast < 2; ++fast) {
                QwtPlot plot;
                setUpPlot(plot, c);
                QwtPlotSpectroCurve* curve = fast
                    ? new RoundSpectroCurve
                    : static_cast<QwtPlotSpectroCurve*>(new DotByDotCurve(points.xyz));
                if (fast)
                    curve->setSamples(points.xyz);
                curve->setPenWidth(diameter);
                curve->setColorMap(colorMapFor(ViridisMap));
                curve->setColorRange(QwtInterval(0.0, 1.0));
                curve->attach(&plot);
                images[fast] = render(plot, format);
                // A second paint takes the colours kept from the first.
                if (fast) {
                    EXPECT_EQ(render(plot, format), images[fast]);
                }
            }
            std::string first;
            EXPECT_EQ(differences(images[0], images[1], first), 0) << first;
        }
    }
}

TEST(PointLayerPixels, PlainPointsMatchTheLibrarysSymbols)
{
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Points points = pointsFor(c);
        // Dots narrower than the groups of pixels blended at once, as wide as they, and wider.
        for (const auto& [format, diameter] :
            { std::pair { QImage::Format_RGB32, 6.0 }, std::pair { QImage::Format_ARGB32_Premultiplied, 6.0 },
                std::pair { QImage::Format_ARGB32_Premultiplied, 3.5 },
                std::pair { QImage::Format_RGB32, 11.0 }, std::pair { QImage::Format_RGB32, 27.0 } }) {
            SCOPED_TRACE(diameter);
            QImage images[2];
            for (int fast = 0; fast < 2; ++fast) {
                QwtPlot plot;
                setUpPlot(plot, c);
                QwtPlotCurve* curve = fast ? plainCurve<PlainPointsCurve>(points.xy)
                                           : plainCurve<QwtPlotCurve>(points.placed);
                curve->attach(&plot);
                images[fast] = render(plot, format);
            }
            std::string first;
            EXPECT_EQ(differences(images[0], images[1], first), 0) << first;
        }
    }
}

// On screen the canvas paints into its backing store, a pixmap at an offset in the window.
TEST(PointLayerPixels, PlainPointsOnScreenMatchTheLibrarysSymbols)
{
    const Case& c = cases[0];
    const Points points = pointsFor(c);
    QImage images[2];
    for (int fast = 0; fast < 2; ++fast) {
        QwtPlot plot;
        setUpPlot(plot, c);
        QwtPlotCurve* curve
            = fast ? plainCurve<PlainPointsCurve>(points.xy) : plainCurve<QwtPlotCurve>(points.xy);
        curve->attach(&plot);
        plot.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&plot));
        plot.replot();
        images[fast] = plot.grab().toImage();
    }
    std::string first;
    EXPECT_EQ(differences(images[0], images[1], first), 0) << first;
}

// Exports at another resolution scale the painter, a picture records vector commands, and a
// painter may sit between pixels: the library then paints each symbol itself, and so must the
// plot.
TEST(PointLayerPixels, PlainPointsOnOtherPaintersAreTheLibrarysOwn)
{
    const Case& c = cases[1];
    const Points points = pointsFor(c);
    struct Painter
    {
        const char* what;
        QTransform transform;
        bool throughPicture;
    };
    const Painter painters[] = {
        { "scaled", QTransform::fromScale(1.5, 1.5), false },
        { "between pixels", QTransform::fromTranslate(0.5, 0.25), false },
        { "a picture", QTransform(), true },
    };
    for (const Painter& p : painters) {
        SCOPED_TRACE(p.what);
        QImage images[2];
        for (int fast = 0; fast < 2; ++fast) {
            QwtPlot plot;
            setUpPlot(plot, c);
            QwtPlotCurve* curve
                = fast ? plainCurve<PlainPointsCurve>(points.xy) : plainCurve<QwtPlotCurve>(points.xy);
            curve->attach(&plot);
            images[fast] = QImage(800, 600, QImage::Format_RGB32);
            images[fast].fill(Qt::white);
            QPainter painter(&images[fast]);
            painter.setTransform(p.transform);
            if (p.throughPicture) {
                QPicture picture;
                QPainter recorder(&picture);
                QwtPlotRenderer().render(&plot, &recorder, QRectF(0, 0, 500, 380));
                recorder.end();
                painter.drawPicture(0, 0, picture);
            } else {
                QwtPlotRenderer().render(&plot, &painter, QRectF(0, 0, 500, 380));
            }
        }
        std::string first;
        EXPECT_EQ(differences(images[0], images[1], first), 0) << first;
    }
}
