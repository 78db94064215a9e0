#pragma once

#include <string>
#include <unordered_map>

namespace Tessaly {

// Display text of one feature: the label and its unit (empty when the feature has none).
struct FeatureInfo
{
    std::string label;
    std::string unit;
};

using FeatureTable = std::unordered_map<std::string, FeatureInfo>;

// General table: 38 named features, userdef0..9 and the fluorescence keys of channels 1 to 3.
extern const FeatureTable traceFeatureSuffixTable;
extern const FeatureTable featureInfoTable;
// In files of the maker's instrument four user-defined columns have a fixed meaning.
extern const FeatureTable instrumentFeatureOverrides;

// The text every menu, axis and table shows for a feature key: "Label [unit]", "Label", or the key
// itself when no table knows it. The instrument overrides apply only to instrument files.
std::string featureLabel(const std::string& key, bool instrumentData);

// Per-event images, masks and contours are no scalar columns; everything else may be listed.
bool isScalarFeature(const std::string& key);

} // namespace Tessaly
