#pragma once

#include <cstddef>
#include <vector>

namespace Tessaly {

// The numerics of the fluorescence refinement: how fast the cells pass the detection spot, where in
// a trace a cell's fluorescence must therefore lie, and the peak found there. Times are in µs,
// lengths in µm, trace positions in samples.

// Speed of the cells along the channel and the robust spread of the single estimates, in µm/µs.
struct SpeedEstimate
{
    double speed = 0.0;
    double spread = 0.0;
};

// One channel's columns that take part in the speed estimate.
struct ChannelPeaks
{
    const std::vector<double>* max = nullptr; // "fl<c>_max"
    const std::vector<double>* pos = nullptr; // "fl<c>_pos", µs
};

// Each event brighter than `threshold` (strictly) in a channel pairs its distance from the channel
// centre, dx = pos_x - centreX, with its time from the trace centre, dt = pos - traceCentreTime:
// dx / dt is one estimate of the speed. Events within 1e-6 µs of the centre are left out. Of all
// channels' estimates the half farthest from the channel centre is kept (at least one); the speed is
// their median, the spread 1.4826 times the median of their distances from it. Medians are the
// element at position n / 2 of the sorted values, NaN sorting last. (0, 0) without positions, with a
// centre not above 0, an empty trace (traceLength 0) or no estimate; a speed not above 0 becomes 0.
SpeedEstimate estimateSpeed(const std::vector<ChannelPeaks>& channels, double threshold,
    const std::vector<double>& posX, double centreX, double traceCentreTime, std::size_t traceLength);

// The samples [start, high] of a trace searched for one event's peak.
struct PeakWindow
{
    std::size_t start = 0;
    std::size_t high = 0;
};

// Turns a window [low, high] in fractional samples into whole samples of a trace of `traceLength`
// samples: high is capped at traceLength - 1, both ends are truncated and clamped to the trace, and
// start is the smaller of the two, so that a window whose high end lies left of its low end collapses
// to its high end. False for non-finite ends or an empty trace.
bool clampWindow(double low, double high, std::size_t traceLength, PeakWindow& window);

// The window predicted by the cell's own position and size: it passes the trace centre when it is at
// the channel centre, and it is as long as the cell takes to pass, widened by the relative spread
// of the speed, by 50 % at most. `sampleTime` in µs; needs speed above 0.
bool cellWindow(double posX, double sizeX, double centreX, double speed, double spread, double sampleTime,
    std::size_t traceLength, PeakWindow& window);

// The window of `halfWidth` samples either side of the position the instrument recorded (µs).
bool recordedWindow(
    double recordedPos, double halfWidth, double sampleTime, std::size_t traceLength, PeakWindow& window);

// One event's refined peak: height (baseline offset included), position in µs and full width at half
// height in µs.
struct PeakResult
{
    double max = 0.0;
    double pos = 0.0;
    double width = 0.0;
};

// The highest sample of trace[start..high] plus `offset`, the first of equal ones. The width runs
// between the first samples below half that height on either side of the peak, or to the ends of the
// window: on the right `high` is the last sample looked at, on the left start + 1 (start itself never
// is). False when `high` lies beyond the trace or no sample is a number.
bool findPeak(const std::vector<float>& trace, const PeakWindow& window, double offset, double sampleTime,
    PeakResult& result);

} // namespace Tessaly
