#include "calc/TraceFilters.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tessaly {

namespace {

// Scale from the median absolute deviation to a standard deviation for normal data.
constexpr float robustDeviationFactor = 1.4826f;

// Element w / 2 of the sorted values (for even w the upper of the two middle ones). Reorders `values`.
float middleElement(std::vector<float>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Bounds [first, last] of the window of sample i, shrunk to the trace.
struct Window
{
    std::size_t first;
    std::size_t last;
};

Window windowAt(std::size_t i, std::size_t k, std::size_t n)
{
    return { i > k ? i - k : 0, std::min(i + k, n - 1) };
}

// Copies the window of sample i into `buffer`, whose capacity is kept from call to call.
void copyWindow(const std::vector<float>& trace, std::size_t i, std::size_t k, std::vector<float>& buffer)
{
    const Window window = windowAt(i, k, trace.size());
    buffer.assign(trace.begin() + static_cast<std::ptrdiff_t>(window.first),
        trace.begin() + static_cast<std::ptrdiff_t>(window.last + 1));
}

} // namespace

std::vector<float> hampelFilter(const std::vector<float>& trace, int halfWindow, float threshold)
{
    std::vector<float> output = trace;
    // A window of one sample is its own median and never an outlier.
    if (trace.empty() || halfWindow < 1)
        return output;
    const std::size_t k = static_cast<std::size_t>(halfWindow);
    std::vector<float> window;
    for (std::size_t i = 0; i < trace.size(); ++i) {
        copyWindow(trace, i, k, window);
        const float m = middleElement(window);
        for (float& value : window)
            value = std::fabs(value - m);
        const float s = robustDeviationFactor * middleElement(window);
        if (s > 0.0f && std::fabs(trace[i] - m) > s * threshold)
            output[i] = m;
    }
    return output;
}

std::vector<float> slidingMedian(const std::vector<float>& trace, int halfWindow)
{
    if (trace.empty() || halfWindow < 1)
        return trace;
    const std::size_t k = static_cast<std::size_t>(halfWindow);
    std::vector<float> output(trace.size());
    std::vector<float> window;
    for (std::size_t i = 0; i < trace.size(); ++i) {
        copyWindow(trace, i, k, window);
        output[i] = middleElement(window);
    }
    return output;
}

std::vector<float> movingMean(const std::vector<float>& trace, int halfWindow)
{
    if (trace.empty() || halfWindow < 1)
        return trace;
    const std::size_t n = trace.size();
    const std::size_t k = static_cast<std::size_t>(halfWindow);
    std::vector<float> output(n);
    double sum = 0.0;
    const Window first = windowAt(0, k, n);
    for (std::size_t j = first.first; j <= first.last; ++j)
        sum += trace[j];
    for (std::size_t i = 0; i < n; ++i) {
        if (i > 0) {
            if (i + k < n)
                sum += trace[i + k];
            if (i >= k + 1)
                sum -= trace[i - k - 1];
        }
        const Window window = windowAt(i, k, n);
        output[i] = static_cast<float>(sum / static_cast<double>(window.last - window.first + 1));
    }
    return output;
}

std::vector<float> savitzkyGolay(const std::vector<float>& trace, int halfWindow)
{
    if (halfWindow < 1)
        return trace;
    const std::size_t m = static_cast<std::size_t>(halfWindow);
    const std::size_t n = trace.size();
    if (n < 2 * m + 1)
        return trace;

    // weights[j + m] for j = -m..m. The raw weights are whole numbers well inside float's exact range,
    // so their sum is exact whatever the order.
    std::vector<float> weights(2 * m + 1);
    float total = 0.0f;
    const long long h = halfWindow;
    for (long long j = -h; j <= h; ++j) {
        const float raw = static_cast<float>(3 * h * (h + 1) - 1 - 5 * j * j);
        weights[static_cast<std::size_t>(j + h)] = raw;
        total += raw;
    }
    for (float& weight : weights)
        weight /= total;

    std::vector<float> output = trace;
    for (std::size_t i = m; i + m < n; ++i) {
        float sum = 0.0f;
        for (std::size_t j = 0; j < weights.size(); ++j)
            sum += weights[j] * trace[i - m + j];
        output[i] = sum;
    }
    return output;
}

std::vector<float> applyTraceProcessing(std::vector<float> trace, const TraceProcessing& processing)
{
    if (processing.hampel1)
        trace = hampelFilter(trace, processing.hampel1HalfWindow, processing.hampel1Threshold);
    if (processing.hampel2)
        trace = hampelFilter(trace, processing.hampel2HalfWindow, processing.hampel2Threshold);
    if (processing.median)
        trace = slidingMedian(trace, processing.medianHalfWindow);
    if (processing.rolling)
        trace = movingMean(trace, processing.rollingHalfWindow);
    if (processing.savitzkyGolay)
        trace = savitzkyGolay(trace, processing.savitzkyGolayHalfWindow);
    return trace;
}

} // namespace Tessaly
