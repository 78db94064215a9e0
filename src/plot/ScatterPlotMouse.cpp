// The scatter plot's mouse and keys: navigation (rubber band zoom, shift-drag pan, wheel, reset),
// picking, and the drawing and editing of polygon gates. One event filter on the canvas is the
// entry point; the state decides what an event means:
//   Idle     left press starts a rubber band (a click picks a point), shift + left pans, a right
//            press or a left double click resets the zoom;
//   Drawing  each left press adds a vertex, a double click closes the polygon, Esc cancels;
//   Editing  a left press takes a vertex, or inserts one on an edge, and drags it; a right press
//            deletes a vertex; Esc ends the edit.
// The wheel zooms about the mouse in every state.
#include "plot/CurveOverlay.h"
#include "plot/LiftableCurve.h"
#include "plot/PlotNavigation.h"
#include "plot/PolygonHandles.h"
#include "plot/ScatterPlot.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QRubberBand>
#include <QWheelEvent>
#include <cmath>
#include <qwt_plot_curve.h>
#include <qwt_plot_shapeitem.h>
#include <qwt_scale_div.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_map.h>

namespace Tessaly {

namespace {

QPoint eventPosition(const QMouseEvent* event)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return event->position().toPoint();
#else
    return event->pos();
#endif
}

} // namespace

QPointF ScatterPlot::toData(const QPoint& canvasPos) const
{
    return QPointF(
        invTransform(QwtPlot::xBottom, canvasPos.x()), invTransform(QwtPlot::yLeft, canvasPos.y()));
}

QPolygonF ScatterPlot::toPixels(const QPolygonF& vertices) const
{
    const QwtScaleMap xMap = canvasMap(QwtPlot::xBottom);
    const QwtScaleMap yMap = canvasMap(QwtPlot::yLeft);
    QPolygonF pixels(vertices.size());
    for (int i = 0; i < vertices.size(); ++i)
        pixels[i] = QPointF(xMap.transform(vertices[i].x()), yMap.transform(vertices[i].y()));
    return pixels;
}

bool ScatterPlot::eventFilter(QObject* object, QEvent* event)
{
    if (object != canvas())
        return QwtPlot::eventFilter(object, event);

    bool consumed = false;
    switch (event->type()) {
    case QEvent::KeyPress:
        consumed = handleKeyPress(static_cast<QKeyEvent*>(event));
        break;
    case QEvent::MouseButtonPress:
        consumed = handlePress(static_cast<QMouseEvent*>(event));
        break;
    case QEvent::MouseButtonDblClick:
        consumed = handleDoubleClick(static_cast<QMouseEvent*>(event));
        break;
    case QEvent::MouseMove:
        consumed = handleMove(static_cast<QMouseEvent*>(event));
        break;
    case QEvent::MouseButtonRelease:
        consumed = handleRelease(static_cast<QMouseEvent*>(event));
        break;
    case QEvent::Wheel:
        consumed = handleWheel(static_cast<QWheelEvent*>(event));
        break;
    default:
        break;
    }
    return consumed || QwtPlot::eventFilter(object, event);
}

// ---------------------------------------------------------------------------------------------
// Events

bool ScatterPlot::handleKeyPress(const QKeyEvent* event)
{
    if (event->key() != Qt::Key_Escape)
        return false;
    if (drawing) {
        cancelPolygonDraw();
        return true;
    }
    if (editing) {
        // Also in the middle of a drag: the edit ends, and what the last polygonEdited reported
        // stands; the drag since the press is dropped.
        stopPolygonEdit();
        return true;
    }
    return false;
}

bool ScatterPlot::handlePress(const QMouseEvent* event)
{
    const QPoint pos = eventPosition(event);
    if (drawing) {
        if (event->button() == Qt::LeftButton) {
            drawVertices << toData(pos);
            updateDrawCurve();
            return true;
        }
        if (event->button() == Qt::RightButton) {
            resetZoom();
            return true;
        }
        return false;
    }
    if (editing)
        return pressWhileEditing(event);

    if (event->button() == Qt::RightButton) {
        resetZoom();
        return true;
    }
    if (event->button() != Qt::LeftButton)
        return false;
    if (event->modifiers() & Qt::ShiftModifier) {
        panning = true;
        panLast = pos;
        canvas()->setCursor(Qt::ClosedHandCursor);
        return true;
    }
    zooming = true;
    zoomOrigin = pos;
    if (!rubberBand)
        rubberBand = new QRubberBand(QRubberBand::Rectangle, canvas());
    rubberBand->setGeometry(QRect(zoomOrigin, QSize()));
    // The press goes on to the library, like every event not taken here.
    return false;
}

bool ScatterPlot::pressWhileEditing(const QMouseEvent* event)
{
    const QPoint pos = eventPosition(event);
    if (event->button() == Qt::LeftButton) {
        const QPolygonF pixels = toPixels(editVertices);
        const int vertex = vertexAt(pixels, pos);
        if (vertex >= 0) {
            beginVertexDrag(vertex);
        } else {
            const int edge = edgeAt(pixels, pos);
            if (edge >= 0)
                beginVertexDrag(insertVertexOnEdge(editVertices, edge, toData(pos)));
        }
    } else if (event->button() == Qt::RightButton) {
        const int vertex = vertexAt(toPixels(editVertices), pos);
        if (vertex >= 0 && dragVertex < 0 && removeVertexKeepingTriangle(editVertices, vertex)) {
            updateEditCurve();
            emit polygonEdited(editedId, editVertices);
        }
    }
    // While editing, no press reaches the zoom, the pan or the picker.
    return true;
}

bool ScatterPlot::handleDoubleClick(const QMouseEvent* event)
{
    if (drawing) {
        // The first click of the double click has placed its vertex as a press; this event
        // places none.
        if (drawVertices.size() < minimumPolygonVertices)
            return true;
        const QPolygonF polygon = drawVertices;
        clearDrawing();
        replot();
        emit polygonCompleted(polygon);
        emit polygonDrawingStopped();
        return true;
    }
    if (editing)
        return true;
    if (event->button() == Qt::LeftButton) {
        resetZoom();
        return true;
    }
    return false;
}

bool ScatterPlot::handleMove(const QMouseEvent* event)
{
    const QPoint pos = eventPosition(event);
    if (panning) {
        panBy(pos - panLast);
        panLast = pos;
        return true;
    }
    if (zooming) {
        const QRect band = rubberBandRect(zoomOrigin, pos);
        if (isRubberBandVisible(band))
            rubberBand->show();
        rubberBand->setGeometry(band);
        return true;
    }
    if (editing && dragVertex >= 0) {
        editVertices[dragVertex] = toData(pos);
        updateEditCurve();
        return true;
    }
    if (editing)
        updateEditCursor(pos);
    if (drawing || editing)
        hover(pos);
    return false;
}

bool ScatterPlot::handleRelease(const QMouseEvent* event)
{
    const QPoint pos = eventPosition(event);
    if (panning) {
        panning = false;
        canvas()->setCursor(drawing ? Qt::CrossCursor : Qt::ArrowCursor);
        return true;
    }
    if (zooming && event->button() == Qt::LeftButton) {
        zooming = false;
        rubberBand->hide();
        if (isRubberBandDrag(zoomOrigin, pos)) {
            zoomToRect(rubberBandRect(zoomOrigin, pos));
        } else {
            const int index = findNearestPoint(toData(pos));
            if (index >= 0)
                emit pointClicked(index);
        }
        return true;
    }
    if (editing && dragVertex >= 0 && event->button() == Qt::LeftButton) {
        dragVertex = -1;
        canvas()->setCursor(Qt::ArrowCursor);
        emit polygonEdited(editedId, editVertices);
        return true;
    }
    return false;
}

bool ScatterPlot::handleWheel(const QWheelEvent* event)
{
    const double factor = wheelZoomFactor(event->angleDelta().y());
    const QPointF centre = toData(event->position().toPoint());
    zoomAxisAbout(QwtPlot::xBottom, centre.x(), factor);
    zoomAxisAbout(QwtPlot::yLeft, centre.y(), factor);
    replot();
    return true;
}

// Hover reports a point only while a polygon is drawn or edited, where the person aims at
// something; an idle plot stays quiet although the canvas tracks the mouse.
void ScatterPlot::hover(const QPoint& canvasPos)
{
    if (panning || zooming)
        return;
    const int index = findNearestPoint(toData(canvasPos));
    if (index == hoverIndex)
        return;
    hoverIndex = index;
    if (index >= 0)
        emit pointHovered(index);
}

void ScatterPlot::updateEditCursor(const QPoint& canvasPos)
{
    const QPolygonF pixels = toPixels(editVertices);
    if (vertexAt(pixels, canvasPos) >= 0)
        canvas()->setCursor(Qt::OpenHandCursor);
    else if (edgeAt(pixels, canvasPos) >= 0)
        canvas()->setCursor(Qt::CrossCursor);
    else
        canvas()->setCursor(Qt::ArrowCursor);
}

// ---------------------------------------------------------------------------------------------
// Navigation

void ScatterPlot::panBy(const QPoint& delta)
{
    for (const auto& [axis, pixels] :
        { std::pair { int(QwtPlot::xBottom), delta.x() }, std::pair { int(QwtPlot::yLeft), delta.y() } }) {
        const QwtScaleDiv& div = axisScaleDiv(axis);
        const AxisRange range { div.lowerBound(), div.upperBound() };
        AxisRange moved = shiftedBy(range, panShift(canvasMap(axis), pixels));
        // On a log axis an equal shift of both bounds in data units can push the lower one to zero
        // or below, which the axis cannot show; there the bounds move by the same amount on the
        // axis's own scale instead, which keeps the plot under the hand.
        if (dynamic_cast<const QwtLogScaleEngine*>(axisScaleEngine(axis)) && !fitsLogAxis(moved)) {
            const QwtScaleMap map = canvasMap(axis);
            moved = { map.invTransform(map.transform(range.lower) - pixels),
                map.invTransform(map.transform(range.upper) - pixels) };
        }
        setAxisRange(axis, moved.lower, moved.upper);
    }
    replot();
}

void ScatterPlot::zoomToRect(const QRect& band)
{
    setAxisRange(QwtPlot::xBottom, invTransform(QwtPlot::xBottom, band.left()),
        invTransform(QwtPlot::xBottom, band.right()));
    setAxisRange(QwtPlot::yLeft, invTransform(QwtPlot::yLeft, band.bottom()),
        invTransform(QwtPlot::yLeft, band.top()));
    replot();
}

void ScatterPlot::zoomAxisAbout(int axis, double centre, double factor)
{
    const QwtScaleDiv& div = axisScaleDiv(axis);
    const AxisRange range { div.lowerBound(), div.upperBound() };
    AxisRange zoomed = zoomedAbout(range, centre, factor);
    // Zooming out on a log axis about a centre far above the lower bound drives that bound below
    // zero; the axis then zooms by the same factor on its own, logarithmic, scale.
    if (dynamic_cast<const QwtLogScaleEngine*>(axisScaleEngine(axis)) && !fitsLogAxis(zoomed)
        && fitsLogAxis(range) && centre > 0.0) {
        const AxisRange logRange { std::log10(range.lower), std::log10(range.upper) };
        const AxisRange logZoomed = zoomedAbout(logRange, std::log10(centre), factor);
        zoomed = { std::pow(10.0, logZoomed.lower), std::pow(10.0, logZoomed.upper) };
    }
    setAxisRange(axis, zoomed.lower, zoomed.upper);
}

void ScatterPlot::setAxisRange(int axis, double lower, double upper)
{
    if (!std::isfinite(lower) || !std::isfinite(upper) || lower == upper)
        return;
    // A step of 0 lets the scale engine choose the ticks.
    setAxisScale(axis, lower, upper);
}

// ---------------------------------------------------------------------------------------------
// Drawing

void ScatterPlot::startPolygonDraw()
{
    stopPolygonEdit();
    if (zooming) {
        zooming = false;
        rubberBand->hide();
    }
    drawing = true;
    drawVertices.clear();
    drawCurve->setSamples(QVector<QPointF>());
    drawCurve->setVisible(true);
    canvas()->setCursor(Qt::CrossCursor);
    canvas()->setFocus(Qt::OtherFocusReason);
    hoverIndex = -1;
    replot();
}

void ScatterPlot::cancelPolygonDraw()
{
    if (!drawing)
        return;
    clearDrawing();
    replot();
    emit polygonDrawingStopped();
}

void ScatterPlot::clearDrawing()
{
    drawing = false;
    drawVertices.clear();
    drawCurve->setVisible(false);
    drawCurve->setSamples(QVector<QPointF>());
    canvas()->setCursor(Qt::ArrowCursor);
    hoverIndex = -1;
}

void ScatterPlot::updateDrawCurve()
{
    // Open: the polygon closes only when it is completed.
    drawCurve->setSamples(drawVertices);
    replot();
}

// ---------------------------------------------------------------------------------------------
// Editing

// While a polygon is edited, its curve is drawn on a layer over the canvas rather than by the
// plot: a moved, inserted or deleted vertex repaints that layer alone, and the points below, which
// the canvas keeps as a picture, are not drawn again until the edit is reported and the plot
// refreshed. The curve stays an item of the plot, so the axes' automatic scale counts it as before.
void ScatterPlot::startPolygonEdit(int id, const QPolygonF& polygon)
{
    if (editing && editedId != id) {
        // The old polygon's overlay comes back before anyone hears that its edit stopped, so that
        // overlays redrawn in answer include it.
        const int oldId = editedId;
        editing = false;
        editedId = -1;
        dragVertex = -1;
        if (auto old = overlays.find(oldId); old != overlays.end())
            old->second->setVisible(true);
        emit polygonEditingStopped(oldId);
    }
    cancelPolygonDraw();
    editing = true;
    editedId = id;
    editVertices = polygon;
    dragVertex = -1;
    if (auto overlay = overlays.find(id); overlay != overlays.end())
        overlay->second->setVisible(false);
    editCurve->setVisible(true);
    editCurve->setLifted(true);
    dragOverlay->show();
    canvas()->setCursor(Qt::ArrowCursor);
    canvas()->setFocus(Qt::OtherFocusReason);
    editCurve->setSamples(closedOutline(editVertices));
    // Once, for the overlay that the edit curve replaces.
    replot();
    dragOverlay->updateOverlay();
}

void ScatterPlot::stopPolygonEdit()
{
    if (!editing)
        return;
    const int id = editedId;
    editing = false;
    editedId = -1;
    editVertices.clear();
    dragVertex = -1;
    dragOverlay->hide();
    editCurve->setLifted(false);
    editCurve->setSamples(QVector<QPointF>());
    editCurve->setVisible(false);
    if (auto overlay = overlays.find(id); overlay != overlays.end())
        overlay->second->setVisible(true);
    canvas()->setCursor(Qt::ArrowCursor);
    hoverIndex = -1;
    replot();
    emit polygonEditingStopped(id);
}

void ScatterPlot::updateEditCurve()
{
    editCurve->setSamples(closedOutline(editVertices));
    dragOverlay->updateOverlay();
}

void ScatterPlot::beginVertexDrag(int vertex)
{
    dragVertex = vertex;
    canvas()->setCursor(Qt::ClosedHandCursor);
    updateEditCurve();
}

} // namespace Tessaly
