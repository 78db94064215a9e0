#pragma once

#include <vector>

namespace Tessaly {

// The span of the values an axis can place: low <= high when there is at least one such value.
struct AxisRange
{
    double low = 1.0;
    double high = 0.0;

    bool isValid() const { return low <= high; }
};

// The smallest and largest value that the axis of the given scale mode can draw: finite values on
// linear and pseudo-log axes, finite positive values on a log axis (mode 1). Values the axis can't
// draw stay out, so that a few zeros don't stretch a log axis over a hundred decades. Without any
// drawable value the range is invalid.
AxisRange drawableRange(const std::vector<double>& values, int scaleMode);

} // namespace Tessaly
