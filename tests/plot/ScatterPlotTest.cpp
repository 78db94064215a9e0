#include "plot/ScatterPlot.h"

#include "plot/ColorMaps.h"
#include "plot/PlotLayoutAccess.h"
#include "plot/PseudoLogScaleEngine.h"
#include "plot/RoundSpectroCurve.h"
#include "plot/ScatterPlotPicker.h"

#include <QPainterPath>
#include <QSignalSpy>
#include <QTest>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <qwt_color_map.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_shapeitem.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>

using namespace Tessaly;

namespace {

bool axisShown(const QwtPlot& plot, int axis)
{
#if QWT_VERSION >= 0x060200
    return plot.isAxisVisible(axis);
#else
    return plot.axisEnabled(axis);
#endif
}

QRgb rgbAt(int mapIndex, double ratio)
{
    const std::unique_ptr<QwtLinearColorMap> map(colorMapFor(mapIndex));
    return map->rgb(QwtInterval(0.0, 1.0), ratio) & 0xffffffu;
}

// A plot of a fixed size whose axes have been laid out, so that canvas maps are meaningful.
struct LaidOutPlot
{
    ScatterPlot plot;

    LaidOutPlot()
    {
        plot.resize(600, 400);
        plot.replot();
        plot.updateLayout();
    }

    void fixScales(double x0, double x1, double y0, double y1)
    {
        plot.setAxisScale(QwtPlot::xBottom, x0, x1);
        plot.setAxisScale(QwtPlot::yLeft, y0, y1);
        plot.replot();
        plot.updateLayout();
    }

    // The canvas pixel of a point in data units.
    QPointF pixelOf(double x, double y) const
    {
        return QPointF(
            plot.canvasMap(QwtPlot::xBottom).transform(x), plot.canvasMap(QwtPlot::yLeft).transform(y));
    }

    double canvasWidth() const
    {
        const QwtScaleMap map = plot.canvasMap(QwtPlot::xBottom);
        return std::abs(map.p2() - map.p1());
    }

    double canvasHeight() const
    {
        const QwtScaleMap map = plot.canvasMap(QwtPlot::yLeft);
        return std::abs(map.p2() - map.p1());
    }

    // The data position that lies the given fractions of the canvas away from a point.
    QPointF offsetBy(double x, double y, double fx, double fy) const
    {
        const QPointF p = pixelOf(x, y);
        return QPointF(plot.invTransform(QwtPlot::xBottom, p.x() + fx * canvasWidth()),
            plot.invTransform(QwtPlot::yLeft, p.y() - fy * canvasHeight()));
    }
};

const std::vector<double> someX { 1.0, 2.0, 3.0, 4.0 };
const std::vector<double> someY { 10.0, 30.0, 20.0, 40.0 };

} // namespace

TEST(ScatterPlotColorMaps, EndColoursOfEveryMap)
{
    struct Case
    {
        int index;
        QRgb atZero;
        QRgb atOne;
    };
    // Named colours are Qt's: blue (0, 0, 255), red (255, 0, 0).
    const Case cases[] = {
        { 0, qRgb(68, 1, 84), qRgb(253, 231, 37) },
        { 1, qRgb(0, 0, 255), qRgb(255, 0, 0) },
        { 2, qRgb(100, 0, 180), qRgb(255, 0, 0) },
        { 3, qRgb(13, 8, 135), qRgb(240, 249, 33) },
        { 4, qRgb(0, 68, 108), qRgb(254, 204, 0) },
        { 5, qRgb(0, 0, 0), qRgb(255, 255, 255) },
        { 9, qRgb(68, 1, 84), qRgb(253, 231, 37) },
        { -1, qRgb(68, 1, 84), qRgb(253, 231, 37) },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.index);
        EXPECT_EQ(rgbAt(c.index, 0.0), c.atZero & 0xffffffu);
        EXPECT_EQ(rgbAt(c.index, 1.0), c.atOne & 0xffffffu);
    }
    // Qt's green is (0, 255, 0), the web's (0, 128, 0).
    EXPECT_EQ(rgbAt(JetMap, 0.5), qRgb(0, 255, 0) & 0xffffffu);
    EXPECT_EQ(rgbAt(JetPlusMap, 0.2), qRgb(0, 0, 255) & 0xffffffu);
    EXPECT_EQ(rgbAt(QuorinMap, 0.5), qRgb(104, 193, 194) & 0xffffffu);
}

TEST(ScatterPlot, EmptyOrMismatchedCoordinatesClearThePlot)
{
    ScatterPlot plot;
    plot.setData(someX, someY, "x", "y", { 1.0, 2.0, 3.0, 4.0 }, "c");
    plot.highlightPoint(1);
    plot.setContours({ ContourLevel { 0.1, 1.0, { { { 0.0, 0.0 }, { 1.0, 1.0 } } } } });
    ASSERT_TRUE(plot.colorPoints()->isVisible());

    plot.setData({}, {}, "x", "y", {}, "");
    EXPECT_TRUE(plot.xValues().empty());
    EXPECT_EQ(plot.plainPoints()->dataSize(), 0u);
    EXPECT_EQ(plot.colorPoints()->pointCount(), 0u);
    EXPECT_FALSE(plot.colorPoints()->isVisible());
    EXPECT_FALSE(plot.highlight()->isVisible());
    EXPECT_TRUE(plot.contours().empty());
    EXPECT_FALSE(axisShown(plot, QwtPlot::yRight));
    EXPECT_FALSE(plot.axisWidget(QwtPlot::yRight)->isColorBarEnabled());

    plot.setData(someX, someY, "x", "y");
    plot.setData(someX, { 1.0, 2.0 }, "x", "y");
    EXPECT_TRUE(plot.yValues().empty());
    EXPECT_EQ(plot.plainPoints()->dataSize(), 0u);
}

TEST(ScatterPlot, ColoursOfMatchingLengthGetARangeAndAColourBar)
{
    ScatterPlot plot;
    plot.setData(someX, someY, "x", "y", { 5.0, -2.0, 7.5, 0.0 }, "Density");
    EXPECT_TRUE(plot.colorPoints()->isVisible());
    EXPECT_FALSE(plot.plainPoints()->isVisible());
    EXPECT_EQ(plot.colorPoints()->point(2).z(), 7.5);
    EXPECT_EQ(plot.colorPoints()->colorRange(), QwtInterval(-2.0, 7.5));
    EXPECT_EQ(plot.axisTitle(QwtPlot::yRight).text(), "Density");
    EXPECT_EQ(plot.axisWidget(QwtPlot::yRight)->colorBarInterval(), QwtInterval(-2.0, 7.5));

    // A constant colour still needs a range of some width: [v, v + 1].
    plot.setData(someX, someY, "x", "y", { 3.0, 3.0, 3.0, 3.0 }, "c");
    EXPECT_EQ(plot.colorPoints()->colorRange(), QwtInterval(3.0, 4.0));
    EXPECT_EQ(plot.axisScaleDiv(QwtPlot::yRight).lowerBound(), 3.0);
    EXPECT_EQ(plot.axisScaleDiv(QwtPlot::yRight).upperBound(), 4.0);

    // One colour short: plain points, and no colour bar.
    plot.setData(someX, someY, "x", "y", { 1.0, 2.0, 3.0 }, "c");
    EXPECT_TRUE(plot.plainPoints()->isVisible());
    EXPECT_EQ(plot.plainPoints()->dataSize(), 4u);
    EXPECT_FALSE(plot.colorPoints()->isVisible());
    EXPECT_FALSE(plot.axisWidget(QwtPlot::yRight)->isColorBarEnabled());
    EXPECT_FALSE(axisShown(plot, QwtPlot::yRight));

    // The map chosen meanwhile colours the next coloured points.
    plot.setColorMapIndex(JetMap);
    plot.setData(someX, someY, "x", "y", { 0.0, 1.0, 2.0, 4.0 }, "c");
    EXPECT_EQ(plot.colorPoints()->colorMap()->rgb(QwtInterval(0.0, 4.0), 0.0) & 0xffffffu, 0x0000ffu);
}

TEST(ScatterPlot, ContourModeOnlyKeepsPointsHiddenAcrossNewDataButNotTheHighlight)
{
    ScatterPlot plot;
    plot.setData(someX, someY, "x", "y", { 1.0, 2.0, 3.0, 4.0 }, "c");
    plot.setDataVisible(false);
    EXPECT_FALSE(plot.isDataVisible());

    plot.setData(someX, someY, "x", "y", { 4.0, 3.0, 2.0, 1.0 }, "c");
    EXPECT_FALSE(plot.colorPoints()->isVisible());
    EXPECT_FALSE(plot.plainPoints()->isVisible());
    EXPECT_FALSE(axisShown(plot, QwtPlot::yRight));
    plot.setData(someX, someY, "x", "y");
    EXPECT_FALSE(plot.plainPoints()->isVisible());
    plot.highlightPoint(2);
    EXPECT_TRUE(plot.highlight()->isVisible());
    EXPECT_EQ(plot.highlight()->sample(0), QPointF(3.0, 20.0));

    // Back to visible: the kind of points that the data has, with its colour bar.
    plot.setData(someX, someY, "x", "y", { 4.0, 3.0, 2.0, 1.0 }, "c");
    plot.setDataVisible(true);
    EXPECT_TRUE(plot.colorPoints()->isVisible());
    EXPECT_FALSE(plot.plainPoints()->isVisible());
    EXPECT_TRUE(axisShown(plot, QwtPlot::yRight));
    EXPECT_TRUE(plot.axisWidget(QwtPlot::yRight)->isColorBarEnabled());
}

TEST(ScatterPlot, PickerSelectionHighlightsAndReportsThePoint)
{
    ScatterPlot plot;
    plot.setData(someX, someY, "x", "y");
    auto* picker = plot.findChild<ScatterPlotPicker*>();
    ASSERT_NE(picker, nullptr);
    QSignalSpy clicked(&plot, &ScatterPlot::pointClicked);
    emit picker->pointSelected(3);
    EXPECT_TRUE(plot.highlight()->isVisible());
    EXPECT_EQ(plot.highlight()->sample(0), QPointF(4.0, 40.0));
    emit picker->pointSelected(4);
    EXPECT_FALSE(plot.highlight()->isVisible());
    ASSERT_EQ(clicked.count(), 2);
    EXPECT_EQ(clicked.at(0).at(0).toInt(), 3);
    EXPECT_EQ(clicked.at(1).at(0).toInt(), 4);
}

TEST(ScatterPlot, PickRadiusIsFivePercentOfEachDirection)
{
    LaidOutPlot p;
    p.plot.setData({ 500.0, 100.0 }, { 0.5, 0.1 }, "x", "y");
    // A wide canvas and very different axis ranges: distances count in fractions of each axis.
    p.fixScales(0.0, 1000.0, 0.0, 1.0);
    ASSERT_GT(p.canvasWidth(), p.canvasHeight() * 1.2);

    EXPECT_EQ(p.plot.findNearestPoint(p.offsetBy(500.0, 0.5, 0.049, 0.0)), 0);
    EXPECT_EQ(p.plot.findNearestPoint(p.offsetBy(500.0, 0.5, -0.051, 0.0)), -1);
    EXPECT_EQ(p.plot.findNearestPoint(p.offsetBy(500.0, 0.5, 0.0, -0.049)), 0);
    EXPECT_EQ(p.plot.findNearestPoint(p.offsetBy(500.0, 0.5, 0.0, 0.051)), -1);
    // Within 5 % in each direction, but not within the radius.
    EXPECT_EQ(p.plot.findNearestPoint(p.offsetBy(500.0, 0.5, 0.04, 0.04)), -1);
    EXPECT_EQ(p.plot.findNearestPoint(p.offsetBy(500.0, 0.5, 0.03, 0.03)), 0);

    // On a log axis the distance is measured in pixels, not in data units.
    p.plot.setAxisScaleEngine(QwtPlot::xBottom, new QwtLogScaleEngine(10));
    p.fixScales(1.0, 10000.0, 0.0, 1.0);
    EXPECT_EQ(p.plot.findNearestPoint(p.offsetBy(100.0, 0.1, 0.049, 0.0)), 1);
    EXPECT_EQ(p.plot.findNearestPoint(p.offsetBy(100.0, 0.1, 0.051, 0.0)), -1);
}

TEST(ScatterPlot, FirstOfEqualNearestPointsWins)
{
    LaidOutPlot p;
    p.plot.setData({ 5.0, 1.0, 1.0, 9.0, 1.0 }, { 5.0, 1.0, 1.0, 9.0, 1.0 }, "x", "y");
    p.fixScales(0.0, 10.0, 0.0, 10.0);
    EXPECT_EQ(p.plot.findNearestPoint(QPointF(1.1, 1.2)), 1);

    ScatterPlot empty;
    EXPECT_EQ(empty.findNearestPoint(QPointF(0.0, 0.0)), -1);
}

TEST(ScatterPlot, LeftClickOnTheCanvasReportsTheNearestPoint)
{
    LaidOutPlot p;
    p.plot.setData({ 2.0, 5.0, 8.0 }, { 2.0, 5.0, 8.0 }, "x", "y");
    p.fixScales(0.0, 10.0, 0.0, 10.0);
    p.plot.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&p.plot));
    QSignalSpy clicked(&p.plot, &ScatterPlot::pointClicked);
    QWidget* canvas = p.plot.canvas();

    QTest::mouseClick(canvas, Qt::LeftButton, Qt::NoModifier, p.pixelOf(5.2, 4.9).toPoint());
    ASSERT_EQ(clicked.count(), 1);
    EXPECT_EQ(clicked.at(0).at(0).toInt(), 1);

    // Nothing near, and a drag, select nothing.
    QTest::mouseClick(canvas, Qt::LeftButton, Qt::NoModifier, p.pixelOf(3.5, 6.5).toPoint());
    const QPoint start = p.pixelOf(8.0, 8.0).toPoint();
    QTest::mousePress(canvas, Qt::LeftButton, Qt::NoModifier, start);
    QTest::mouseRelease(canvas, Qt::LeftButton, Qt::NoModifier, start + QPoint(20, 20));
    EXPECT_EQ(clicked.count(), 1);
    // The drag zoomed in; the scales go back for the next click.
    p.fixScales(0.0, 10.0, 0.0, 10.0);
    // A small wobble between press and release is still a click.
    QTest::mousePress(canvas, Qt::LeftButton, Qt::NoModifier, start);
    QTest::mouseRelease(canvas, Qt::LeftButton, Qt::NoModifier, start + QPoint(10, 3));
    ASSERT_EQ(clicked.count(), 2);
    EXPECT_EQ(clicked.at(1).at(0).toInt(), 2);
}

TEST(ScatterPlot, ScaleModesInstallTheirEnginesAndReturnToAutoScale)
{
    ScatterPlot plot;
    plot.setAxisScale(QwtPlot::xBottom, 1.0, 2.0);
    plot.setAxisScaleMode(QwtPlot::xBottom, 1);
    EXPECT_NE(dynamic_cast<const QwtLogScaleEngine*>(plot.axisScaleEngine(QwtPlot::xBottom)), nullptr);
    EXPECT_TRUE(plot.axisAutoScale(QwtPlot::xBottom));
    plot.setAxisScaleMode(QwtPlot::yLeft, 2);
    const auto* pseudo = dynamic_cast<const PseudoLogScaleEngine*>(plot.axisScaleEngine(QwtPlot::yLeft));
    ASSERT_NE(pseudo, nullptr);
    EXPECT_EQ(pseudo->linearThreshold(), 100.0);
    EXPECT_EQ(pseudo->linearRange(), 0.5);
    plot.setAxisScaleMode(QwtPlot::yLeft, 7);
    EXPECT_NE(dynamic_cast<const QwtLinearScaleEngine*>(plot.axisScaleEngine(QwtPlot::yLeft)), nullptr);
}

TEST(ScatterPlot, ContoursDashTheFirstLevelAndSkipSinglePoints)
{
    ScatterPlot plot;
    plot.setData(someX, someY, "x", "y");
    const std::vector<ContourLevel> levels {
        ContourLevel { 0.1, 2.0, { { { 1.0, 10.0 }, { 2.0, 20.0 }, { 1.0, 10.0 } }, { { 3.0, 30.0 } } } },
        ContourLevel { 0.67, 1.0, { { { 1.5, 15.0 }, { 3.5, 35.0 } }, { { 2.5, 25.0 }, { 3.0, 20.0 } } } },
        ContourLevel { 0.9, 0.0, {} },
    };
    plot.setContours(levels);
    ASSERT_EQ(plot.contours().size(), 3u);
    EXPECT_EQ(plot.contours()[0]->pen().style(), Qt::DashLine);
    EXPECT_EQ(plot.contours()[0]->dataSize(), 3u);
    EXPECT_EQ(plot.contours()[1]->pen().style(), Qt::SolidLine);
    EXPECT_EQ(plot.contours()[2]->pen().style(), Qt::SolidLine);
    EXPECT_EQ(plot.contours()[2]->sample(1), QPointF(3.0, 20.0));

    // New contours replace the old ones instead of piling up.
    plot.setContours({ levels[1] });
    EXPECT_EQ(plot.contours().size(), 2u);
    EXPECT_EQ(plot.contours()[0]->pen().style(), Qt::DashLine);
    EXPECT_EQ(plot.itemList(QwtPlotItem::Rtti_PlotCurve).size(), 4 + 2);
    plot.clearContours();
    EXPECT_TRUE(plot.contours().empty());
    EXPECT_EQ(plot.itemList(QwtPlotItem::Rtti_PlotCurve).size(), 4);
}

TEST(ScatterPlot, IsoelasticLabelsShowTheModulusWithTwoDecimalsBelowOne)
{
    ScatterPlot plot;
    const std::vector<IsoelasticLine> lines {
        { 0.95, { { 50.0, 0.01 }, { 100.0, 0.02 }, { 150.0, 0.03 } } },
        { 1.2, { { 50.0, 0.02 }, { 120.0, 0.04 } } },
        { 5.0, { { 60.0, 0.05 } } },
        { 12.0, { { 50.0, 0.03 }, { 80.0, 0.05 } } },
    };
    plot.setIsoelastics(lines, true);
    ASSERT_EQ(plot.isoelasticLines().size(), 3u);
    ASSERT_EQ(plot.isoelasticLabels().size(), 3u);
    EXPECT_EQ(plot.isoelasticLabels()[0]->label().text(), "0.95 kPa");
    EXPECT_EQ(plot.isoelasticLabels()[1]->label().text(), "1.2 kPa");
    EXPECT_EQ(plot.isoelasticLabels()[2]->label().text(), "12.0 kPa");
    // The label sits at the line's last point.
    EXPECT_EQ(plot.isoelasticLabels()[0]->value(), QPointF(150.0, 0.03));

    plot.setIsoelastics(lines, false);
    EXPECT_EQ(plot.isoelasticLines().size(), 3u);
    EXPECT_TRUE(plot.isoelasticLabels().empty());
    plot.clearIsoelastics();
    EXPECT_TRUE(plot.isoelasticLines().empty());
    EXPECT_TRUE(plot.itemList(QwtPlotItem::Rtti_PlotMarker).empty());
}

TEST(ScatterPlot, IsoelasticsDoNotWidenTheAutoScale)
{
    LaidOutPlot p;
    p.plot.setData(someX, someY, "x", "y");
    const double upper = p.plot.axisScaleDiv(QwtPlot::xBottom).upperBound();
    p.plot.setIsoelastics({ { 2.0, { { 1.0, 10.0 }, { 1000.0, 5000.0 } } } }, true);
    EXPECT_EQ(p.plot.axisScaleDiv(QwtPlot::xBottom).upperBound(), upper);
    EXPECT_LT(p.plot.axisScaleDiv(QwtPlot::yLeft).upperBound(), 100.0);
}

TEST(ScatterPlot, PolygonOverlayOfTheSameIdIsReplaced)
{
    ScatterPlot plot;
    const QPolygonF triangle(QVector<QPointF> { QPointF(0, 0), QPointF(1, 0), QPointF(0, 1) });
    plot.addPolygonOverlay(3, triangle, true);
    plot.addPolygonOverlay(3, triangle, false);
    plot.addPolygonOverlay(1000002, triangle, true);
    ASSERT_EQ(plot.polygonOverlays().size(), 2u);
    EXPECT_EQ(plot.itemList(QwtPlotItem::Rtti_PlotShape).size(), 2);
    // The later style wins, and the path is closed: it ends where it starts.
    const QwtPlotShapeItem* disabled = plot.polygonOverlays().at(3);
    EXPECT_EQ(disabled->pen().style(), Qt::DashLine);
    const QPainterPath path = disabled->shape();
    EXPECT_EQ(path.elementCount(), 4);
    EXPECT_EQ(QPointF(path.elementAt(3)), QPointF(0, 0));

    plot.clearPolygonOverlays();
    EXPECT_TRUE(plot.polygonOverlays().empty());
    EXPECT_TRUE(plot.itemList(QwtPlotItem::Rtti_PlotShape).empty());
}

TEST(ScatterPlot, ExportLookIsUndoneAfterwards)
{
    ScatterPlot plot;
    plot.setCanvasBackground(QColor(10, 20, 30));
    setCanvasMargin(plot, 7);
    const bool autoFill = plot.autoFillBackground();
    const QColor window = plot.palette().color(QPalette::Window);

    const ScatterPlotExportState state = plot.prepareForExport();
    EXPECT_EQ(plot.canvasBackground().color(), QColor(Qt::white));
    EXPECT_EQ(plot.palette().color(QPalette::Window), QColor(Qt::white));
    EXPECT_TRUE(plot.autoFillBackground());
    EXPECT_TRUE(axisShown(plot, QwtPlot::yRight));
    EXPECT_TRUE(axisShown(plot, QwtPlot::xTop));
    EXPECT_FALSE(plot.axisScaleDraw(QwtPlot::xTop)->hasComponent(QwtAbstractScaleDraw::Labels));
    EXPECT_EQ(canvasMargin(plot, QwtPlot::xBottom), 0);

    plot.restoreAfterExport(state);
    EXPECT_EQ(plot.canvasBackground().color(), QColor(10, 20, 30));
    EXPECT_EQ(plot.palette().color(QPalette::Window), window);
    EXPECT_EQ(plot.autoFillBackground(), autoFill);
    EXPECT_FALSE(axisShown(plot, QwtPlot::yRight));
    EXPECT_FALSE(axisShown(plot, QwtPlot::xTop));
    EXPECT_TRUE(plot.axisScaleDraw(QwtPlot::xTop)->hasComponent(QwtAbstractScaleDraw::Labels));
    EXPECT_EQ(canvasMargin(plot, QwtPlot::xBottom), 7);
}
