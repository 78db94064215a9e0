#include "plot/LiftableCurve.h"

namespace Tessaly {

void LiftableCurve::draw(
    QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap, const QRectF& canvasRect) const
{
    if (!lifted)
        QwtPlotCurve::draw(painter, xMap, yMap, canvasRect);
}

} // namespace Tessaly
