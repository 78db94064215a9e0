#include "plot/CurveOverlay.h"

#include <QPainter>
#include <qwt_plot.h>
#include <qwt_plot_curve.h>

namespace Tessaly {

CurveOverlay::CurveOverlay(QwtPlot* plot, const QwtPlotCurve* curve)
    : QwtWidgetOverlay(plot->canvas())
    , plot(plot)
    , curve(curve)
{
    // A mask would have to follow the curve on every frame; the canvas repaints the uncovered rest
    // from its cache anyway.
    setMaskMode(QwtWidgetOverlay::NoMask);
    // The layer covers the whole canvas; the mouse must still reach the canvas below.
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void CurveOverlay::drawOverlay(QPainter* painter) const
{
    if (curve->dataSize() == 0)
        return;
    painter->setRenderHint(QPainter::Antialiasing, curve->testRenderHint(QwtPlotItem::RenderAntialiased));
    curve->drawSeries(painter, plot->canvasMap(curve->xAxis()), plot->canvasMap(curve->yAxis()),
        plot->canvas()->contentsRect(), 0, -1);
}

} // namespace Tessaly
