#include "core/SoftLimitRules.h"

#include <string>

namespace Tessaly {

namespace {
const std::string softLimitSuffix = " soft limit";
}

std::vector<FilterRule> softLimitRules(const VQDMetadata& metadata)
{
    std::vector<FilterRule> rules;
    const VQDMetadata::TextMap& section = metadata.online_filter;
    for (const auto& [key, value] : section) {
        // The suffix alone names no feature.
        if (key.size() <= softLimitSuffix.size()
            || key.compare(key.size() - softLimitSuffix.size(), softLimitSuffix.size(), softLimitSuffix) != 0
            || value != "1")
            continue;
        const std::string base = key.substr(0, key.size() - softLimitSuffix.size());
        const std::size_t comma = base.find(',');
        if (comma != std::string::npos) {
            const std::string x = base.substr(0, comma);
            const std::string y = base.substr(comma + 1);
            for (const PolygonFilterDef& gate : metadata.polygonFilters) {
                if (gate.xFeature != x || gate.yFeature != y || gate.vertices.empty())
                    continue;
                FilterRule rule;
                rule.type = PolygonRule;
                rule.featureName = x;
                rule.featureNameY = y;
                rule.polygonVertices = gate.vertices;
                rules.push_back(rule);
                break;
            }
            continue;
        }
        const auto low = section.find(base + " min");
        const auto high = section.find(base + " max");
        if (low == section.end() || high == section.end())
            continue;
        FilterRule rule;
        rule.featureName = base;
        rule.minValue = std::stod(low->second);
        rule.maxValue = std::stod(high->second);
        rules.push_back(rule);
    }
    return rules;
}

} // namespace Tessaly
