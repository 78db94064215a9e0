#include "calc/TraceFilters.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Tessaly {

namespace {

// Scale from the median absolute deviation to a standard deviation for normal data.
constexpr float robustDeviationFactor = 1.4826f;

// Numbers ascending, NaN after every number (as numpy sorts), so that a window holding NaN is still
// ordered and binary searches in it stay defined.
bool sortsBefore(float a, float b)
{
    return a < b || (!std::isnan(a) && std::isnan(b));
}

// The samples of a window, kept sorted while the window slides along the trace: each step inserts the
// entering sample and removes the leaving one, instead of sorting the window anew.
class SortedWindow
{
public:
    SortedWindow(const std::vector<float>& trace, std::size_t halfWindow)
        : m_trace(trace)
        , m_halfWindow(halfWindow)
    {
        m_values.reserve(std::min(2 * halfWindow + 1, trace.size()));
        const std::size_t last = std::min(halfWindow, trace.size() - 1);
        for (std::size_t j = 0; j <= last; ++j)
            insert(trace[j]);
    }

    // Moves the window from sample i - 1 to sample i; it shrinks at the ends of the trace.
    void moveTo(std::size_t i)
    {
        if (i + m_halfWindow < m_trace.size())
            insert(m_trace[i + m_halfWindow]);
        if (i > m_halfWindow)
            erase(m_trace[i - m_halfWindow - 1]);
    }

    // Element w / 2 of the w sorted samples: for even w the upper of the two middle ones.
    float middle() const { return m_values[m_values.size() / 2]; }

    // Element w / 2 of the sorted absolute deviations |x - centre|. Numbers below and above the centre
    // give two ascending runs of deviations, walked outwards from the centre like a merge; NaN
    // deviations come last.
    float middleDeviation(float centre) const
    {
        if (std::isnan(centre))
            return centre;
        const auto numbersEnd = std::partition_point(
            m_values.begin(), m_values.end(), [](float value) { return !std::isnan(value); });
        std::size_t above = static_cast<std::size_t>(
            std::lower_bound(m_values.begin(), numbersEnd, centre) - m_values.begin());
        std::size_t below = above; // one past the next number below the centre
        const std::size_t numbers = static_cast<std::size_t>(numbersEnd - m_values.begin());
        float deviation = 0.0f;
        for (std::size_t taken = 0; taken <= m_values.size() / 2; ++taken) {
            const bool hasBelow = below > 0;
            const bool hasAbove = above < numbers;
            if (!hasBelow && !hasAbove)
                return std::numeric_limits<float>::quiet_NaN();
            // centre - x equals |x - centre| exactly for x below the centre: float subtraction is
            // symmetric in sign.
            if (hasBelow && (!hasAbove || centre - m_values[below - 1] <= m_values[above] - centre))
                deviation = centre - m_values[--below];
            else
                deviation = m_values[above++] - centre;
        }
        return deviation;
    }

private:
    void insert(float value)
    {
        m_values.insert(std::upper_bound(m_values.begin(), m_values.end(), value, sortsBefore), value);
    }
    // The value is in the window, so the first element not before it is one equal to it.
    void erase(float value)
    {
        m_values.erase(std::lower_bound(m_values.begin(), m_values.end(), value, sortsBefore));
    }

    const std::vector<float>& m_trace;
    const std::size_t m_halfWindow;
    std::vector<float> m_values;
};

// Largest magnitude for which the window of plain numbers below is used: differences of two such
// samples stay finite, so they always order below the infinite sentinels at the window's ends.
constexpr float plainLimit = 1e37f;

// True when every sample is a number of at most plainLimit in magnitude (no NaN, no infinity).
bool isPlain(const std::vector<float>& trace)
{
    bool plain = true;
    for (const float value : trace)
        plain &= std::fabs(value) <= plainLimit;
    return plain;
}

// The same sliding sorted window for traces of plain numbers only, which is where almost all the time
// goes: one fixed buffer, an infinite sentinel at each end so that the shifts need no bound checks,
// and a slide that moves the leaving sample's slot to where the entering sample
// belongs in one pass instead of an erase and an insert.
class PlainWindow
{
public:
    PlainWindow(const std::vector<float>& trace, std::size_t halfWindow)
        : m_trace(trace)
        , m_halfWindow(halfWindow)
        , m_buffer(std::min(2 * halfWindow + 1, trace.size()) + 2 + padding,
              std::numeric_limits<float>::infinity())
        , m_values(m_buffer.data() + 1)
    {
        m_buffer.front() = -std::numeric_limits<float>::infinity();
        const std::size_t last = std::min(halfWindow, trace.size() - 1);
        for (std::size_t j = 0; j <= last; ++j)
            insert(trace[j]);
    }

    void moveTo(std::size_t i)
    {
        const bool entering = i + m_halfWindow < m_trace.size();
        const bool leaving = i > m_halfWindow;
        if (entering && leaving)
            replace(m_trace[i - m_halfWindow - 1], m_trace[i + m_halfWindow]);
        else if (entering)
            insert(m_trace[i + m_halfWindow]);
        else if (leaving)
            erase(m_trace[i - m_halfWindow - 1]);
    }

    float middle() const { return m_values[m_size / 2]; }

    // Element h = w / 2 of the sorted deviations from the middle sample. The h + 1 samples nearest the
    // centre are h + 1 neighbours in the sorted window, and the largest deviation in a run of h + 1
    // neighbours lies at one of its ends; no run has a smaller largest deviation than the nearest one.
    // So the element is the smallest, over the runs that hold the centre, of the deviation at the
    // farther end. The runs are independent, which keeps the loop free of a dependency chain. (A zero
    // may come out as -0 where the sorted deviations hold +0; the filters only ask whether it is > 0.)
    float middleDeviation() const
    {
        const std::size_t half = m_size / 2;
        const float centre = m_values[half];
        const std::size_t lastStart = std::min(half, m_size - 1 - half);
        // Four runs at a time. Every operand is a finite number here, where the vector minimum and
        // maximum agree with std::min and std::max (up to the sign of a zero).
        const float inf = std::numeric_limits<float>::infinity();
        std::size_t start = 0;
#ifdef __SSE2__
        const __m128 centres = _mm_set1_ps(centre);
        __m128 least4 = _mm_set1_ps(inf);
        for (; start + 3 <= lastStart; start += 4) {
            const __m128 down = _mm_sub_ps(centres, _mm_loadu_ps(m_values + start));
            const __m128 up = _mm_sub_ps(_mm_loadu_ps(m_values + start + half), centres);
            least4 = _mm_min_ps(least4, _mm_max_ps(down, up));
        }
        alignas(16) float lanes[4];
        _mm_store_ps(lanes, least4);
        float least = std::min(std::min(lanes[0], lanes[1]), std::min(lanes[2], lanes[3]));
#else
        float least = inf;
#endif
        for (; start <= lastStart; ++start)
            least = std::min(least, std::max(centre - m_values[start], m_values[start + half] - centre));
        return least;
    }

private:
    void insert(float value)
    {
        // m_buffer[slot] is the sample before m_values[slot], the -infinity sentinel for slot 0.
        std::size_t slot = m_size;
        for (; m_buffer[slot] > value; --slot)
            m_values[slot] = m_buffer[slot];
        m_values[slot] = value;
        ++m_size;
        m_values[m_size] = std::numeric_limits<float>::infinity();
    }
    // Equal samples keep their order as in the general window: a new one goes after those equal to it,
    // the first equal one leaves. That matters only for +0 and -0, which are equal but print apart.
    // The value is in the window; the sentinel after the last sample shifts down with the rest.
    void erase(float value)
    {
        std::size_t slot = find(value);
        for (; slot < m_size; ++slot)
            m_values[slot] = m_values[slot + 1];
        --m_size;
    }
    // Both slots are found by counting over the whole window, which has no early exit for the branch
    // predictor to miss: the first sample equal to the leaving one, and the slot after every sample
    // not above the entering one once the leaving one is out.
    void replace(float leaving, float entering)
    {
        std::uint32_t below = 0;
        std::uint32_t notAbove = 0;
        std::size_t j = 0;
#ifdef __SSE2__
        // Four samples per comparison; a true lane is all ones, -1 as an integer, so subtracting the
        // masks counts them. The last group may run into the padding after the window, which is
        // infinite and so neither below nor at a number.
        const __m128 leavings = _mm_set1_ps(leaving);
        const __m128 enterings = _mm_set1_ps(entering);
        __m128i below4 = _mm_setzero_si128();
        __m128i notAbove4 = _mm_setzero_si128();
        for (; j < m_size; j += 4) {
            const __m128 values = _mm_loadu_ps(m_values + j);
            below4 = _mm_sub_epi32(below4, _mm_castps_si128(_mm_cmplt_ps(values, leavings)));
            notAbove4 = _mm_sub_epi32(notAbove4, _mm_castps_si128(_mm_cmple_ps(values, enterings)));
        }
        alignas(16) std::uint32_t lanes[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(lanes), below4);
        below = lanes[0] + lanes[1] + lanes[2] + lanes[3];
        _mm_store_si128(reinterpret_cast<__m128i*>(lanes), notAbove4);
        notAbove = lanes[0] + lanes[1] + lanes[2] + lanes[3];
#endif
        for (; j < m_size; ++j) {
            below += m_values[j] < leaving ? 1u : 0u;
            notAbove += m_values[j] <= entering ? 1u : 0u;
        }
        const std::size_t from = below;
        std::size_t to = notAbove;
        // A slide moves a few samples at most: plain loops, no library call.
        if (leaving <= entering) {
            --to;
            for (std::size_t slot = from; slot < to; ++slot)
                m_values[slot] = m_values[slot + 1];
        } else {
            for (std::size_t slot = from; slot > to; --slot)
                m_values[slot] = m_values[slot - 1];
        }
        m_values[to] = entering;
    }
    std::size_t find(float value) const
    {
        std::size_t slot = 0;
        while (m_values[slot] != value)
            ++slot;
        return slot;
    }

    // Infinite slots after the end sentinel, so that groups of four samples never read past the buffer.
    static constexpr std::size_t padding = 3;

    const std::vector<float>& m_trace;
    const std::size_t m_halfWindow;
    std::vector<float> m_buffer;
    float* const m_values; // m_values[-1] and m_values[m_size] are the sentinels
    std::size_t m_size = 0;
};

} // namespace

std::vector<float> hampelFilter(const std::vector<float>& trace, int halfWindow, float threshold)
{
    std::vector<float> output = trace;
    // A window of one sample is its own median and never an outlier.
    if (trace.empty() || halfWindow < 1)
        return output;
    if (isPlain(trace)) {
        PlainWindow window(trace, static_cast<std::size_t>(halfWindow));
        for (std::size_t i = 0; i < trace.size(); ++i) {
            if (i > 0)
                window.moveTo(i);
            const float m = window.middle();
            const float s = robustDeviationFactor * window.middleDeviation();
            if (s > 0.0f && std::fabs(trace[i] - m) > s * threshold)
                output[i] = m;
        }
        return output;
    }
    SortedWindow window(trace, static_cast<std::size_t>(halfWindow));
    for (std::size_t i = 0; i < trace.size(); ++i) {
        if (i > 0)
            window.moveTo(i);
        const float m = window.middle();
        const float s = robustDeviationFactor * window.middleDeviation(m);
        if (s > 0.0f && std::fabs(trace[i] - m) > s * threshold)
            output[i] = m;
    }
    return output;
}

std::vector<float> slidingMedian(const std::vector<float>& trace, int halfWindow)
{
    if (trace.empty() || halfWindow < 1)
        return trace;
    std::vector<float> output(trace.size());
    if (isPlain(trace)) {
        PlainWindow window(trace, static_cast<std::size_t>(halfWindow));
        for (std::size_t i = 0; i < trace.size(); ++i) {
            if (i > 0)
                window.moveTo(i);
            output[i] = window.middle();
        }
        return output;
    }
    SortedWindow window(trace, static_cast<std::size_t>(halfWindow));
    for (std::size_t i = 0; i < trace.size(); ++i) {
        if (i > 0)
            window.moveTo(i);
        output[i] = window.middle();
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
    for (std::size_t j = 0; j <= std::min(k, n - 1); ++j)
        sum += trace[j];
    for (std::size_t i = 0; i < n; ++i) {
        if (i > 0) {
            if (i + k < n)
                sum += trace[i + k];
            if (i > k)
                sum -= trace[i - k - 1];
        }
        const std::size_t first = i > k ? i - k : 0;
        const std::size_t last = std::min(i + k, n - 1);
        output[i] = static_cast<float>(sum / static_cast<double>(last - first + 1));
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
    std::size_t i = m;
#ifdef __SSE2__
    // Four neighbouring samples at once, each lane with the same products added in the same order as
    // the loop below, so the sums are the same to the bit.
    for (; i + 3 + m < n; i += 4) {
        __m128 sums = _mm_setzero_ps();
        for (std::size_t j = 0; j < weights.size(); ++j)
            sums = _mm_add_ps(
                sums, _mm_mul_ps(_mm_set1_ps(weights[j]), _mm_loadu_ps(trace.data() + i - m + j)));
        _mm_storeu_ps(output.data() + i, sums);
    }
#endif
    for (; i + m < n; ++i) {
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
