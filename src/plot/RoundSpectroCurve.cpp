#include "plot/RoundSpectroCurve.h"

#include "plot/RoundDotLayer.h"

#include <QPainter>
#include <qwt_color_map.h>
#include <qwt_scale_map.h>

namespace Tessaly {

const QwtSeriesData<QwtPoint3D>& RoundSpectroCurve::series() const
{
    // The one cast that may reach an inaccessible base class; in later versions of the library the
    // base is public and this is an ordinary upcast.
    const auto* store = (const ::QwtSeriesStore<QwtPoint3D>*)this;
    return *store->data();
}

void RoundSpectroCurve::drawDots(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
    const QRectF& canvasRect, int from, int to) const
{
    const QwtColorMap* map = colorMap();
    if (!map || from > to)
        return;
    const QwtInterval range = colorRange();
    const QwtSeriesData<QwtPoint3D>& samples = series();
    const double radius = penWidth() * 0.5;

    // Raster devices take the pre-rendered dots; vector devices get one ellipse per point.
    RoundDotLayer layer(painter, canvasRect, penWidth());
    if (layer.isActive()) {
        for (int i = from; i <= to; ++i) {
            const QwtPoint3D sample = samples.sample(static_cast<size_t>(i));
            layer.addDot(xMap.transform(sample.x()), yMap.transform(sample.y()), map->rgb(range, sample.z()));
        }
        layer.finish();
        return;
    }

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->setPen(Qt::NoPen);
    for (int i = from; i <= to; ++i) {
        const QwtPoint3D sample = samples.sample(static_cast<size_t>(i));
        const QPointF centre(xMap.transform(sample.x()), yMap.transform(sample.y()));
        painter->setBrush(QBrush(QColor::fromRgba(map->rgb(range, sample.z()))));
        painter->drawEllipse(centre, radius, radius);
    }
    painter->restore();
}

} // namespace Tessaly
