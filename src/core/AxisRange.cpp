#include "core/AxisRange.h"

#include "core/ScaleModes.h"

#include <cmath>
#include <limits>

namespace Tessaly {

AxisRange drawableRange(const std::vector<double>& values, int scaleMode)
{
    const bool positiveOnly = scaleMode == LogScale;
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const double v : values) {
        if (!std::isfinite(v) || (positiveOnly && v <= 0.0))
            continue;
        if (v < low)
            low = v;
        if (v > high)
            high = v;
    }
    if (!(low <= high))
        return AxisRange {};
    return AxisRange { low, high };
}

} // namespace Tessaly
