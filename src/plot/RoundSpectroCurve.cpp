#include "plot/RoundSpectroCurve.h"

#include "plot/DotTiles.h"
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

void RoundSpectroCurve::dataChanged()
{
    ++dataGeneration;
    colorCache.clear();
    QwtPlotSpectroCurve::dataChanged();
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
        const std::vector<QRgb>& colors = colorCache.colorsFor(samples, dataGeneration, *map, range);
        const std::size_t first = static_cast<std::size_t>(from);
        DotStamps stamps(static_cast<std::size_t>(to - from + 1));
        const auto* array = dynamic_cast<const QwtArraySeriesData<QwtPoint3D>*>(&samples);
        if (array) {
            // The scale maps and their transforms are const and keep no state: safe on the pool.
            const QVector<QwtPoint3D> points = array->samples();
            const QwtPoint3D* data = points.constData() + first;
            DotTiles::forChunks(stamps.size(), DotTiles::evenChunkSize(stamps.size(), 1 << 13),
                [&](std::size_t begin, std::size_t end) {
                    for (std::size_t i = begin; i < end; ++i) {
                        if (!layer.stampFor(xMap.transform(data[i].x()), yMap.transform(data[i].y()),
                                colors[first + i], stamps[i]))
                            stamps[i].sprite = DotStamp::none;
                    }
                });
        } else {
            for (std::size_t i = 0; i < stamps.size(); ++i) {
                const QwtPoint3D sample = samples.sample(first + i);
                if (!layer.stampFor(
                        xMap.transform(sample.x()), yMap.transform(sample.y()), colors[first + i], stamps[i]))
                    stamps[i].sprite = DotStamp::none;
            }
        }
        layer.addDots(stamps);
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
