#include "core/EventFilter.h"

#include "core/ParallelBlocks.h"
#include "core/ScaleModes.h"
#include "core/SlabPolygon.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Tessaly {

void EventFilter::addRule(const FilterRule& rule)
{
    m_rules.push_back(rule);
}

void EventFilter::setRule(int index, const FilterRule& rule)
{
    if (index >= 0 && index < ruleCount())
        m_rules[static_cast<std::size_t>(index)] = rule;
}

void EventFilter::removeRule(int index)
{
    if (index >= 0 && index < ruleCount())
        m_rules.erase(m_rules.begin() + index);
}

void EventFilter::clearRules()
{
    m_rules.clear();
}

std::vector<std::string> EventFilter::requiredFeatures() const
{
    std::vector<std::string> names;
    auto addOnce = [&names](const std::string& name) {
        if (std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(name);
    };
    for (const FilterRule& rule : m_rules) {
        if (!rule.enabled)
            continue;
        addOnce(rule.featureName);
        if (rule.type == PolygonRule && !rule.featureNameY.empty())
            addOnce(rule.featureNameY);
    }
    return names;
}

namespace {

struct PreparedRange
{
    const double* values;
    double minValue;
    double maxValue;
    bool inverted;
};

struct PreparedPolygon
{
    const double* xValues;
    const double* yValues;
    SlabPolygon shape; // vertices in plot space
    int scaleXMode;
    int scaleYMode;
    bool xUnscaled;
    bool yUnscaled;
    bool inverted;
};

const double* usableColumn(const FeatureColumns& columns, const std::string& name, std::size_t eventCount)
{
    const auto it = columns.find(name);
    if (it == columns.end() || it->second == nullptr || it->second->size() < eventCount)
        return nullptr;
    return it->second->data();
}

bool isUnscaled(int mode)
{
    return mode != LogScale && mode != PseudoLogScale;
}

PreparedPolygon preparePolygon(const FilterRule& rule, const double* xValues, const double* yValues)
{
    std::vector<PlanePoint> vertices;
    vertices.reserve(rule.polygonVertices.size());
    for (const PlanePoint& v : rule.polygonVertices)
        vertices.emplace_back(scaleValue(v.first, rule.scaleXMode), scaleValue(v.second, rule.scaleYMode));
    return { xValues, yValues, SlabPolygon(vertices), rule.scaleXMode, rule.scaleYMode,
        isUnscaled(rule.scaleXMode), isUnscaled(rule.scaleYMode), rule.inverted };
}

// Events per batch of range tests, and per block of work on the thread pool.
constexpr std::size_t evaluationBatch = 1024;
constexpr std::size_t minimumEvaluationBlock = 100000;

// Bit j set where values[j] lies within the range's bounds, for count <= 64 values. A NaN compares
// false on both bounds: outside, so an inverted rule passes it.
std::uint64_t insideBits(const double* values, std::size_t count, const PreparedRange& range)
{
    std::uint64_t bits = 0;
    std::size_t j = 0;
#if defined(__SSE2__)
    const __m128d low = _mm_set1_pd(range.minValue);
    const __m128d high = _mm_set1_pd(range.maxValue);
    for (; j + 2 <= count; j += 2) {
        const __m128d v = _mm_loadu_pd(values + j);
        // Ordered comparisons: false where v is NaN.
        const __m128d inside = _mm_and_pd(_mm_cmple_pd(low, v), _mm_cmple_pd(v, high));
        bits |= static_cast<std::uint64_t>(_mm_movemask_pd(inside)) << j;
    }
#endif
    for (; j < count; ++j)
        bits |= static_cast<std::uint64_t>(values[j] >= range.minValue && values[j] <= range.maxValue) << j;
    return bits;
}

bool passes(const PreparedPolygon& polygon, std::size_t i)
{
    const double rawX = polygon.xValues[i];
    const double rawY = polygon.yValues[i];
    const double x = polygon.xUnscaled ? rawX : scaleValue(rawX, polygon.scaleXMode);
    const double y = polygon.yUnscaled ? rawY : scaleValue(rawY, polygon.scaleYMode);
    return polygon.shape.contains(x, y) != polygon.inverted;
}

} // namespace

std::vector<std::int32_t> EventFilter::evaluate(const FeatureColumns& columns, std::size_t eventCount) const
{
    std::vector<PreparedRange> ranges;
    std::vector<PreparedPolygon> polygons;
    for (const FilterRule& rule : m_rules) {
        if (!rule.enabled)
            continue;
        if (rule.type == RangeRule) {
            if (const double* values = usableColumn(columns, rule.featureName, eventCount))
                ranges.push_back({ values, rule.minValue, rule.maxValue, rule.inverted });
        } else if (rule.type == PolygonRule && rule.polygonVertices.size() > 2) {
            const double* xValues = usableColumn(columns, rule.featureName, eventCount);
            const double* yValues = usableColumn(columns, rule.featureNameY, eventCount);
            if (xValues != nullptr && yValues != nullptr)
                polygons.push_back(preparePolygon(rule, xValues, yValues));
        }
    }

    if (ranges.empty() && polygons.empty()) {
        std::vector<std::int32_t> indices(eventCount);
        std::iota(indices.begin(), indices.end(), 0);
        return indices;
    }

    // Mode 0 keeps the events that pass every rule, any other mode exactly the others. Verdicts are
    // bits, 64 events to a word: each range rule is tested over a batch of events, several at a
    // time and without branches, and its bits are combined with those of the rules before;
    // polygons, the costly tests, run only for events that passed the ranges. The kept events are
    // then read off the set bits. Blocks of events run on the thread pool, each into its own list,
    // and the lists are joined in order.
    const bool keepPassing = m_combineMode == ShowPassingEvents;
    const std::size_t blocks = parallelBlockCount(eventCount, minimumEvaluationBlock);
    std::vector<std::vector<std::int32_t>> blockIndices(blocks);
    runInBlocks(eventCount, blocks, [&](std::size_t block, std::size_t first, std::size_t last) {
        std::vector<std::int32_t>& out = blockIndices[block];
        out.resize(last - first);
        std::size_t kept = 0;
        std::uint64_t verdicts[evaluationBatch / 64];
        for (std::size_t from = first; from < last; from += evaluationBatch) {
            const std::size_t count = std::min(evaluationBatch, last - from);
            const std::size_t words = (count + 63) / 64;
            for (std::size_t w = 0; w < words; ++w) {
                const std::size_t inWord = std::min<std::size_t>(64, count - 64 * w);
                verdicts[w] = inWord == 64 ? ~std::uint64_t { 0 } : (std::uint64_t { 1 } << inWord) - 1;
            }
            for (const PreparedRange& range : ranges) {
                for (std::size_t w = 0; w < words; ++w) {
                    const std::size_t at = from + 64 * w;
                    const std::uint64_t inside
                        = insideBits(range.values + at, std::min<std::size_t>(64, count - 64 * w), range);
                    verdicts[w] &= range.inverted ? ~inside : inside;
                }
            }
            if (!polygons.empty()) {
                for (std::size_t w = 0; w < words; ++w) {
                    for (std::uint64_t open = verdicts[w]; open != 0; open &= open - 1) {
                        const std::size_t i = from + 64 * w + static_cast<std::size_t>(__builtin_ctzll(open));
                        bool inside = true;
                        for (const PreparedPolygon& polygon : polygons)
                            inside &= passes(polygon, i);
                        if (!inside)
                            verdicts[w] &= ~(std::uint64_t { 1 } << (i - from - 64 * w));
                    }
                }
            }
            for (std::size_t w = 0; w < words; ++w) {
                const std::size_t inWord = std::min<std::size_t>(64, count - 64 * w);
                const std::uint64_t all
                    = inWord == 64 ? ~std::uint64_t { 0 } : (std::uint64_t { 1 } << inWord) - 1;
                const std::uint64_t keep = keepPassing ? verdicts[w] : ~verdicts[w] & all;
                const auto base = static_cast<std::int32_t>(from + 64 * w);
                for (std::uint64_t left = keep; left != 0; left &= left - 1)
                    out[kept++] = base + __builtin_ctzll(left);
            }
        }
        out.resize(kept);
    });
    if (blocks == 1)
        return std::move(blockIndices.front());
    std::size_t total = 0;
    for (const auto& part : blockIndices)
        total += part.size();
    std::vector<std::int32_t> indices;
    indices.reserve(total);
    for (const auto& part : blockIndices)
        indices.insert(indices.end(), part.begin(), part.end());
    return indices;
}

} // namespace Tessaly
