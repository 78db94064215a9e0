#pragma once

#include <vector>

namespace Tessaly {

// The filters that clean a fluorescence trace, and the chain that runs them. All arithmetic is in
// 32-bit float, so that a filtered trace is the same on every machine and in every consumer (trace
// plot, refinement, writer). Windows of half-width k run from max(i - k, 0) to min(i + k, n - 1): they
// shrink at the ends of the trace.

// Which filters the chain runs and with which windows, in the order in which they run.
struct TraceProcessing
{
    bool hampel1 = true;
    int hampel1HalfWindow = 5;
    float hampel1Threshold = 3.0f;
    bool hampel2 = true;
    int hampel2HalfWindow = 11;
    float hampel2Threshold = 3.0f;
    bool median = false;
    int medianHalfWindow = 3;
    bool rolling = false;
    int rollingHalfWindow = 3;
    bool savitzkyGolay = true;
    int savitzkyGolayHalfWindow = 3;
};

// Replaces outliers by the window's median. A sample is an outlier when it lies further from the median
// m than `threshold` robust deviations, s = 1.4826 * (median of |window - m|). Medians are the element
// at position w / 2 of the sorted window of w samples, NaN sorting above every number. Every sample is
// judged against the input, not against replacements made before it. A flat window (s = 0) never
// replaces a sample.
std::vector<float> hampelFilter(const std::vector<float>& trace, int halfWindow, float threshold);

// Each sample becomes the median (element w / 2 of the sorted window) of its window in the input.
// Unchanged when halfWindow is below 1.
std::vector<float> slidingMedian(const std::vector<float>& trace, int halfWindow);

// Each sample becomes the mean of its window. The window sum runs in double, updated by the entering
// and the leaving sample; each mean is rounded to float. Unchanged when halfWindow is below 1. A NaN
// stays in the running sum, so every mean from its window on is NaN.
std::vector<float> movingMean(const std::vector<float>& trace, int halfWindow);

// Quadratic Savitzky-Golay smoothing over 2m + 1 samples, weights proportional to 3m(m + 1) - 1 - 5j²
// and summing to 1. The first and last m samples, which have no full window, stay as they are; a trace
// shorter than one window, or m below 1, is left unchanged.
std::vector<float> savitzkyGolay(const std::vector<float>& trace, int halfWindow);

// Runs the filters that are on, in this fixed order, each on the result of the one before: first
// Hampel, second Hampel, sliding median, moving mean, Savitzky-Golay.
std::vector<float> applyTraceProcessing(std::vector<float> trace, const TraceProcessing& processing);

} // namespace Tessaly
