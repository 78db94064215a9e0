#pragma once

#include "calc/Density.h"
#include "calc/MarchingSquares.h"

#include <vector>

namespace Tessaly {

// The density line that encloses about 1 - fraction of the events.
struct ContourLevel
{
    double fraction = 0.0; // as asked for
    double level = 0.0; // density (smoothed count per grid cell) on the line
    std::vector<Polyline> polylines; // in data units
};

// Contour lines of the kernel density of the points in the plot space of the two axes, one entry per
// fraction in the given order. Empty for fewer than four points, x and y of different lengths, or
// no fractions. An entry whose level is not above zero has no lines. A fit made of exactly these
// points in plot space is used instead of estimating the density again.
std::vector<ContourLevel> computeContours(const std::vector<double>& x, const std::vector<double>& y,
    const std::vector<double>& fractions, int scaleX, int scaleY, const KernelDensityFit* fit = nullptr);

// The density below which `fraction` of the given densities lie (the value at that rank); 0.0 for
// an empty list or a fraction not strictly between 0 and 1.
double densityAtFraction(const std::vector<double>& densities, double fraction);

// The plot's contour overlay: off, lines over the points, or lines only.
enum ContourOverlayMode : int {
    ContourOverlayOff = 0,
    ContourOverlayOn = 1,
    ContourOverlayOnly = 2,
};

inline constexpr int defaultInnerContourPercent = 10;
inline constexpr int defaultOuterContourPercent = 67;

// The two fractions of the overlay, the smaller first (the smaller is drawn dashed). Which spin box
// holds which value does not matter.
std::vector<double> contourFractions(int innerPercent, int outerPercent);

// The lines that the overlay shows for the plotted points: none when it is off or fewer than four
// points are plotted.
std::vector<ContourLevel> overlayContours(int overlayMode, const std::vector<double>& x,
    const std::vector<double>& y, int innerPercent, int outerPercent, int scaleX, int scaleY,
    const KernelDensityFit* fit = nullptr);

} // namespace Tessaly
