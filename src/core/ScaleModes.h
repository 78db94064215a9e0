#pragma once

#include <vector>

namespace Tessaly {

// Scale mode of a plot axis.
enum ScaleMode : int {
    LinearScale = 0,
    LogScale = 1,
    PseudoLogScale = 2,
};

// Parameters that every pseudo-log axis of the program uses.
inline constexpr double pseudoLogDefaultThreshold = 100.0;
inline constexpr double pseudoLogDefaultSlope = 0.005;

// Linear within [-threshold, threshold], logarithmic (base 10) beyond it on both sides; the pieces
// meet in value, not in slope.
double pseudoLogTransform(
    double v, double threshold = pseudoLogDefaultThreshold, double slope = pseudoLogDefaultSlope);
double pseudoLogInverse(
    double t, double threshold = pseudoLogDefaultThreshold, double slope = pseudoLogDefaultSlope);

// One value in the plot space of a filter polygon: natural log for mode 1 (non-positive and NaN go
// to 0.0, where the value 1 lies), pseudo-log for mode 2, unchanged otherwise. The base of the log
// does not matter for an inside test, since the vertices are mapped alike.
double scaleValue(double v, int mode);

// A column in the plot space of an axis: mode 0 copies, mode 1 takes log10 of positive values and
// 0.0 for the rest, any other mode the pseudo-log transform.
std::vector<double> transformValues(const std::vector<double>& values, int mode);

// The same without a copy where none is needed: `values` themselves on a linear axis, otherwise
// their transform, kept in `storage`.
const std::vector<double>& valuesInPlotSpace(
    const std::vector<double>& values, int mode, std::vector<double>& storage);

// Inverse of transformValues for one point, in place: mode 1 takes 10 to the power of the value,
// other non-zero modes the inverse pseudo-log.
void untransformPoint(double& x, double& y, int modeX, int modeY);

} // namespace Tessaly
