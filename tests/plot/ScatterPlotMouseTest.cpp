#include "plot/ScatterPlot.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <cmath>
#include <gtest/gtest.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_shapeitem.h>
#include <qwt_scale_div.h>
#include <qwt_scale_engine.h>

using namespace Tessaly;

namespace {

QPolygonF polygonOf(std::initializer_list<QPointF> points)
{
    return QPolygonF(QVector<QPointF>(points));
}

// A shown plot of fixed size and scales whose canvas receives synthetic mouse and key events, as
// the window system would deliver them.
class ScatterPlotMouse : public ::testing::Test
{
protected:
    void SetUp() override
    {
        plot.resize(600, 400);
        plot.setData({ 2.0, 5.0, 8.0 }, { 2.0, 5.0, 8.0 }, "x", "y");
        fixScales(0.0, 10.0, 0.0, 10.0);
        plot.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&plot));
        canvas = plot.canvas();
    }

    void fixScales(double x0, double x1, double y0, double y1)
    {
        plot.setAxisScale(QwtPlot::xBottom, x0, x1);
        plot.setAxisScale(QwtPlot::yLeft, y0, y1);
        plot.replot();
        plot.updateLayout();
    }

    QPoint pixelOf(double x, double y) const
    {
        return QPointF(
            plot.canvasMap(QwtPlot::xBottom).transform(x), plot.canvasMap(QwtPlot::yLeft).transform(y))
            .toPoint();
    }

    QPointF dataAt(const QPoint& pixel) const
    {
        return QPointF(
            plot.invTransform(QwtPlot::xBottom, pixel.x()), plot.invTransform(QwtPlot::yLeft, pixel.y()));
    }

    bool mouse(QEvent::Type type, const QPoint& pos, Qt::MouseButton button, Qt::MouseButtons buttons,
        Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QMouseEvent event(type, pos, canvas->mapToGlobal(pos), button, buttons, modifiers);
        QApplication::sendEvent(canvas, &event);
        return event.isAccepted();
    }

    void press(const QPoint& pos, Qt::MouseButton button = Qt::LeftButton,
        Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        mouse(QEvent::MouseButtonPress, pos, button, button, modifiers);
    }
    void release(const QPoint& pos, Qt::MouseButton button = Qt::LeftButton)
    {
        mouse(QEvent::MouseButtonRelease, pos, button, Qt::NoButton);
    }
    void move(const QPoint& pos, Qt::MouseButtons buttons = Qt::NoButton)
    {
        mouse(QEvent::MouseMove, pos, Qt::NoButton, buttons);
    }
    void click(const QPoint& pos, Qt::MouseButton button = Qt::LeftButton)
    {
        press(pos, button);
        release(pos, button);
    }
    // What a person's double click delivers: press, release, double click, release.
    void doubleClick(const QPoint& pos)
    {
        click(pos);
        mouse(QEvent::MouseButtonDblClick, pos, Qt::LeftButton, Qt::LeftButton);
        release(pos);
    }
    void drag(const QPoint& from, const QPoint& to, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        press(from, Qt::LeftButton, modifiers);
        move((from + to) / 2, Qt::LeftButton);
        move(to, Qt::LeftButton);
        release(to);
    }
    void escape() { QTest::keyClick(canvas, Qt::Key_Escape); }
    void wheel(const QPoint& pos, int delta)
    {
        QWheelEvent event(QPointF(pos), QPointF(canvas->mapToGlobal(pos)), QPoint(), QPoint(0, delta),
            Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(canvas, &event);
    }

    std::pair<double, double> xRange() const
    {
        const QwtScaleDiv& div = plot.axisScaleDiv(QwtPlot::xBottom);
        return { div.lowerBound(), div.upperBound() };
    }
    std::pair<double, double> yRange() const
    {
        const QwtScaleDiv& div = plot.axisScaleDiv(QwtPlot::yLeft);
        return { div.lowerBound(), div.upperBound() };
    }

    // Starts an edit of a square with corners at 2 and 8 on both axes.
    void editSquare(int id = 4)
    {
        plot.startPolygonEdit(id, polygonOf({ QPointF(2, 2), QPointF(8, 2), QPointF(8, 8), QPointF(2, 8) }));
    }

    ScatterPlot plot;
    QWidget* canvas = nullptr;
};

void expectNear(const QPointF& actual, const QPointF& expected, double tolerance = 1e-9)
{
    EXPECT_NEAR(actual.x(), expected.x(), tolerance);
    EXPECT_NEAR(actual.y(), expected.y(), tolerance);
}

} // namespace

TEST_F(ScatterPlotMouse, DoubleClickClosesThePolygonOnlyWithThreeVertices)
{
    QSignalSpy completed(&plot, &ScatterPlot::polygonCompleted);
    QSignalSpy stopped(&plot, &ScatterPlot::polygonDrawingStopped);
    plot.startPolygonDraw();
    EXPECT_TRUE(plot.drawingCurve()->isVisible());
    EXPECT_EQ(canvas->cursor().shape(), Qt::CrossCursor);

    // One vertex placed: the double click's first press makes two, which stay open.
    const QPoint a = pixelOf(3, 3);
    const QPoint b = pixelOf(7, 3);
    const QPoint c = pixelOf(5, 7);
    click(a);
    doubleClick(b);
    EXPECT_TRUE(plot.isDrawing());
    EXPECT_EQ(plot.drawnVertices().size(), 2);
    EXPECT_EQ(completed.count(), 0);
    // The open line shows the vertices as they are, with no closing segment.
    EXPECT_EQ(plot.drawingCurve()->dataSize(), 2u);

    // Two placed: the double click's press makes the third and closes the polygon.
    doubleClick(c);
    EXPECT_FALSE(plot.isDrawing());
    ASSERT_EQ(completed.count(), 1);
    ASSERT_EQ(stopped.count(), 1);
    const auto polygon = completed.at(0).at(0).value<QPolygonF>();
    ASSERT_EQ(polygon.size(), 3);
    expectNear(polygon[0], dataAt(a));
    expectNear(polygon[1], dataAt(b));
    expectNear(polygon[2], dataAt(c));
    EXPECT_FALSE(plot.drawingCurve()->isVisible());
    EXPECT_EQ(plot.drawingCurve()->dataSize(), 0u);
    EXPECT_EQ(canvas->cursor().shape(), Qt::ArrowCursor);
}

TEST_F(ScatterPlotMouse, CompletionIsReportedBeforeTheEndOfDrawing)
{
    std::vector<std::string> order;
    QObject::connect(&plot, &ScatterPlot::polygonCompleted, [&] { order.push_back("completed"); });
    QObject::connect(&plot, &ScatterPlot::polygonDrawingStopped, [&] { order.push_back("stopped"); });
    plot.startPolygonDraw();
    click(pixelOf(3, 3));
    click(pixelOf(7, 3));
    doubleClick(pixelOf(5, 7));
    EXPECT_EQ(order, (std::vector<std::string> { "completed", "stopped" }));
}

TEST_F(ScatterPlotMouse, EscapeCancelsDrawingAndOtherwiseGoesOnToTheLibrary)
{
    QSignalSpy completed(&plot, &ScatterPlot::polygonCompleted);
    QSignalSpy stopped(&plot, &ScatterPlot::polygonDrawingStopped);
    QKeyEvent esc(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    EXPECT_FALSE(plot.eventFilter(canvas, &esc));

    plot.startPolygonDraw();
    EXPECT_TRUE(canvas->hasFocus());
    click(pixelOf(3, 3));
    click(pixelOf(7, 3));
    escape();
    EXPECT_FALSE(plot.isDrawing());
    EXPECT_TRUE(plot.drawnVertices().isEmpty());
    EXPECT_FALSE(plot.drawingCurve()->isVisible());
    EXPECT_EQ(stopped.count(), 1);
    EXPECT_EQ(completed.count(), 0);
    // Cancelling again, with nothing drawn, says nothing.
    plot.cancelPolygonDraw();
    EXPECT_EQ(stopped.count(), 1);
}

TEST_F(ScatterPlotMouse, PressesWhileDrawingPlaceVerticesAndNeverZoomOrPick)
{
    QSignalSpy clicked(&plot, &ScatterPlot::pointClicked);
    plot.startPolygonDraw();
    // A drag that would zoom in Idle, and a click on a point that would pick it.
    drag(pixelOf(1, 1), pixelOf(6, 6));
    click(pixelOf(5, 5));
    EXPECT_EQ(xRange(), std::make_pair(0.0, 10.0));
    EXPECT_EQ(yRange(), std::make_pair(0.0, 10.0));
    EXPECT_EQ(clicked.count(), 0);
    EXPECT_EQ(plot.drawnVertices().size(), 2);
    // Shift does not pan while drawing either: it places a vertex.
    drag(pixelOf(2, 2), pixelOf(4, 4), Qt::ShiftModifier);
    EXPECT_EQ(xRange(), std::make_pair(0.0, 10.0));
    EXPECT_EQ(plot.drawnVertices().size(), 3);
    EXPECT_TRUE(plot.isDrawing());

    // A right press still resets the zoom, and drawing goes on.
    plot.setAxisScale(QwtPlot::xBottom, 2.0, 4.0);
    press(pixelOf(3, 3), Qt::RightButton);
    EXPECT_TRUE(plot.axisAutoScale(QwtPlot::xBottom));
    EXPECT_TRUE(plot.isDrawing());
    EXPECT_EQ(plot.drawnVertices().size(), 3);
}

TEST_F(ScatterPlotMouse, ATriangleKeepsItsVerticesAndALargerPolygonLosesOne)
{
    QSignalSpy edited(&plot, &ScatterPlot::polygonEdited);
    plot.startPolygonEdit(2, polygonOf({ QPointF(2, 2), QPointF(8, 2), QPointF(5, 8) }));
    press(pixelOf(8, 2), Qt::RightButton);
    EXPECT_EQ(plot.editedVertices().size(), 3);
    EXPECT_EQ(edited.count(), 0);

    editSquare(2);
    // Not quite on the vertex, but within its 12 pixels.
    press(pixelOf(8, 2) + QPoint(7, -6), Qt::RightButton);
    ASSERT_EQ(edited.count(), 1);
    EXPECT_EQ(edited.at(0).at(0).toInt(), 2);
    EXPECT_EQ(
        edited.at(0).at(1).value<QPolygonF>(), (polygonOf({ QPointF(2, 2), QPointF(8, 8), QPointF(2, 8) })));
    EXPECT_EQ(plot.editedVertices().size(), 3);
    // The edit curve shows it closed.
    EXPECT_EQ(plot.editingCurve()->dataSize(), 4u);
    // A right press away from every vertex changes nothing.
    press(pixelOf(5, 5), Qt::RightButton);
    EXPECT_EQ(edited.count(), 1);
}

TEST_F(ScatterPlotMouse, APressNearAVertexAndAnEdgeTakesTheVertex)
{
    QSignalSpy edited(&plot, &ScatterPlot::polygonEdited);
    editSquare();
    // 6 pixels along the bottom edge from its corner: on the edge, and within the vertex radius.
    const QPoint nearCorner = pixelOf(8, 2) + QPoint(-6, 0);
    press(nearCorner);
    EXPECT_EQ(plot.draggedVertex(), 1);
    EXPECT_EQ(plot.editedVertices().size(), 4);
    move(pixelOf(9, 1), Qt::LeftButton);
    release(pixelOf(9, 1));
    ASSERT_EQ(edited.count(), 1);
    const auto polygon = edited.at(0).at(1).value<QPolygonF>();
    ASSERT_EQ(polygon.size(), 4);
    expectNear(polygon[1], dataAt(pixelOf(9, 1)));
    EXPECT_EQ(plot.draggedVertex(), -1);
}

TEST_F(ScatterPlotMouse, APressOnAnEdgeInsertsAVertexThatFollowsTheDrag)
{
    QSignalSpy edited(&plot, &ScatterPlot::polygonEdited);
    editSquare(7);
    // The closing edge, from (2, 8) back to (2, 2), a few pixels beside it.
    press(pixelOf(2, 5) + QPoint(-5, 0));
    EXPECT_EQ(plot.draggedVertex(), 4);
    ASSERT_EQ(plot.editedVertices().size(), 5);
    expectNear(plot.editedVertices()[4], dataAt(pixelOf(2, 5) + QPoint(-5, 0)));
    EXPECT_EQ(canvas->cursor().shape(), Qt::ClosedHandCursor);
    // Filtering follows the release, not each move.
    move(pixelOf(0.5, 5), Qt::LeftButton);
    EXPECT_EQ(edited.count(), 0);
    expectNear(plot.editedVertices()[4], dataAt(pixelOf(0.5, 5)));
    release(pixelOf(0.5, 5));
    ASSERT_EQ(edited.count(), 1);
    EXPECT_EQ(edited.at(0).at(0).toInt(), 7);
    EXPECT_EQ(edited.at(0).at(1).value<QPolygonF>().size(), 5);
    EXPECT_EQ(canvas->cursor().shape(), Qt::ArrowCursor);
    // The curve is back on the plot, closed, with the new vertex.
    EXPECT_TRUE(plot.editingCurve()->isVisible());
    ASSERT_EQ(plot.editingCurve()->dataSize(), 6u);
    expectNear(plot.editingCurve()->sample(4), dataAt(pixelOf(0.5, 5)));

    // A press on neither vertex nor edge does nothing, and is not a zoom.
    drag(pixelOf(4, 4), pixelOf(6, 6));
    EXPECT_EQ(plot.editedVertices().size(), 5);
    EXPECT_EQ(xRange(), std::make_pair(0.0, 10.0));
}

TEST_F(ScatterPlotMouse, EscapeDuringADragEndsTheEditAndDropsTheDrag)
{
    QSignalSpy edited(&plot, &ScatterPlot::polygonEdited);
    QSignalSpy stopped(&plot, &ScatterPlot::polygonEditingStopped);
    plot.addPolygonOverlay(
        5, polygonOf({ QPointF(2, 2), QPointF(8, 2), QPointF(8, 8), QPointF(2, 8) }), true);
    editSquare(5);
    EXPECT_FALSE(plot.polygonOverlays().at(5)->isVisible());
    // One finished drag is reported ...
    press(pixelOf(2, 2));
    move(pixelOf(1, 1), Qt::LeftButton);
    release(pixelOf(1, 1));
    ASSERT_EQ(edited.count(), 1);
    // ... the second is cut short.
    press(pixelOf(8, 8));
    move(pixelOf(9, 9), Qt::LeftButton);
    escape();
    EXPECT_EQ(edited.count(), 1);
    ASSERT_EQ(stopped.count(), 1);
    EXPECT_EQ(stopped.at(0).at(0).toInt(), 5);
    EXPECT_FALSE(plot.isEditing());
    EXPECT_EQ(plot.editId(), -1);
    EXPECT_EQ(plot.draggedVertex(), -1);
    EXPECT_FALSE(plot.editingCurve()->isVisible());
    EXPECT_EQ(plot.editingCurve()->dataSize(), 0u);
    EXPECT_TRUE(plot.polygonOverlays().at(5)->isVisible());
    // The release that follows is an ordinary one and reports nothing.
    release(pixelOf(9, 9));
    EXPECT_EQ(edited.count(), 1);
}

TEST_F(ScatterPlotMouse, DrawingAndEditingExcludeEachOther)
{
    QSignalSpy editStopped(&plot, &ScatterPlot::polygonEditingStopped);
    QSignalSpy drawStopped(&plot, &ScatterPlot::polygonDrawingStopped);
    plot.addPolygonOverlay(1, polygonOf({ QPointF(1, 1), QPointF(3, 1), QPointF(2, 3) }), true);
    plot.addPolygonOverlay(2, polygonOf({ QPointF(5, 5), QPointF(7, 5), QPointF(6, 7) }), true);
    plot.startPolygonEdit(1, polygonOf({ QPointF(1, 1), QPointF(3, 1), QPointF(2, 3) }));

    // Another id: the old edit stops first, and its overlay is back by the time that is heard.
    bool oldOverlayShownWhenStopped = false;
    QObject::connect(&plot, &ScatterPlot::polygonEditingStopped, [&](int id) {
        oldOverlayShownWhenStopped
            = id == 1 && plot.polygonOverlays().at(1)->isVisible() && !plot.isEditing();
    });
    plot.startPolygonEdit(2, polygonOf({ QPointF(5, 5), QPointF(7, 5), QPointF(6, 7) }));
    ASSERT_EQ(editStopped.count(), 1);
    EXPECT_EQ(editStopped.at(0).at(0).toInt(), 1);
    EXPECT_TRUE(oldOverlayShownWhenStopped);
    EXPECT_EQ(plot.editId(), 2);
    EXPECT_FALSE(plot.polygonOverlays().at(2)->isVisible());
    // An overlay redrawn for the id under edit stays hidden.
    plot.addPolygonOverlay(2, polygonOf({ QPointF(5, 5), QPointF(7, 5), QPointF(6, 7) }), true);
    EXPECT_FALSE(plot.polygonOverlays().at(2)->isVisible());

    plot.startPolygonDraw();
    EXPECT_EQ(editStopped.count(), 2);
    EXPECT_FALSE(plot.isEditing());
    EXPECT_TRUE(plot.isDrawing());
    click(pixelOf(3, 3));

    plot.startPolygonEdit(2, polygonOf({ QPointF(5, 5), QPointF(7, 5), QPointF(6, 7) }));
    EXPECT_FALSE(plot.isDrawing());
    EXPECT_EQ(drawStopped.count(), 1);
    EXPECT_FALSE(plot.drawingCurve()->isVisible());
    EXPECT_TRUE(plot.isEditing());
}

TEST_F(ScatterPlotMouse, ClickPicksAndADragOverFivePixelsZooms)
{
    QSignalSpy clicked(&plot, &ScatterPlot::pointClicked);
    const QPoint origin = pixelOf(5, 5);
    // Exactly on the threshold: a pick of the point under the press.
    press(origin);
    move(origin + QPoint(5, 5), Qt::LeftButton);
    release(origin + QPoint(5, 5));
    ASSERT_EQ(clicked.count(), 1);
    EXPECT_EQ(clicked.at(0).at(0).toInt(), 1);
    EXPECT_EQ(xRange(), std::make_pair(0.0, 10.0));

    // One pixel more each way: a zoom to the band, and no pick.
    const QPoint end = origin + QPoint(6, -6);
    const QPointF low = dataAt(QPoint(origin.x(), origin.y()));
    const QPointF high = dataAt(end);
    drag(origin, end);
    EXPECT_EQ(clicked.count(), 1);
    EXPECT_NEAR(xRange().first, low.x(), 1e-9);
    EXPECT_NEAR(xRange().second, high.x(), 1e-9);
    EXPECT_NEAR(yRange().first, low.y(), 1e-9);
    EXPECT_NEAR(yRange().second, high.y(), 1e-9);
    EXPECT_FALSE(plot.axisAutoScale(QwtPlot::xBottom));
}

TEST_F(ScatterPlotMouse, RightPressAndDoubleClickResetTheZoom)
{
    plot.setAxisScale(QwtPlot::xBottom, 2.0, 4.0);
    plot.setAxisScale(QwtPlot::yLeft, 2.0, 4.0);
    press(pixelOf(3, 3), Qt::RightButton);
    EXPECT_TRUE(plot.axisAutoScale(QwtPlot::xBottom));
    EXPECT_TRUE(plot.axisAutoScale(QwtPlot::yLeft));

    plot.setAxisScale(QwtPlot::xBottom, 2.0, 4.0);
    plot.replot();
    doubleClick(pixelOf(3, 3));
    EXPECT_TRUE(plot.axisAutoScale(QwtPlot::xBottom));

    // While editing, a double click is taken by the edit and leaves the zoom alone.
    plot.setAxisScale(QwtPlot::xBottom, 2.0, 4.0);
    plot.replot();
    editSquare();
    doubleClick(pixelOf(3, 5));
    EXPECT_FALSE(plot.axisAutoScale(QwtPlot::xBottom));
}

TEST_F(ScatterPlotMouse, ShiftDragPansBothAxesWithTheHand)
{
    const QPoint from = pixelOf(5, 5);
    const QPoint to = from + QPoint(60, -40);
    const double dx = dataAt(to).x() - dataAt(from).x();
    const double dy = dataAt(to).y() - dataAt(from).y();
    // One move: each move pans by the values under the pixels as the axes stand then, and the
    // axes' labels, and with them the canvas, may change width after it.
    press(from, Qt::LeftButton, Qt::ShiftModifier);
    EXPECT_EQ(canvas->cursor().shape(), Qt::ClosedHandCursor);
    move(to, Qt::LeftButton);
    release(to);
    EXPECT_NEAR(xRange().first, 0.0 - dx, 1e-9);
    EXPECT_NEAR(xRange().second, 10.0 - dx, 1e-9);
    EXPECT_NEAR(yRange().first, 0.0 - dy, 1e-9);
    EXPECT_NEAR(yRange().second, 10.0 - dy, 1e-9);
    EXPECT_EQ(canvas->cursor().shape(), Qt::ArrowCursor);
}

TEST_F(ScatterPlotMouse, WheelZoomsAboutTheMouseInEveryState)
{
    const QPoint at = pixelOf(2, 6);
    const QPointF centre = dataAt(at);
    wheel(at, 120);
    EXPECT_NEAR(xRange().first, centre.x() - centre.x() * 0.8, 1e-9);
    EXPECT_NEAR(xRange().second, centre.x() + (10.0 - centre.x()) * 0.8, 1e-9);
    EXPECT_NEAR(yRange().first, centre.y() - centre.y() * 0.8, 1e-9);
    EXPECT_NEAR(yRange().second, centre.y() + (10.0 - centre.y()) * 0.8, 1e-9);

    fixScales(0.0, 10.0, 0.0, 10.0);
    plot.startPolygonDraw();
    wheel(at, -120);
    EXPECT_NEAR(xRange().first, centre.x() - centre.x() * 1.25, 1e-9);
    EXPECT_NEAR(xRange().second, centre.x() + (10.0 - centre.x()) * 1.25, 1e-9);
    EXPECT_TRUE(plot.isDrawing());
    EXPECT_TRUE(plot.drawnVertices().isEmpty());
}

TEST_F(ScatterPlotMouse, WheelOutOnALogAxisKeepsItsBoundsPositive)
{
    plot.setAxisScaleEngine(QwtPlot::xBottom, new QwtLogScaleEngine(10));
    fixScales(1.0, 10000.0, 0.0, 10.0);
    // About the value 1000, a zoom out by 1.25 in data units would put the lower bound at -248.75.
    const QPoint at = pixelOf(1000.0, 5.0);
    const QPointF centre = dataAt(at);
    wheel(at, -120);
    EXPECT_GT(xRange().first, 0.0);
    // Instead the axis zooms on its own scale: the decades about the mouse grow by 1.25.
    const double c = std::log10(centre.x());
    EXPECT_NEAR(std::log10(xRange().first), c - c * 1.25, 1e-6);
    EXPECT_NEAR(std::log10(xRange().second), c + (4.0 - c) * 1.25, 1e-6);
    // Zooming in stays in data units there, as on every axis.
    fixScales(1.0, 10000.0, 0.0, 10.0);
    wheel(at, 120);
    EXPECT_NEAR(xRange().first, centre.x() - (centre.x() - 1.0) * 0.8, 1e-6);
}

TEST_F(ScatterPlotMouse, HoverIsReportedOnlyWhileDrawingOrEditing)
{
    QSignalSpy hovered(&plot, &ScatterPlot::pointHovered);
    move(pixelOf(5, 5));
    EXPECT_EQ(hovered.count(), 0);

    plot.startPolygonDraw();
    move(pixelOf(5, 5));
    move(pixelOf(5.1, 5.1));
    ASSERT_EQ(hovered.count(), 1);
    EXPECT_EQ(hovered.at(0).at(0).toInt(), 1);
    // Away from every point nothing is reported, and coming back reports again.
    move(pixelOf(3.5, 6.5));
    move(pixelOf(8, 8));
    ASSERT_EQ(hovered.count(), 2);
    EXPECT_EQ(hovered.at(1).at(0).toInt(), 2);
    plot.cancelPolygonDraw();

    editSquare();
    move(pixelOf(8, 8));
    ASSERT_EQ(hovered.count(), 3);
    EXPECT_EQ(canvas->cursor().shape(), Qt::OpenHandCursor);
    move(pixelOf(8, 5));
    EXPECT_EQ(canvas->cursor().shape(), Qt::CrossCursor);
    move(pixelOf(5, 5));
    EXPECT_EQ(canvas->cursor().shape(), Qt::ArrowCursor);
    plot.stopPolygonEdit();
    move(pixelOf(2, 2));
    EXPECT_EQ(hovered.count(), 4);
    move(pixelOf(8, 8));
    EXPECT_EQ(hovered.count(), 4);
}

TEST_F(ScatterPlotMouse, TheEditedPolygonIsDrawnWhereItsVerticesAreNowAndNowhereElse)
{
    const auto isRed
        = [](QRgb pixel) { return qRed(pixel) > 200 && qGreen(pixel) < 90 && qBlue(pixel) < 90; };
    editSquare();
    const QPoint before = pixelOf(8, 2);
    const QPoint after = pixelOf(9, 4);
    EXPECT_TRUE(isRed(canvas->grab().toImage().pixel(before)));
    EXPECT_FALSE(isRed(canvas->grab().toImage().pixel(after)));

    // Through the window, as the window system delivers it: the layer that draws the polygon lies
    // over the canvas and must let the press through.
    QTest::mousePress(plot.windowHandle(), Qt::LeftButton, Qt::NoModifier, canvas->mapTo(&plot, before));
    EXPECT_EQ(plot.draggedVertex(), 1);
    move(after, Qt::LeftButton);
    QApplication::processEvents();
    QImage image = canvas->grab().toImage();
    EXPECT_TRUE(isRed(image.pixel(after)));
    EXPECT_FALSE(isRed(image.pixel(before)));

    release(after);
    QApplication::processEvents();
    image = canvas->grab().toImage();
    EXPECT_TRUE(isRed(image.pixel(after)));
    EXPECT_FALSE(isRed(image.pixel(before)));

    plot.stopPolygonEdit();
    QApplication::processEvents();
    EXPECT_FALSE(isRed(canvas->grab().toImage().pixel(after)));
}
