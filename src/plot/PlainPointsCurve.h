#pragma once

#include <qwt_plot_curve.h>

namespace Tessaly {

// A curve of symbols only, for many points: on raster devices its symbols are blended tile by
// tile in parallel, with the same pixels as the library's own drawing of one cached symbol pixmap
// per point. Anywhere else (vector devices, scaled painters, weeded points) the library draws.
class PlainPointsCurve : public QwtPlotCurve
{
public:
    using QwtPlotCurve::QwtPlotCurve;

protected:
    void drawSymbols(QPainter* painter, const QwtSymbol& symbol, const QwtScaleMap& xMap,
        const QwtScaleMap& yMap, const QRectF& canvasRect, int from, int to) const override;
};

} // namespace Tessaly
