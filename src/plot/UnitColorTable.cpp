#include "plot/UnitColorTable.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <qwt_color_map.h>
#include <qwt_interval.h>

namespace Tessaly {

UnitColorTable::UnitColorTable(const QwtLinearColorMap& map)
    : cells(cellCount, 0u)
{
    // On the unit range the map's share of the range is the value itself, so the ends of every
    // cell are asked exactly.
    const QwtInterval unit(0.0, 1.0);
    constexpr std::uint64_t uniform = std::uint64_t { 1 } << 32;
    const double count = static_cast<double>(cellCount);
    QRgb atStart = map.rgb(unit, 0.0);
    for (std::size_t cell = 0; cell < cellCount; ++cell) {
        const QRgb atEnd = map.rgb(unit, static_cast<double>(cell + 1) / count);
        cells[cell] = atStart | (atStart == atEnd ? uniform : 0);
        atStart = atEnd;
    }
    // A stop may change the direction a channel moves in; the cells that touch one, including by
    // an end, are asked of the map.
    for (const double stop : map.colorStops()) {
        if (!(stop >= 0.0 && stop <= 1.0))
            continue;
        const auto cell = static_cast<std::size_t>(std::min(std::floor(stop * count), count - 1.0));
        cells[cell] &= ~uniform;
        if (cell > 0)
            cells[cell - 1] &= ~uniform;
    }
}

std::size_t UnitColorTable::uniformCellCount() const
{
    return static_cast<std::size_t>(
        std::count_if(cells.begin(), cells.end(), [](std::uint64_t cell) { return (cell >> 32) != 0; }));
}

} // namespace Tessaly
