#pragma once

#include <qwt_widget_overlay.h>

class QwtPlot;
class QwtPlotCurve;

namespace Tessaly {

// Draws one curve of a plot on a transparent layer over the canvas, with the curve's own pen and
// symbol. Repainting the layer leaves the canvas's cached picture alone, so a curve that follows
// the mouse costs a few lines per frame instead of a replot of every point below it. The curve
// itself stays hidden from the plot meanwhile, or it would be drawn twice.
class CurveOverlay : public QwtWidgetOverlay
{
public:
    CurveOverlay(QwtPlot* plot, const QwtPlotCurve* curve);

protected:
    void drawOverlay(QPainter* painter) const override;

private:
    QwtPlot* plot;
    const QwtPlotCurve* curve;
};

} // namespace Tessaly
