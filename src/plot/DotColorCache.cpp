#include "plot/DotColorCache.h"

#include "plot/DotTiles.h"
#include "plot/UnitColorTable.h"

#include <QColor>
#include <cstring>
#include <memory>
#include <qwt_color_map.h>

namespace Tessaly {

namespace {

// What a linear colour map does, in full: its colours at every stop and half way between two
// stops (where a map of fixed colours differs from an interpolating one). Two linear maps with the
// same print map every value alike. Empty for any other kind of map.
std::vector<QRgb> printOf(const QwtColorMap& map)
{
    const auto* linear = dynamic_cast<const QwtLinearColorMap*>(&map);
    if (!linear)
        return {};
    const QwtInterval unit(0.0, 1.0);
    const QVector<double> stops = linear->colorStops();
    std::vector<QRgb> print;
    for (int i = 0; i < stops.size(); ++i) {
        std::uint64_t position = 0;
        std::memcpy(&position, &stops[i], sizeof position);
        print.push_back(static_cast<QRgb>(position));
        print.push_back(static_cast<QRgb>(position >> 32));
        print.push_back(map.rgb(unit, stops[i]));
        if (i + 1 < stops.size()) {
            for (const double share : { 0.25, 0.5, 0.75 })
                print.push_back(map.rgb(unit, stops[i] + share * (stops[i + 1] - stops[i])));
        }
    }
    print.push_back(static_cast<QRgb>(linear->mode()));
    return print;
}

// A map of its own for a thread: the library's map may touch shared state when asked for a
// colour, which makes threads asking one map at once slower than one thread alone. A linear map
// is rebuilt from its end colours and its colour at each stop, so every value maps alike. Null
// for any other kind of map.
std::unique_ptr<QwtLinearColorMap> copyOf(const QwtColorMap& map)
{
    const auto* linear = dynamic_cast<const QwtLinearColorMap*>(&map);
    if (!linear)
        return nullptr;
    auto copy = std::make_unique<QwtLinearColorMap>(linear->color1(), linear->color2(), linear->format());
    copy->setMode(linear->mode());
    const QwtInterval unit(0.0, 1.0);
    const QVector<double> stops = linear->colorStops();
    for (int i = 1; i + 1 < stops.size(); ++i)
        copy->addColorStop(stops[i], QColor::fromRgba(linear->rgb(unit, stops[i])));
    return copy;
}

} // namespace

const std::vector<QRgb>& DotColorCache::colorsFor(const QwtSeriesData<QwtPoint3D>& series,
    std::uint64_t dataGeneration, const QwtColorMap& map, const QwtInterval& range)
{
    std::vector<QRgb> print = printOf(map);
    const std::size_t count = series.size();
    if (valid && !print.empty() && print == mapPrint && generation == dataGeneration && range == cachedRange
        && colors.size() == count)
        return colors;

    colors.resize(count);
    const auto* linear = dynamic_cast<const QwtLinearColorMap*>(&map);
    if (linear && (!table || print != tablePrint)) {
        table = std::make_unique<UnitColorTable>(*linear);
        tablePrint = print;
    }
    const auto* array = dynamic_cast<const QwtArraySeriesData<QwtPoint3D>*>(&series);
    if (array) {
        // The map's rgb() is const and keeps no state, so the pool may call it from every thread.
        const QVector<QwtPoint3D> samples = array->samples();
        const QwtPoint3D* points = samples.constData();
        // The share of the range is worked out as the map does it, so the table answers for the
        // same position the map would see.
        const double low = range.minValue();
        const double width = range.width();
        const UnitColorTable* lookup = linear && width > 0.0 ? table.get() : nullptr;
        DotTiles::forChunks(
            count, DotTiles::evenChunkSize(count, 1 << 13), [&](std::size_t begin, std::size_t end) {
                std::unique_ptr<QwtLinearColorMap> own;
                bool ownMade = false;
                for (std::size_t i = begin; i < end; ++i) {
                    const double value = points[i].z();
                    if (lookup && lookup->lookup((value - low) / width, colors[i]))
                        continue;
                    if (!ownMade) {
                        own = copyOf(map);
                        ownMade = true;
                    }
                    colors[i] = (own ? *own : map).rgb(range, value);
                }
            });
    } else {
        for (std::size_t i = 0; i < count; ++i)
            colors[i] = map.rgb(range, series.sample(i).z());
    }
    valid = !print.empty();
    mapPrint = std::move(print);
    generation = dataGeneration;
    cachedRange = range;
    return colors;
}

void DotColorCache::clear()
{
    valid = false;
    colors.clear();
    colors.shrink_to_fit();
}

} // namespace Tessaly
