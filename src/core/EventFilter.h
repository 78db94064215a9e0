#pragma once

#include "core/FilterRule.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace Tessaly {

// Feature name to its column; a null entry or a column shorter than the event count takes the
// rules on that feature out of the evaluation.
using FeatureColumns = std::unordered_map<std::string, const std::vector<double>*>;

enum FilterCombineMode : int {
    ShowPassingEvents = 0,
    // Any non-zero mode shows the exact complement; 1 is the value that is stored.
    ShowExcludedEvents = 1,
};

// The rules of one dataset, joined by AND; the combine mode can turn the result into its complement.
class EventFilter
{
public:
    void addRule(const FilterRule& rule);
    // Out-of-range indices are ignored.
    void setRule(int index, const FilterRule& rule);
    void removeRule(int index);
    void clearRules();
    int ruleCount() const { return static_cast<int>(m_rules.size()); }
    const std::vector<FilterRule>& rules() const { return m_rules; }

    int combineMode() const { return m_combineMode; }
    void setCombineMode(int mode) { m_combineMode = mode; }
    // Not consulted by evaluate(): callers skip evaluation for a disabled filter.
    bool isEnabled() const { return m_enabled; }
    void setEnabled(bool on) { m_enabled = on; }

    // Features that the enabled rules read, each once, in order of first use.
    std::vector<std::string> requiredFeatures() const;

    // Indices of the events that the filter shows, rising. Rules whose columns are missing or too
    // short, and polygons of fewer than three vertices, are left out; with nothing left every
    // event is shown in either combine mode.
    std::vector<std::int32_t> evaluate(const FeatureColumns& columns, std::size_t eventCount) const;

private:
    std::vector<FilterRule> m_rules;
    int m_combineMode = ShowPassingEvents;
    bool m_enabled = true;
};

} // namespace Tessaly
