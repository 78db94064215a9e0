#include "plot/ScatterPlot.h"

#include "core/AxisRange.h"
#include "core/ParallelBlocks.h"
#include "core/ScaleModes.h"
#include "plot/ColorBarPainter.h"
#include "plot/ColorMaps.h"
#include "plot/CurveOverlay.h"
#include "plot/DataBoundsItem.h"
#include "plot/HighlightSymbol.h"
#include "plot/LiftableCurve.h"
#include "plot/PlainPointsCurve.h"
#include "plot/PlotLayoutAccess.h"
#include "plot/PseudoLogScaleEngine.h"
#include "plot/RoundSpectroCurve.h"
#include "plot/ScatterPlotPicker.h"

#include <QFont>
#include <QFrame>
#include <QPainterPath>
#include <QPen>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <limits>
#include <qwt_color_map.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_panner.h>
#include <qwt_plot_shapeitem.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>
#include <qwt_symbol.h>
#include <qwt_text.h>

namespace Tessaly {

namespace {

// Points per block when the curves' samples are filled on the thread pool.
constexpr std::size_t minimumSampleBlock = 100000;

// The pick radius is 5 % of each axis, measured separately, so that a click lands on a point in
// a sparse plot as well as in a dense one, whatever the aspect of the canvas.
constexpr double pickRadius = 0.05;

const QColor plainColor(0, 68, 108);
const QColor polygonColor(255, 0, 0);
const QColor disabledPolygonColor(160, 160, 160);
const QColor isoelasticLineColor(180, 180, 180);
const QColor isoelasticLabelColor(150, 150, 150);

constexpr double contourZ = 40.0;
constexpr double overlayZ = 50.0;
// The selected event stays on top of contours and gates, below a polygon being drawn.
constexpr double highlightZ = 90.0;
constexpr double drawCurveZ = 100.0;
constexpr double editCurveZ = 101.0;
constexpr double isoelasticLineZ = -10.0;
constexpr double isoelasticLabelZ = -9.0;
constexpr int colorBarWidth = 10;

// Every pen of the plot has square caps and bevel joins.
QPen itemPen(const QColor& color, double width, Qt::PenStyle style = Qt::SolidLine)
{
    return QPen(QBrush(color), width, style, Qt::SquareCap, Qt::BevelJoin);
}

QwtSymbol* ellipseSymbol(const QColor& fill, const QPen& outline, int size)
{
    return new QwtSymbol(QwtSymbol::Ellipse, QBrush(fill), outline, QSize(size, size));
}

void setAxisShown(QwtPlot* plot, int axis, bool shown)
{
#if QWT_VERSION >= 0x060200
    plot->setAxisVisible(axis, shown);
#else
    plot->enableAxis(axis, shown);
#endif
}

bool isAxisShown(const QwtPlot* plot, int axis)
{
#if QWT_VERSION >= 0x060200
    return plot->isAxisVisible(axis);
#else
    return plot->axisEnabled(axis);
#endif
}

// The colour range of the values; a constant vector gets [v, v + 1] so that the map has a width.
QwtInterval colorRangeOf(const std::vector<double>& values)
{
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const double v : values) {
        if (v < low)
            low = v;
        if (v > high)
            high = v;
    }
    if (!(low <= high))
        return QwtInterval(0.0, 1.0);
    if (low == high)
        high = low + 1.0;
    return QwtInterval(low, high);
}

QString modulusLabel(double value)
{
    return QString::number(value, 'f', value < 1.0 ? 2 : 1) + QLatin1String(ScatterPlotText::modulusUnit);
}

} // namespace

ScatterPlot::ScatterPlot(QWidget* parent)
    : QwtPlot(parent)
{
    setupPlot();
}

ScatterPlot::~ScatterPlot() = default;

void ScatterPlot::setupPlot()
{
    setTitle(QString::fromLatin1(ScatterPlotText::title));
    setCanvasBackground(Qt::white);
    setMinimumSize(300, 250);
    setAxisShown(this, QwtPlot::yRight, false);
    new ColorBarPainter(axisWidget(QwtPlot::yRight));

    auto* grid = new QwtPlotGrid;
    grid->setPen(itemPen(Qt::gray, 0.0, Qt::DotLine));
    grid->attach(this);

    // Every point is drawn, so the curve must not weed out points that fall on the same pixel:
    // with a translucent fill they darken where they pile up.
    plainCurve = new PlainPointsCurve;
    plainCurve->setStyle(QwtPlotCurve::NoCurve);
    plainCurve->setPaintAttribute(QwtPlotCurve::FilterPoints, false);
    plainCurve->setRenderHint(QwtPlotItem::RenderAntialiased, true);
    QColor plainFill = plainColor;
    plainFill.setAlpha(100);
    plainCurve->setSymbol(ellipseSymbol(plainFill, itemPen(plainColor, 1.0), 6));
    plainCurve->attach(this);

    colorCurve = new RoundSpectroCurve;
    colorCurve->setPenWidth(6.0);
    colorCurve->setColorMap(colorMapFor(colorMapIndex));
    colorCurve->setVisible(false);
    colorCurve->attach(this);

    highlightCurve = new QwtPlotCurve;
    highlightCurve->setStyle(QwtPlotCurve::NoCurve);
    highlightCurve->setRenderHint(QwtPlotItem::RenderAntialiased, true);
    highlightCurve->setSymbol(new HighlightSymbol);
    highlightCurve->setZ(highlightZ);
    highlightCurve->setVisible(false);
    highlightCurve->attach(this);

    // The points leave the auto scale to the bounds item, which knows what each axis can draw.
    for (QwtPlotItem* item : std::initializer_list<QwtPlotItem*> { plainCurve, colorCurve, highlightCurve })
        item->setItemAttribute(QwtPlotItem::AutoScale, false);
    dataBounds = new DataBoundsItem;
    dataBounds->attach(this);
    // An empty plot starts with the same neutral range it returns to when it is emptied.
    for (const int axis : { int(QwtPlot::xBottom), int(QwtPlot::yLeft) }) {
        setAxisScale(axis, 0.0, 1.0);
        setAxisAutoScale(axis, true);
    }

    QColor polygonPenColor = polygonColor;
    polygonPenColor.setAlpha(200);
    drawCurve = new QwtPlotCurve;
    editCurve = new LiftableCurve;
    for (QwtPlotCurve* curve : { drawCurve, static_cast<QwtPlotCurve*>(editCurve) }) {
        curve->setStyle(QwtPlotCurve::Lines);
        curve->setPen(itemPen(polygonPenColor, 2.0, Qt::DashLine));
        curve->setSymbol(ellipseSymbol(Qt::red, itemPen(Qt::red, 1.0), 8));
        curve->setRenderHint(QwtPlotItem::RenderAntialiased, true);
        curve->setItemAttribute(QwtPlotItem::Legend, false);
        curve->setVisible(false);
        curve->attach(this);
    }
    drawCurve->setZ(drawCurveZ);
    editCurve->setZ(editCurveZ);
    dragOverlay = new CurveOverlay(this, editCurve);
    dragOverlay->hide();

    picker = new ScatterPlotPicker(canvas());
    connect(picker, &ScatterPlotPicker::pointSelected, this, &ScatterPlot::onPointSelected);

    panner = new QwtPlotPanner(canvas());
    panner->setMouseButton(Qt::MiddleButton);

    canvas()->installEventFilter(this);
    canvas()->setFocusPolicy(Qt::StrongFocus);
    canvas()->setMouseTracking(true);
}

// ---------------------------------------------------------------------------------------------
// Data

void ScatterPlot::setData(const std::vector<double>& x, const std::vector<double>& y, const QString& xLabel,
    const QString& yLabel, const std::vector<double>& colors, const QString& colorLabel)
{
    xData = x;
    yData = y;
    colorData = colors;
    if (x.size() != y.size() || x.empty()) {
        clearData();
        return;
    }
    updateDataBounds();
    setAxisTitle(QwtPlot::xBottom, xLabel);
    setAxisTitle(QwtPlot::yLeft, yLabel);

    // The curves' own copies are filled in blocks on the thread pool.
    const std::size_t blocks = parallelBlockCount(x.size(), minimumSampleBlock);
    if (!hasColors()) {
        QPolygonF points(static_cast<int>(x.size()));
        runInBlocks(x.size(), blocks, [&](std::size_t, std::size_t first, std::size_t last) {
            for (std::size_t i = first; i < last; ++i)
                points[static_cast<int>(i)] = QPointF(x[i], y[i]);
        });
        plainCurve->setSamples(points);
        plainCurve->setVisible(true);
        colorCurve->setSamples(QVector<QwtPoint3D>());
        colorCurve->setVisible(false);
        hideColorBar();
    } else {
        QVector<QwtPoint3D> samples(static_cast<int>(x.size()));
        runInBlocks(x.size(), blocks, [&](std::size_t, std::size_t first, std::size_t last) {
            for (std::size_t i = first; i < last; ++i)
                samples[static_cast<int>(i)] = QwtPoint3D(x[i], y[i], colors[i]);
        });
        colorCurve->setSamples(samples);
        colorCurve->setVisible(true);
        plainCurve->setSamples(QVector<QPointF>());
        plainCurve->setVisible(false);
        setAxisTitle(QwtPlot::yRight, colorLabel);
        applyColorMap();
        showColorBar();
    }
    if (dataHidden) {
        plainCurve->setVisible(false);
        colorCurve->setVisible(false);
        hideColorBar();
    }
    replot();
}

void ScatterPlot::clearData()
{
    xData.clear();
    yData.clear();
    colorData.clear();
    plainCurve->setSamples(QVector<QPointF>());
    colorCurve->setSamples(QVector<QwtPoint3D>());
    plainCurve->setVisible(true);
    colorCurve->setVisible(false);
    hideColorBar();
    highlightCurve->setVisible(false);
    // The contours go before the replot, so that none stays on the canvas.
    removeContourCurves();
    updateDataBounds();
    setAxisTitle(QwtPlot::yRight, QString());
    for (const int axis : { int(QwtPlot::xBottom), int(QwtPlot::yLeft) }) {
        setAxisTitle(axis, QString());
        // With nothing to scale to, auto scale keeps the range it was last given: a neutral one
        // that the axis's engine can divide (a log axis has no zero).
        const bool log = scaleModes[static_cast<std::size_t>(axis)] == LogScale;
        setAxisScale(axis, log ? 1.0 : 0.0, log ? 10.0 : 1.0);
        setAxisAutoScale(axis, true);
    }
    replot();
}

bool ScatterPlot::hasColors() const
{
    return !colorData.empty() && colorData.size() == xData.size();
}

void ScatterPlot::highlightPoint(int plotIndex)
{
    if (plotIndex >= 0 && static_cast<std::size_t>(plotIndex) < xData.size()) {
        const auto i = static_cast<std::size_t>(plotIndex);
        highlightCurve->setSamples(QVector<QPointF> { QPointF(xData[i], yData[i]) });
        highlightCurve->setVisible(true);
    } else {
        highlightCurve->setVisible(false);
    }
    replot();
}

void ScatterPlot::clearHighlight()
{
    highlightCurve->setVisible(false);
    replot();
}

void ScatterPlot::onPointSelected(int index)
{
    highlightPoint(index);
    emit pointClicked(index);
}

void ScatterPlot::setDataVisible(bool visible)
{
    dataHidden = !visible;
    if (visible) {
        if (hasColors()) {
            colorCurve->setVisible(true);
            plainCurve->setVisible(false);
            // The colour bar belongs to coloured points: it comes back with them.
            showColorBar();
        } else if (!xData.empty()) {
            plainCurve->setVisible(true);
            colorCurve->setVisible(false);
        }
    } else {
        plainCurve->setVisible(false);
        colorCurve->setVisible(false);
        hideColorBar();
    }
    replot();
}

// ---------------------------------------------------------------------------------------------
// Colours and axes

void ScatterPlot::setColorMapIndex(int index)
{
    if (index != colorMapIndex)
        colorMapIndex = index;
    if (hasColors() && !dataHidden) {
        applyColorMap();
        if (axisWidget(QwtPlot::yRight)->isColorBarEnabled())
            axisWidget(QwtPlot::yRight)->setColorMap(colorCurve->colorRange(), colorMapFor(colorMapIndex));
    }
    replot();
}

void ScatterPlot::applyColorMap()
{
    colorCurve->setColorMap(colorMapFor(colorMapIndex));
    colorCurve->setColorRange(colorRangeOf(colorData));
}

void ScatterPlot::showColorBar()
{
    const QwtInterval range = colorCurve->colorRange();
    setAxisShown(this, QwtPlot::yRight, true);
    setAxisScale(QwtPlot::yRight, range.minValue(), range.maxValue());
    QwtScaleWidget* bar = axisWidget(QwtPlot::yRight);
    bar->setColorBarEnabled(true);
    bar->setColorBarWidth(colorBarWidth);
    bar->setColorMap(range, colorMapFor(colorMapIndex));
}

void ScatterPlot::hideColorBar()
{
    axisWidget(QwtPlot::yRight)->setColorBarEnabled(false);
    setAxisShown(this, QwtPlot::yRight, false);
}

void ScatterPlot::setAxisScaleMode(int axis, int mode)
{
    QwtScaleEngine* engine = nullptr;
    if (mode == LogScale)
        engine = new QwtLogScaleEngine(10);
    else if (mode == PseudoLogScale)
        engine = new PseudoLogScaleEngine(100.0, 0.5);
    else
        engine = new QwtLinearScaleEngine(10);
    setAxisScaleEngine(axis, engine);
    if (axis >= 0 && axis < QwtPlot::axisCnt)
        scaleModes[static_cast<std::size_t>(axis)] = mode;
    updateDataBounds();
    if (xData.empty() && (axis == QwtPlot::xBottom || axis == QwtPlot::yLeft)) {
        const bool log = mode == LogScale;
        setAxisScale(axis, log ? 1.0 : 0.0, log ? 10.0 : 1.0);
    }
    setAxisAutoScale(axis, true);
    replot();
}

int ScatterPlot::axisScaleMode(int axis) const
{
    return axis >= 0 && axis < QwtPlot::axisCnt ? scaleModes[static_cast<std::size_t>(axis)] : LinearScale;
}

void ScatterPlot::updateDataBounds()
{
    if (xData.size() != yData.size() || xData.empty()) {
        dataBounds->setRanges(AxisRange {}, AxisRange {});
        return;
    }
    // The axes are independent: for many points both are measured at once.
    const int xMode = scaleModes[QwtPlot::xBottom];
    const int yMode = scaleModes[QwtPlot::yLeft];
    AxisRange xRange;
    AxisRange yRange;
    runBoth([&] { xRange = drawableRange(xData, xMode); }, [&] { yRange = drawableRange(yData, yMode); },
        xData.size() >= minimumSampleBlock);
    dataBounds->setRanges(xRange, yRange);
}

void ScatterPlot::resetZoom()
{
    setAxisAutoScale(QwtPlot::xBottom, true);
    setAxisAutoScale(QwtPlot::yLeft, true);
    replot();
}

// ---------------------------------------------------------------------------------------------
// Contours, isoelastics, polygon overlays

void ScatterPlot::setContours(const std::vector<ContourLevel>& levels)
{
    removeContourCurves();
    for (std::size_t level = 0; level < levels.size(); ++level) {
        const QPen pen = itemPen(Qt::black, 2.0, level == 0 ? Qt::DashLine : Qt::SolidLine);
        for (const Polyline& line : levels[level].polylines) {
            if (line.size() < 2)
                continue;
            QPolygonF points(static_cast<int>(line.size()));
            for (std::size_t i = 0; i < line.size(); ++i)
                points[static_cast<int>(i)] = QPointF(line[i].first, line[i].second);
            auto* curve = new QwtPlotCurve;
            curve->setStyle(QwtPlotCurve::Lines);
            curve->setPen(pen);
            curve->setRenderHint(QwtPlotItem::RenderAntialiased, true);
            curve->setItemAttribute(QwtPlotItem::Legend, false);
            curve->setZ(contourZ);
            curve->setSamples(points);
            curve->attach(this);
            contourCurves.push_back(curve);
        }
    }
    scheduleReplot();
}

void ScatterPlot::clearContours()
{
    if (removeContourCurves())
        scheduleReplot();
}

bool ScatterPlot::removeContourCurves()
{
    const bool any = !contourCurves.empty();
    for (QwtPlotCurve* curve : contourCurves) {
        curve->detach();
        delete curve;
    }
    contourCurves.clear();
    return any;
}

void ScatterPlot::setIsoelastics(const std::vector<IsoelasticLine>& lines, bool showLabels)
{
    removeIsoelastics();
    for (const IsoelasticLine& line : lines) {
        if (line.points.size() < 2)
            continue;
        QPolygonF points(static_cast<int>(line.points.size()));
        for (std::size_t i = 0; i < line.points.size(); ++i)
            points[static_cast<int>(i)] = QPointF(line.points[i].first, line.points[i].second);
        auto* curve = new QwtPlotCurve;
        curve->setStyle(QwtPlotCurve::Lines);
        curve->setPen(itemPen(isoelasticLineColor, 1.0));
        curve->setRenderHint(QwtPlotItem::RenderAntialiased, true);
        curve->setItemAttribute(QwtPlotItem::Legend, false);
        curve->setItemAttribute(QwtPlotItem::AutoScale, false);
        curve->setZ(isoelasticLineZ);
        curve->setSamples(points);
        curve->attach(this);
        isoLines.push_back(curve);

        if (!showLabels)
            continue;
        QwtText text(modulusLabel(line.value));
        QFont font = text.font();
        font.setPointSize(8);
        text.setFont(font);
        text.setColor(isoelasticLabelColor);
        auto* marker = new QwtPlotMarker;
        marker->setValue(points.last());
        marker->setLabel(text);
        marker->setLabelAlignment(Qt::AlignLeft | Qt::AlignBottom);
        marker->setItemAttribute(QwtPlotItem::Legend, false);
        marker->setItemAttribute(QwtPlotItem::AutoScale, false);
        marker->setZ(isoelasticLabelZ);
        marker->attach(this);
        isoLabels.push_back(marker);
    }
    replot();
}

void ScatterPlot::clearIsoelastics()
{
    if (removeIsoelastics())
        scheduleReplot();
}

bool ScatterPlot::removeIsoelastics()
{
    const bool any = !isoLines.empty() || !isoLabels.empty();
    for (QwtPlotCurve* curve : isoLines) {
        curve->detach();
        delete curve;
    }
    for (QwtPlotMarker* marker : isoLabels) {
        marker->detach();
        delete marker;
    }
    isoLines.clear();
    isoLabels.clear();
    return any;
}

void ScatterPlot::addPolygonOverlay(int id, const QPolygonF& polygon, bool ruleEnabled)
{
    auto old = overlays.find(id);
    if (old != overlays.end()) {
        old->second->detach();
        delete old->second;
        overlays.erase(old);
    }
    QPainterPath path;
    path.addPolygon(polygon);
    path.closeSubpath();

    QColor line = ruleEnabled ? polygonColor : disabledPolygonColor;
    QColor fill = line;
    line.setAlpha(180);
    fill.setAlpha(ruleEnabled ? 30 : 25);
    auto* item = new QwtPlotShapeItem;
    item->setShape(path);
    item->setPen(itemPen(line, 2.0, ruleEnabled ? Qt::SolidLine : Qt::DashLine));
    item->setBrush(QBrush(fill));
    item->setRenderHint(QwtPlotItem::RenderAntialiased, true);
    item->setItemAttribute(QwtPlotItem::Legend, false);
    item->setZ(overlayZ);
    // The polygon under edit is shown by the edit curve alone.
    item->setVisible(!(editing && id == editedId));
    item->attach(this);
    overlays[id] = item;
    scheduleReplot();
}

void ScatterPlot::clearPolygonOverlays()
{
    if (overlays.empty())
        return;
    for (auto& overlay : overlays) {
        overlay.second->detach();
        delete overlay.second;
    }
    overlays.clear();
    scheduleReplot();
}

// ---------------------------------------------------------------------------------------------
// Picking

int ScatterPlot::findNearestPoint(const QPointF& dataPos) const
{
    const std::size_t count = std::min(xData.size(), yData.size());
    if (count == 0)
        return -1;
    const QwtScaleMap xMap = canvasMap(QwtPlot::xBottom);
    const QwtScaleMap yMap = canvasMap(QwtPlot::yLeft);
    const QwtScaleDiv& xDiv = axisScaleDiv(QwtPlot::xBottom);
    const QwtScaleDiv& yDiv = axisScaleDiv(QwtPlot::yLeft);
    const double width = std::abs(xMap.transform(xDiv.upperBound()) - xMap.transform(xDiv.lowerBound()));
    const double height = std::abs(yMap.transform(yDiv.upperBound()) - yMap.transform(yDiv.lowerBound()));
    if (width == 0.0 || height == 0.0)
        return -1;
    const double cx = xMap.transform(dataPos.x());
    const double cy = yMap.transform(dataPos.y());

    // A strict comparison keeps the first of equal distances; NaN (a value that a log axis cannot
    // place) never compares below.
    double best = std::numeric_limits<double>::infinity();
    int bestIndex = -1;
    for (std::size_t i = 0; i < count; ++i) {
        const double dx = (xMap.transform(xData[i]) - cx) / width;
        const double dy = (yMap.transform(yData[i]) - cy) / height;
        const double distance = dx * dx + dy * dy;
        if (distance < best) {
            best = distance;
            bestIndex = static_cast<int>(i);
        }
    }
    return best < pickRadius * pickRadius ? bestIndex : -1;
}

// ---------------------------------------------------------------------------------------------
// Replots and export

void ScatterPlot::replot()
{
    replotScheduled = false;
    QwtPlot::replot();
}

void ScatterPlot::scheduleReplot()
{
    if (replotScheduled)
        return;
    replotScheduled = true;
    QTimer::singleShot(0, this, [this] {
        if (replotScheduled)
            replot();
    });
}

ScatterPlotExportState ScatterPlot::prepareForExport()
{
    ScatterPlotExportState state;
    auto* frame = qobject_cast<QFrame*>(canvas());
    state.canvasBackground = canvasBackground();
    state.palette = palette();
    state.autoFillBackground = autoFillBackground();
    state.canvasFrameStyle = frame ? frame->frameStyle() : 0;
    for (int axis = 0; axis < static_cast<int>(state.axes.size()); ++axis) {
        ScatterPlotExportState::Axis& saved = state.axes[static_cast<std::size_t>(axis)];
        saved.canvasAligned = canvasAlignedToScale(*this, axis);
        saved.canvasMargin = canvasMargin(*this, axis);
        saved.visible = isAxisShown(this, axis);
        saved.labels = axisScaleDraw(axis)->hasComponent(QwtAbstractScaleDraw::Labels);
        saved.ticks = axisScaleDraw(axis)->hasComponent(QwtAbstractScaleDraw::Ticks);
    }

    setCanvasBackground(Qt::white);
    QPalette white = palette();
    white.setColor(QPalette::Window, Qt::white);
    setPalette(white);
    setAutoFillBackground(true);
    if (frame)
        frame->setFrameStyle(QFrame::NoFrame);
    for (int axis = 0; axis < static_cast<int>(state.axes.size()); ++axis)
        setCanvasAlignedToScale(*this, axis, true);
    setCanvasMargin(*this, 0);
    // Hidden top and right axes become bare lines, so that the exported frame is closed.
    for (const int axis : { int(QwtPlot::xTop), int(QwtPlot::yRight) }) {
        if (isAxisShown(this, axis))
            continue;
        axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Labels, false);
        axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Ticks, false);
        setAxisShown(this, axis, true);
    }
    return state;
}

void ScatterPlot::restoreAfterExport(const ScatterPlotExportState& state)
{
    setCanvasBackground(state.canvasBackground);
    setPalette(state.palette);
    setAutoFillBackground(state.autoFillBackground);
    if (auto* frame = qobject_cast<QFrame*>(canvas()))
        frame->setFrameStyle(state.canvasFrameStyle);
    for (int axis = 0; axis < static_cast<int>(state.axes.size()); ++axis) {
        const ScatterPlotExportState::Axis& saved = state.axes[static_cast<std::size_t>(axis)];
        setCanvasAlignedToScale(*this, axis, saved.canvasAligned);
        setCanvasMargin(*this, saved.canvasMargin, axis);
        axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Labels, saved.labels);
        axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Ticks, saved.ticks);
        setAxisShown(this, axis, saved.visible);
    }
    replot();
}

} // namespace Tessaly
