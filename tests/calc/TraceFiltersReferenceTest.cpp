#include "calc/TraceFilters.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>

using namespace Tessaly;

namespace {

// The filters written the slow, obvious way: every window copied and fully sorted (NaN last), every
// deviation list built and sorted anew. The fast filters must give the same bits on every trace.

std::vector<float> windowAt(const std::vector<float>& trace, std::size_t i, std::size_t k)
{
    const std::size_t first = i > k ? i - k : 0;
    const std::size_t last = std::min(i + k, trace.size() - 1);
    return std::vector<float>(trace.begin() + static_cast<std::ptrdiff_t>(first),
        trace.begin() + static_cast<std::ptrdiff_t>(last + 1));
}

float sortedMiddle(std::vector<float> values)
{
    std::sort(values.begin(), values.end(),
        [](float a, float b) { return a < b || (!std::isnan(a) && std::isnan(b)); });
    return values[values.size() / 2];
}

std::vector<float> referenceHampel(const std::vector<float>& trace, int halfWindow, float threshold)
{
    std::vector<float> output = trace;
    for (std::size_t i = 0; i < trace.size() && halfWindow > 0; ++i) {
        const std::vector<float> window = windowAt(trace, i, static_cast<std::size_t>(halfWindow));
        const float m = sortedMiddle(window);
        std::vector<float> deviations;
        for (const float value : window)
            deviations.push_back(std::fabs(value - m));
        const float s = 1.4826f * sortedMiddle(deviations);
        if (s > 0.0f && std::fabs(trace[i] - m) > s * threshold)
            output[i] = m;
    }
    return output;
}

std::vector<float> referenceMedian(const std::vector<float>& trace, int halfWindow)
{
    std::vector<float> output = trace;
    for (std::size_t i = 0; i < trace.size() && halfWindow > 0; ++i)
        output[i] = sortedMiddle(windowAt(trace, i, static_cast<std::size_t>(halfWindow)));
    return output;
}

// One sample at a time, products added for j = -m..m; the weights as the filter defines them.
std::vector<float> referenceSavitzkyGolay(const std::vector<float>& trace, int m)
{
    const auto n = static_cast<int>(trace.size());
    if (m < 1 || n < 2 * m + 1)
        return trace;
    float total = 0.0f;
    std::vector<float> weights;
    for (int j = -m; j <= m; ++j) {
        weights.push_back(static_cast<float>(3 * m * (m + 1) - 1 - 5 * j * j));
        total += weights.back();
    }
    for (float& weight : weights)
        weight /= total;
    std::vector<float> output = trace;
    for (int i = m; i + m < n; ++i) {
        float sum = 0.0f;
        for (int j = -m; j <= m; ++j)
            sum += weights[static_cast<std::size_t>(j + m)] * trace[static_cast<std::size_t>(i + j)];
        output[static_cast<std::size_t>(i)] = sum;
    }
    return output;
}

std::uint32_t bitsOf(float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// Equal bit for bit, except that any two NaN match (the reference and the filter may carry different
// NaN payloads through a subtraction).
::testing::AssertionResult sameBits(const std::vector<float>& expected, const std::vector<float>& actual)
{
    if (expected.size() != actual.size())
        return ::testing::AssertionFailure()
            << "length " << actual.size() << ", expected " << expected.size();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (std::isnan(expected[i]) && std::isnan(actual[i]))
            continue;
        if (bitsOf(expected[i]) != bitsOf(actual[i]))
            return ::testing::AssertionFailure()
                << "sample " << i << " is " << actual[i] << ", expected " << expected[i];
    }
    return ::testing::AssertionSuccess();
}

// Random traces of the kinds the filters meet: a noisy baseline with a peak and spikes, and a few
// levels only, which gives many equal samples, flat windows and ties around the median.
struct TraceKind
{
    const char* name;
    float (*draw)(std::mt19937& rng, std::size_t i);
    bool withNaN;
};

float noisyPeak(std::mt19937& rng, std::size_t i)
{
    std::normal_distribution<float> noise(0.0f, 8.0f);
    std::uniform_int_distribution<int> spike(0, 19);
    const float peak = 600.0f * std::exp(-std::pow((static_cast<float>(i) - 20.0f) / 4.0f, 2.0f) / 2.0f);
    const float value = std::round(100.0f + noise(rng) + peak);
    return spike(rng) == 0 ? value + 2000.0f : value;
}

float fewLevels(std::mt19937& rng, std::size_t)
{
    return static_cast<float>(std::uniform_int_distribution<int>(-2, 2)(rng));
}

std::vector<float> drawTrace(const TraceKind& kind, std::mt19937& rng, std::size_t length)
{
    std::vector<float> trace(length);
    for (std::size_t i = 0; i < length; ++i)
        trace[i] = kind.draw(rng, i);
    if (kind.withNaN && length > 0)
        trace[std::uniform_int_distribution<std::size_t>(0, length - 1)(rng)]
            = std::numeric_limits<float>::quiet_NaN();
    return trace;
}

} // namespace

TEST(TraceFilters, HampelAndMedianMatchAFullSortOfEveryWindow)
{
    // Lengths from a single sample to several windows, half-windows from 1 to beyond the whole trace
    // (every window then shrinks at both ends), thresholds that replace much or little.
    const TraceKind kinds[] = {
        { "noisy peak", noisyPeak, false },
        { "few levels", fewLevels, false },
        { "noisy peak with NaN", noisyPeak, true },
        { "few levels with NaN", fewLevels, true },
    };
    std::mt19937 rng(20261123);
    for (const TraceKind& kind : kinds) {
        for (const std::size_t length : { 1, 2, 3, 7, 12, 23, 40, 177 }) {
            for (const int halfWindow : { 1, 2, 3, 5, 11, 30, 200 }) {
                for (int draw = 0; draw < 4; ++draw) {
                    const std::vector<float> trace = drawTrace(kind, rng, length);
                    for (const float threshold : { 0.5f, 3.0f }) {
                        SCOPED_TRACE(std::string(kind.name) + ", length " + std::to_string(length) + ", k "
                            + std::to_string(halfWindow) + ", t " + std::to_string(threshold));
                        ASSERT_TRUE(sameBits(referenceHampel(trace, halfWindow, threshold),
                            hampelFilter(trace, halfWindow, threshold)));
                    }
                    SCOPED_TRACE(std::string(kind.name) + ", length " + std::to_string(length) + ", k "
                        + std::to_string(halfWindow));
                    ASSERT_TRUE(
                        sameBits(referenceMedian(trace, halfWindow), slidingMedian(trace, halfWindow)));
                }
            }
        }
    }
}

TEST(TraceFilters, InfiniteAndHugeSamplesAreFilteredLikeAnyOther)
{
    // Samples whose differences overflow, and infinities, go through the same windows as numbers do.
    const float inf = std::numeric_limits<float>::infinity();
    const float huge = std::numeric_limits<float>::max();
    const std::vector<std::vector<float>> traces = {
        { 1, 2, inf, 3, 4, 5, -inf, 6, 7 },
        { huge, -huge, huge, 1, 2, -huge, 3, huge, 4 },
        { 1e37f, -1e37f, 1e37f, 5, 5, 5, -1e37f, 1e37f, 5 },
    };
    for (const std::vector<float>& trace : traces) {
        for (const int halfWindow : { 1, 2, 4 }) {
            SCOPED_TRACE("k " + std::to_string(halfWindow) + ", first sample " + std::to_string(trace[0]));
            EXPECT_TRUE(
                sameBits(referenceHampel(trace, halfWindow, 3.0f), hampelFilter(trace, halfWindow, 3.0f)));
            EXPECT_TRUE(sameBits(referenceMedian(trace, halfWindow), slidingMedian(trace, halfWindow)));
        }
    }
}

TEST(TraceFilters, SavitzkyGolayMatchesOneSampleAtATime)
{
    // Lengths around multiples of four past one window, so that every way the interior divides into
    // groups of neighbours, and the samples left over, is met.
    std::mt19937 rng(7);
    for (const int m : { 1, 2, 3, 5, 8 }) {
        for (std::size_t length = 1; length <= 40; ++length) {
            const std::vector<float> trace = drawTrace({ "noisy peak", noisyPeak, false }, rng, length);
            SCOPED_TRACE("m " + std::to_string(m) + ", length " + std::to_string(length));
            ASSERT_TRUE(sameBits(referenceSavitzkyGolay(trace, m), savitzkyGolay(trace, m)));
        }
    }
    const std::vector<float> full = drawTrace({ "noisy peak", noisyPeak, true }, rng, 177);
    EXPECT_TRUE(sameBits(referenceSavitzkyGolay(full, 3), savitzkyGolay(full, 3)));
}
