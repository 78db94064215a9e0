#pragma once

#include "plot/UnitColorTable.h"

#include <QRgb>
#include <cstdint>
#include <memory>
#include <qwt_interval.h>
#include <qwt_point_3d.h>
#include <qwt_series_data.h>
#include <vector>

class QwtColorMap;

namespace Tessaly {

// The colours of a coloured point series, kept from one paint to the next: they change only with
// the data, the colour map or the colour range, while a zoom, pan or resize repaints the same
// colours. The first paint computes them in parallel.
class DotColorCache
{
public:
    // The colour of every sample of `series` under `map` and `range`. `dataGeneration` must change
    // whenever the series does. A map of a kind whose colours cannot be compared is never cached.
    const std::vector<QRgb>& colorsFor(const QwtSeriesData<QwtPoint3D>& series, std::uint64_t dataGeneration,
        const QwtColorMap& map, const QwtInterval& range);

    void clear();

private:
    bool valid = false;
    std::uint64_t generation = 0;
    std::vector<QRgb> mapPrint;
    QwtInterval cachedRange;
    std::vector<QRgb> colors;
    // The last linear map's table, kept while the map is the same; the colour range may change.
    std::unique_ptr<UnitColorTable> table;
    std::vector<QRgb> tablePrint;
};

} // namespace Tessaly
