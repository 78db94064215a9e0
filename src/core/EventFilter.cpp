#include "core/EventFilter.h"

#include "core/ScaleModes.h"
#include "core/SlabPolygon.h"

#include <algorithm>

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

bool passes(const PreparedRange& range, std::size_t i)
{
    const double v = range.values[i];
    // A NaN compares false on both bounds: outside, so an inverted rule passes it.
    const bool inside = v >= range.minValue && v <= range.maxValue;
    return inside != range.inverted;
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

    std::vector<std::int32_t> indices;
    indices.reserve(eventCount);
    if (ranges.empty() && polygons.empty()) {
        for (std::size_t i = 0; i < eventCount; ++i)
            indices.push_back(static_cast<std::int32_t>(i));
        return indices;
    }

    // Mode 0 keeps the events that pass every rule, any other mode exactly the others. Ranges come
    // first, and polygons, the costly tests, only for events that passed them. The verdicts have
    // no side effects, so within each kind every rule is tested without branching on the one
    // before, and the index is written unconditionally and kept by advancing the end: verdicts on
    // scattered data are what a branch predictor guesses worst.
    const bool keepPassing = m_combineMode == ShowPassingEvents;
    indices.resize(eventCount);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < eventCount; ++i) {
        bool passesAll = true;
        for (const PreparedRange& range : ranges)
            passesAll &= passes(range, i);
        if (passesAll) {
            for (const PreparedPolygon& polygon : polygons)
                passesAll &= passes(polygon, i);
        }
        indices[kept] = static_cast<std::int32_t>(i);
        kept += passesAll == keepPassing ? 1 : 0;
    }
    indices.resize(kept);
    return indices;
}

} // namespace Tessaly
