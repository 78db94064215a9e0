#pragma once

#include <QRgb>
#include <cstddef>
#include <cstdint>
#include <vector>

class QwtLinearColorMap;

namespace Tessaly {

// A linear colour map's colours over its unit range, looked up instead of worked out. The range is
// cut into cells of 2^-16. Between two stops every channel of the map's colour moves one way only
// as the position grows, so a cell that holds no stop and has the same colour at both its ends has
// that colour throughout: there the table answers, to the bit. Elsewhere (cells with a stop or a
// change of colour, the ends of the range and beyond) the map itself must be asked.
class UnitColorTable
{
public:
    explicit UnitColorTable(const QwtLinearColorMap& map);

    // The map's colour at `position` (a share of its range) where the table knows it for sure.
    bool lookup(double position, QRgb& color) const
    {
        if (!(position > 0.0 && position < 1.0))
            return false;
        // Exact: the cell count is a power of two, so k <= position * cells < k + 1 puts position
        // in [k / cells, (k + 1) / cells).
        const std::uint64_t entry = cells[static_cast<std::size_t>(position * cellCount)];
        color = static_cast<QRgb>(entry);
        return (entry >> 32) != 0;
    }

    // How many cells have one colour throughout.
    std::size_t uniformCellCount() const;

    static constexpr std::size_t cellCount = std::size_t { 1 } << 16;

private:
    // Per cell its colour at the start, and above it a flag set where that is its colour
    // throughout: one load answers.
    std::vector<std::uint64_t> cells;
};

} // namespace Tessaly
