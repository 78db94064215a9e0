#include "calc/Contours.h"

#include "calc/Density.h"
#include "calc/OrderStatistics.h"
#include "core/ScaleModes.h"

#include <algorithm>
#include <cmath>

namespace Tessaly {

namespace {

bool isProperFraction(double fraction)
{
    return fraction > 0.0 && fraction < 1.0;
}

// The rank of the density at a proper fraction among n > 0 densities.
std::size_t rankAtFraction(std::size_t n, double fraction)
{
    return std::min(static_cast<std::size_t>(std::floor(static_cast<double>(n) * fraction)), n - 1);
}

} // namespace

double densityAtFraction(const std::vector<double>& densities, double fraction)
{
    if (densities.empty() || !isProperFraction(fraction))
        return 0.0;
    return orderStatistics(densities, { rankAtFraction(densities.size(), fraction) }).front();
}

std::vector<ContourLevel> computeContours(const std::vector<double>& x, const std::vector<double>& y,
    const std::vector<double>& fractions, int scaleX, int scaleY, const KernelDensityFit* fit)
{
    if (x.size() < 4 || x.size() != y.size() || fractions.empty())
        return {};
    std::vector<double> xStorage;
    std::vector<double> yStorage;
    const std::vector<double>& tx = valuesInPlotSpace(x, scaleX, xStorage);
    const std::vector<double>& ty = valuesInPlotSpace(y, scaleY, yStorage);
    // Equal vectors give an equal grid and equal densities; NaN never compares equal, so points
    // that the fit left out can't slip through.
    KernelDensityFit own;
    if (!(fit && fit->x == tx && fit->y == ty)) {
        own.grid = kernelDensityGrid(tx, ty, 0);
        own.densities = interpolateGrid(own.grid, tx, ty);
        fit = &own;
    }

    // All levels' ranks are selected in one pass over the densities.
    const std::size_t n = fit->densities.size();
    std::vector<std::size_t> ranks;
    for (const double fraction : fractions)
        ranks.push_back(isProperFraction(fraction) ? rankAtFraction(n, fraction) : 0);
    const std::vector<double> atRanks = orderStatistics(fit->densities, ranks);

    std::vector<ContourLevel> levels;
    levels.reserve(fractions.size());
    for (std::size_t k = 0; k < fractions.size(); ++k) {
        ContourLevel entry;
        entry.fraction = fractions[k];
        entry.level = isProperFraction(fractions[k]) ? atRanks[k] : 0.0;
        if (entry.level > 0.0)
            entry.polylines = marchingSquares(fit->grid, entry.level);
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
    const std::vector<double>& y, int innerPercent, int outerPercent, int scaleX, int scaleY,
    const KernelDensityFit* fit)
{
    if (overlayMode == ContourOverlayOff || x.size() < 4)
        return {};
    return computeContours(x, y, contourFractions(innerPercent, outerPercent), scaleX, scaleY, fit);
}

} // namespace Tessaly
