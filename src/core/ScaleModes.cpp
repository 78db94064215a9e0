#include "core/ScaleModes.h"

#include <cmath>

namespace Tessaly {

double pseudoLogTransform(double v, double threshold, double slope)
{
    const double offset = slope * threshold - std::log10(threshold);
    if (v > threshold)
        return std::log10(v) + offset;
    if (v < -threshold)
        return -(std::log10(-v) + offset);
    return slope * v;
}

double pseudoLogInverse(double t, double threshold, double slope)
{
    const double offset = std::log10(threshold) - slope * threshold;
    const double edge = slope * threshold;
    if (t > edge)
        return std::pow(10.0, offset + t);
    if (t < -edge)
        return -std::pow(10.0, offset - t);
    return t / slope;
}

double scaleValue(double v, int mode)
{
    switch (mode) {
    case LogScale:
        return v > 0.0 ? std::log(v) : 0.0;
    case PseudoLogScale:
        return pseudoLogTransform(v);
    default:
        return v;
    }
}

std::vector<double> transformValues(const std::vector<double>& values, int mode)
{
    if (mode == LinearScale)
        return values;
    std::vector<double> out(values.size());
    if (mode == LogScale) {
        for (std::size_t i = 0; i < values.size(); ++i)
            out[i] = values[i] > 0.0 ? std::log10(values[i]) : 0.0;
    } else {
        for (std::size_t i = 0; i < values.size(); ++i)
            out[i] = pseudoLogTransform(values[i]);
    }
    return out;
}

const std::vector<double>& valuesInPlotSpace(
    const std::vector<double>& values, int mode, std::vector<double>& storage)
{
    if (mode == LinearScale)
        return values;
    storage = transformValues(values, mode);
    return storage;
}

namespace {

double untransformValue(double v, int mode)
{
    if (mode == LinearScale)
        return v;
    if (mode == LogScale)
        return std::pow(10.0, v);
    return pseudoLogInverse(v);
}

} // namespace

void untransformPoint(double& x, double& y, int modeX, int modeY)
{
    x = untransformValue(x, modeX);
    y = untransformValue(y, modeY);
}

} // namespace Tessaly
