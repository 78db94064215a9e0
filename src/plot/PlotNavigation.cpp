#include "plot/PlotNavigation.h"

#include <cmath>
#include <cstdlib>
#include <qwt_scale_map.h>

namespace Tessaly {

bool isRubberBandDrag(const QPoint& press, const QPoint& release)
{
    return std::abs(release.x() - press.x()) > clickTolerancePixels
        && std::abs(release.y() - press.y()) > clickTolerancePixels;
}

QRect rubberBandRect(const QPoint& origin, const QPoint& position)
{
    return QRect(origin, position).normalized();
}

bool isRubberBandVisible(const QRect& band)
{
    // A rectangle from two points spans one pixel more than their distance.
    return band.width() - 1 > clickTolerancePixels || band.height() - 1 > clickTolerancePixels;
}

double wheelZoomFactor(int verticalAngleDelta)
{
    return verticalAngleDelta > 0 ? wheelZoomInFactor : wheelZoomOutFactor;
}

AxisRange zoomedAbout(const AxisRange& range, double centre, double factor)
{
    return { centre - (centre - range.lower) * factor, centre + (range.upper - centre) * factor };
}

double panShift(const QwtScaleMap& map, double pixels)
{
    return map.invTransform(0.0) - map.invTransform(pixels);
}

AxisRange shiftedBy(const AxisRange& range, double shift)
{
    return { range.lower + shift, range.upper + shift };
}

bool fitsLogAxis(const AxisRange& range)
{
    return range.lower > 0.0 && range.upper > 0.0 && std::isfinite(range.lower) && std::isfinite(range.upper);
}

} // namespace Tessaly
