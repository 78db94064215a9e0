#include "plot/ColorMaps.h"
#include "plot/RoundSpectroCurve.h"

#include <QImage>
#include <QPainter>
#include <QPicture>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <qwt_color_map.h>
#include <qwt_scale_map.h>
#include <random>

using namespace Tessaly;

namespace {

constexpr int imageSize = 120;

QwtScaleMap identityMap()
{
    QwtScaleMap map;
    map.setScaleInterval(0.0, imageSize);
    map.setPaintInterval(0.0, imageSize);
    return map;
}

// Dots on a white image through a painter prepared by `setUp`; a picture in between makes the
// curve draw one ellipse per point, as on any vector device.
QImage drawDots(const RoundSpectroCurve& curve, bool throughPicture, void (*setUp)(QPainter&) = nullptr)
{
    QImage image(imageSize, imageSize, QImage::Format_RGB32);
    image.fill(Qt::white);
    const QRectF canvasRect(0, 0, imageSize, imageSize);
    QPainter painter(&image);
    if (setUp)
        setUp(painter);
    // The canvas clips what its items draw.
    painter.setClipRect(canvasRect);
    if (throughPicture) {
        QPicture picture;
        QPainter recorder(&picture);
        curve.drawSeries(&recorder, identityMap(), identityMap(), canvasRect, 0, -1);
        recorder.end();
        painter.drawPicture(0, 0, picture);
    } else {
        curve.drawSeries(&painter, identityMap(), identityMap(), canvasRect, 0, -1);
    }
    return image;
}

struct Difference
{
    int largest = 0;
    double mean = 0.0;
};

Difference compare(const QImage& a, const QImage& b)
{
    Difference d;
    long long total = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            for (const int diff : { qRed(p) - qRed(q), qGreen(p) - qGreen(q), qBlue(p) - qBlue(q) }) {
                d.largest = std::max(d.largest, std::abs(diff));
                total += std::abs(diff);
            }
        }
    }
    d.mean = static_cast<double>(total) / (3.0 * a.width() * a.height());
    return d;
}

RoundSpectroCurve* curveWith(const QVector<QwtPoint3D>& samples, int map = ViridisMap)
{
    auto* curve = new RoundSpectroCurve;
    curve->setPenWidth(6.0);
    curve->setColorMap(colorMapFor(map));
    curve->setColorRange(QwtInterval(0.0, 1.0));
    curve->setSamples(samples);
    return curve;
}

// Crowded dots in random colours, some off the image, at positions rounded to `grid` pixels.
QVector<QwtPoint3D> randomDots(int count, double grid)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> position(-8.0, imageSize + 8.0);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    QVector<QwtPoint3D> samples;
    for (int i = 0; i < count; ++i) {
        const double x = grid > 0 ? std::round(position(rng) / grid) * grid : position(rng);
        const double y = grid > 0 ? std::round(position(rng) / grid) * grid : position(rng);
        samples.append(QwtPoint3D(x, y, unit(rng)));
    }
    return samples;
}

} // namespace

TEST(ScatterPlotDots, RasterDotsMatchOneEllipsePerPoint)
{
    // On eighths of a pixel the pre-rendered dots sit exactly where the ellipses do; only rounding
    // of the blend may differ.
    const std::unique_ptr<RoundSpectroCurve> aligned(curveWith(randomDots(400, 0.125)));
    const Difference onGrid = compare(drawDots(*aligned, false), drawDots(*aligned, true));
    EXPECT_LE(onGrid.largest, 3);

    // Anywhere else a dot moves by at most a sixteenth of a pixel.
    const std::unique_ptr<RoundSpectroCurve> anywhere(curveWith(randomDots(400, 0.0)));
    const Difference offGrid = compare(drawDots(*anywhere, false), drawDots(*anywhere, true));
    EXPECT_LE(offGrid.largest, 40);
    EXPECT_LT(offGrid.mean, 1.5);

    // Under a scaled and translated painter, as in exports at a higher resolution.
    const auto scaled = [](QPainter& p) {
        p.translate(3.5, -7.25);
        p.scale(1.5, 1.5);
    };
    const Difference zoomed = compare(drawDots(*anywhere, false, scaled), drawDots(*anywhere, true, scaled));
    EXPECT_LE(zoomed.largest, 40);
    EXPECT_LT(zoomed.mean, 1.5);
}

TEST(ScatterPlotDots, DotsAreRoundAndLaterPointsCoverEarlierOnes)
{
    const std::unique_ptr<RoundSpectroCurve> curve(curveWith({
        QwtPoint3D(20.0, 20.0, 0.0),
        QwtPoint3D(60.0, 60.0, 0.0),
        QwtPoint3D(62.0, 60.0, 1.0),
        QwtPoint3D(90.0, 90.0, std::numeric_limits<double>::quiet_NaN()),
    }));
    const QImage image = drawDots(*curve, false);
    const QColor low(68, 1, 84);
    const QColor high(253, 231, 37);
    // Pixel (19, 19) spans [19, 20] and lies inside the dot; the corner pixel of the 6-pixel square,
    // (22, 22), is cut by the circle down to a sliver.
    EXPECT_EQ(image.pixelColor(19, 19), low);
    EXPECT_EQ(image.pixelColor(18, 19), low);
    const QColor corner = image.pixelColor(22, 22);
    EXPECT_GT(corner.green(), 200);
    EXPECT_GT(corner.red(), 200);
    EXPECT_EQ(image.pixelColor(23, 19), QColor(Qt::white));
    // The overlap of two dots shows the later one.
    EXPECT_EQ(image.pixelColor(60, 59), high);
    EXPECT_EQ(image.pixelColor(58, 59), low);
    // A value without colour draws nothing.
    EXPECT_EQ(image.pixelColor(89, 89), QColor(Qt::white));
}

TEST(ScatterPlotDots, KeptColoursFollowTheDataTheMapAndTheRange)
{
    // Colours are kept from one paint to the next; each of these changes must show at once.
    const std::unique_ptr<RoundSpectroCurve> curve(curveWith({ QwtPoint3D(40.0, 40.0, 0.0) }));
    const auto centre = [&] { return drawDots(*curve, false).pixelColor(39, 39); };
    EXPECT_EQ(centre(), QColor(68, 1, 84));
    EXPECT_EQ(centre(), QColor(68, 1, 84));

    curve->setSamples(QVector<QwtPoint3D> { QwtPoint3D(40.0, 40.0, 1.0) });
    EXPECT_EQ(centre(), QColor(253, 231, 37));

    curve->setColorMap(colorMapFor(GrayscaleMap));
    EXPECT_EQ(centre(), QColor(Qt::white));
    // The same map anew, as the plot sets it on every change: the colours stay right.
    curve->setColorMap(colorMapFor(GrayscaleMap));
    EXPECT_EQ(centre(), QColor(Qt::white));

    curve->setColorRange(QwtInterval(0.0, 2.0));
    EXPECT_EQ(centre(), QColor(128, 128, 128));
    curve->setColorMap(colorMapFor(JetMap));
    EXPECT_EQ(centre(), QColor(Qt::green));
    // Maps with stops at the same places.
    curve->setColorMap(colorMapFor(ViridisMap));
    EXPECT_EQ(centre(), QColor(33, 145, 140));
    curve->setColorMap(colorMapFor(PlasmaMap));
    EXPECT_EQ(centre(), QColor(204, 71, 120));
}
