#include "plot/UnitColorTable.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <qwt_color_map.h>
#include <qwt_interval.h>

namespace Tessaly {

UnitColorTable::UnitColorTable(const QwtLinearColorMap& map)
    : colors(cellCount, 0u)
    , uniform(cellCount, 0)
{
    // On the unit range the map's share of the range is the value itself, so the ends of every
    // cell are asked exactly.
    const QwtInterval unit(0.0, 1.0);
    const double cells = static_cast<double>(cellCount);
    QRgb atStart = map.rgb(unit, 0.0);
    for (std::size_t cell = 0; cell < cellCount; ++cell) {
        const QRgb atEnd = map.rgb(unit, static_cast<double>(cell + 1) / cells);
        colors[cell] = atStart;
        uniform[cell] = atStart == atEnd ? 1 : 0;
        atStart = atEnd;
    }
    // A stop may change the direction a channel moves in; the cells that touch one, including by
    // an end, are asked of the map.
    for (const double stop : map.colorStops()) {
        if (!(stop >= 0.0 && stop <= 1.0))
            continue;
        const auto cell = static_cast<std::size_t>(std::min(std::floor(stop * cells), cells - 1.0));
        uniform[cell] = 0;
        if (cell > 0)
            uniform[cell - 1] = 0;
    }
}

std::size_t UnitColorTable::uniformCellCount() const
{
    return static_cast<std::size_t>(std::count(uniform.begin(), uniform.end(), std::uint8_t { 1 }));
}

} // namespace Tessaly
