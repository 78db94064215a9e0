#include "plot/PlainPointsCurve.h"

#include "plot/DotTiles.h"
#include "plot/SpriteDotLayer.h"

#include <cmath>
#include <qwt_scale_map.h>
#include <qwt_series_data.h>

namespace Tessaly {

void PlainPointsCurve::drawSymbols(QPainter* painter, const QwtSymbol& symbol, const QwtScaleMap& xMap,
    const QwtScaleMap& yMap, const QRectF& canvasRect, int from, int to) const
{
    const auto* array = dynamic_cast<const QwtArraySeriesData<QPointF>*>(data());
    // Without a valid canvas rectangle the library keeps every point; that case is left to it.
    if (!array || from > to || testPaintAttribute(QwtPlotCurve::FilterPoints) || !canvasRect.isValid()) {
        QwtPlotCurve::drawSymbols(painter, symbol, xMap, yMap, canvasRect, from, to);
        return;
    }
    SpriteDotLayer layer(painter, symbol, canvasRect);
    if (!layer.isActive()) {
        QwtPlotCurve::drawSymbols(painter, symbol, xMap, yMap, canvasRect, from, to);
        return;
    }

    const QVector<QPointF> samples = array->samples();
    const QPointF* points = samples.constData() + from;
    DotStamps stamps(static_cast<std::size_t>(to - from + 1));
    // The library keeps a point whose centre lies within the canvas, borders included, and puts
    // the symbol at the nearest whole pixel, halves rounded away from zero. A position that is
    // not a number (a log axis below zero) draws nothing; it fails every comparison.
    const double left = canvasRect.left();
    const double right = canvasRect.right();
    const double top = canvasRect.top();
    const double bottom = canvasRect.bottom();
    DotTiles::forChunks(stamps.size(), DotTiles::evenChunkSize(stamps.size(), 1 << 13),
        [&](std::size_t begin, std::size_t end) {
            for (std::size_t i = begin; i < end; ++i) {
                const double x = xMap.transform(points[i].x());
                const double y = yMap.transform(points[i].y());
                if (!(x >= left && x <= right && y >= top && y <= bottom)) {
                    stamps[i].sprite = DotStamp::none;
                    continue;
                }
                const double roundedX = x >= 0.0 ? std::floor(x + 0.5) : std::ceil(x - 0.5);
                const double roundedY = y >= 0.0 ? std::floor(y + 0.5) : std::ceil(y - 0.5);
                stamps[i] = layer.stampAt(static_cast<int>(roundedX), static_cast<int>(roundedY));
            }
        });
    layer.addDots(stamps);
    layer.finish();
}

} // namespace Tessaly
