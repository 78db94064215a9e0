#include "core/FeatureRange.h"

#include <cmath>

namespace Tessaly {

std::optional<std::pair<double, double>> finiteRange(const std::vector<double>& values)
{
    double low = 0.0;
    double high = 0.0;
    bool found = false;
    for (const double v : values) {
        if (!std::isfinite(v))
            continue;
        if (!found) {
            low = high = v;
            found = true;
        } else if (v < low) {
            low = v;
        } else if (v > high) {
            high = v;
        }
    }
    if (!found)
        return std::nullopt;
    return std::make_pair(low, high);
}

int rangeDecimals(double width)
{
    if (width < 0.1)
        return 6;
    if (width < 1.0)
        return 4;
    if (width < 100.0)
        return 2;
    return 1;
}

double rangeStep(double width)
{
    return width > 0.0 ? width / 100.0 : 0.01;
}

} // namespace Tessaly
