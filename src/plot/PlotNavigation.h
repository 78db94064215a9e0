#pragma once

#include <QPoint>
#include <QRect>

class QwtScaleMap;

namespace Tessaly {

// The rules of zooming and panning the scatter plot with the mouse, apart from the widget.

// A press and release that lie more than 5 pixels apart in both directions are a drag (a rubber
// band zoom); anything smaller is a click, so a hand that shakes a little still picks a point.
inline constexpr int clickTolerancePixels = 5;
// One wheel step zooms in by this factor, or out by its inverse.
inline constexpr double wheelZoomInFactor = 0.8;
inline constexpr double wheelZoomOutFactor = 1.25;

struct AxisRange
{
    double lower = 0.0;
    double upper = 0.0;
};

// True when press and release are far enough apart to be a rubber band rather than a click.
bool isRubberBandDrag(const QPoint& press, const QPoint& release);

// The rectangle between two mouse positions, normalised; the rubber band shows it.
QRect rubberBandRect(const QPoint& origin, const QPoint& position);

// The band is shown once it is over 5 pixels in either direction.
bool isRubberBandVisible(const QRect& band);

// Scale factor of a wheel turn: in (0.8) when the wheel turns away from the user, out otherwise.
double wheelZoomFactor(int verticalAngleDelta);

// The range scaled about a centre: the centre stays where it is on the axis.
AxisRange zoomedAbout(const AxisRange& range, double centre, double factor);

// The shift in data units that follows the mouse by `pixels` along the axis: the value under pixel
// 0 minus the value under pixel `pixels`, so that the plot moves with the hand.
double panShift(const QwtScaleMap& map, double pixels);

AxisRange shiftedBy(const AxisRange& range, double shift);

// A logarithmic axis can only show a range of positive, finite bounds.
bool fitsLogAxis(const AxisRange& range);

} // namespace Tessaly
