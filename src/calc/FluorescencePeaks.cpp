#include "calc/FluorescencePeaks.h"

#include <algorithm>
#include <cmath>

namespace Tessaly {

namespace {

// Rising order with NaN after every number, so that a few events without a position can't decide a
// median unless they are the majority.
bool lessNanLast(double a, double b)
{
    if (std::isnan(a))
        return false;
    return std::isnan(b) || a < b;
}

bool greaterNanLast(double a, double b)
{
    if (std::isnan(a))
        return false;
    return std::isnan(b) || a > b;
}

struct SingleEstimate
{
    double distance; // |dx|, µm
    double speed; // dx / dt, µm/µs
};

} // namespace

SpeedEstimate estimateSpeed(const std::vector<ChannelPeaks>& channels, double threshold,
    const std::vector<double>& posX, double centreX, double traceCentreTime, std::size_t traceLength)
{
    if (posX.empty() || !(centreX > 0.0) || traceLength == 0)
        return {};

    std::vector<SingleEstimate> estimates;
    for (const ChannelPeaks& channel : channels) {
        if (!channel.max || !channel.pos)
            continue;
        const std::size_t events = std::min({ channel.max->size(), channel.pos->size(), posX.size() });
        for (std::size_t i = 0; i < events; ++i) {
            if (!((*channel.max)[i] > threshold))
                continue;
            const double dx = posX[i] - centreX;
            const double dt = (*channel.pos)[i] - traceCentreTime;
            // A cell recorded right at the centre says nothing about its speed.
            if (std::abs(dt) < 1e-6)
                continue;
            estimates.push_back({ std::abs(dx), dx / dt });
        }
    }
    if (estimates.empty())
        return {};

    // Cells far from the channel centre give the best estimates: the same error in the recorded time
    // matters less the longer the way.
    std::stable_sort(
        estimates.begin(), estimates.end(), [](const SingleEstimate& a, const SingleEstimate& b) {
            return greaterNanLast(a.distance, b.distance);
        });
    const std::size_t kept = std::max<std::size_t>(estimates.size() / 2, 1);

    std::vector<double> speeds(kept);
    for (std::size_t i = 0; i < kept; ++i)
        speeds[i] = estimates[i].speed;
    std::sort(speeds.begin(), speeds.end(), lessNanLast);
    const double median = speeds[kept / 2];
    for (double& value : speeds)
        value = std::abs(value - median);
    std::sort(speeds.begin(), speeds.end(), lessNanLast);

    SpeedEstimate result;
    result.speed = median > 0.0 ? median : 0.0;
    result.spread = 1.4826 * speeds[kept / 2];
    return result;
}

bool clampWindow(double low, double high, std::size_t traceLength, PeakWindow& window)
{
    if (traceLength == 0 || std::isnan(low) || std::isnan(high))
        return false;
    const double last = static_cast<double>(traceLength - 1);
    high = std::min(high, last);
    // Converting only values within the trace keeps the truncation defined for any input.
    const auto whole = [&](double value) -> std::size_t {
        if (value >= last)
            return traceLength - 1;
        if (value <= 0.0)
            return 0;
        return static_cast<std::size_t>(value);
    };
    const std::size_t lowSample = whole(low);
    window.high = whole(high);
    window.start = std::min(lowSample, window.high);
    return true;
}

bool cellWindow(double posX, double sizeX, double centreX, double speed, double spread, double sampleTime,
    std::size_t traceLength, PeakWindow& window)
{
    const double traceCentre = static_cast<double>(traceLength / 2);
    const double centre = (posX - centreX) / (sampleTime * speed) + traceCentre;
    // The cell's passage lasts size / speed; an uncertain speed widens the window, by half at most.
    const double half = sizeX / speed / sampleTime * 0.5 * std::min(spread / speed + 1.0, 1.5);
    return clampWindow(std::max(centre - half, 0.0), centre + half, traceLength, window);
}

bool recordedWindow(
    double recordedPos, double halfWidth, double sampleTime, std::size_t traceLength, PeakWindow& window)
{
    const double centre = recordedPos / sampleTime;
    return clampWindow(std::max(centre - halfWidth, 0.0), centre + halfWidth, traceLength, window);
}

bool findPeak(const std::vector<float>& trace, const PeakWindow& window, double offset, double sampleTime,
    PeakResult& result)
{
    if (window.high >= trace.size() || window.start > window.high)
        return false;
    const auto value = [&](std::size_t i) { return static_cast<double>(trace[i]) + offset; };

    double best = -1e30;
    std::size_t peak = window.high + 1;
    for (std::size_t i = window.start; i <= window.high; ++i) {
        if (value(i) > best) {
            best = value(i);
            peak = i;
        }
    }
    if (peak > window.high)
        return false;

    const double half = 0.5 * best;
    std::size_t left = peak;
    while (left > window.start + 1) {
        --left;
        if (value(left) < half)
            break;
    }
    std::size_t right = peak;
    while (right < window.high) {
        ++right;
        if (value(right) < half)
            break;
    }

    result.max = best;
    result.pos = static_cast<double>(peak) * sampleTime;
    result.width = static_cast<double>(right - left) * sampleTime;
    return true;
}

} // namespace Tessaly
