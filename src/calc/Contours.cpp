#include "calc/Contours.h"

#include "calc/Density.h"
#include "calc/OrderStatistics.h"
#include "core/ScaleModes.h"

#include <algorithm>
#include <cmath>

namespace Tessaly {

double densityAtFraction(const std::vector<double>& densities, double fraction)
{
    if (densities.empty() || !(fraction > 0.0 && fraction < 1.0))
        return 0.0;
    const std::size_t n = densities.size();
    const std::size_t i
        = std::min(static_cast<std::size_t>(std::floor(static_cast<double>(n) * fraction)), n - 1);
    return orderStatistics(densities, { i }).front();
}

std::vector<ContourLevel> computeContours(const std::vector<double>& x, const std::vector<double>& y,
    const std::vector<double>& fractions, int scaleX, int scaleY)
{
    if (x.size() < 4 || x.size() != y.size() || fractions.empty())
        return {};
    const std::vector<double> tx = transformValues(x, scaleX);
    const std::vector<double> ty = transformValues(y, scaleY);
    const DensityGrid grid = kernelDensityGrid(tx, ty, 0);
    const std::vector<double> densities = interpolateGrid(grid, tx, ty);

    std::vector<ContourLevel> levels;
    levels.reserve(fractions.size());
    for (const double fraction : fractions) {
        ContourLevel entry;
        entry.fraction = fraction;
        entry.level = densityAtFraction(densities, fraction);
        if (entry.level > 0.0)
            entry.polylines = marchingSquares(grid, entry.level);
        levels.push_back(std::move(entry));
    }

    if (scaleX != LinearScale || scaleY != LinearScale) {
        for (ContourLevel& entry : levels)
            for (Polyline& line : entry.polylines)
                for (PlanePoint& point : line)
                    untransformPoint(point.first, point.second, scaleX, scaleY);
    }
    return levels;
}

std::vector<double> contourFractions(int innerPercent, int outerPercent)
{
    return { std::min(innerPercent, outerPercent) / 100.0, std::max(innerPercent, outerPercent) / 100.0 };
}

std::vector<ContourLevel> overlayContours(int overlayMode, const std::vector<double>& x,
    const std::vector<double>& y, int innerPercent, int outerPercent, int scaleX, int scaleY)
{
    if (overlayMode == ContourOverlayOff || x.size() < 4)
        return {};
    return computeContours(x, y, contourFractions(innerPercent, outerPercent), scaleX, scaleY);
}

} // namespace Tessaly
