#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Tessaly {

// A polygon gate stored by the instrument: a closed polygon in the plane of two features.
struct PolygonFilterDef
{
    std::string xFeature;
    std::string yFeature;
    std::vector<std::pair<double, double>> vertices; // x, y
};

// The root attributes of a measurement file as text. An attribute named "section:key" is filed under
// its key in the map of its section when the section is one of the eight known ones; every attribute,
// with or without a section, is filed under its full name in allAttributes.
struct VQDMetadata
{
    using TextMap = std::map<std::string, std::string>;

    TextMap experiment;
    TextMap setup;
    TextMap imaging;
    TextMap online_contour;
    TextMap online_filter;
    TextMap offline_filter;
    TextMap fluorescence;
    TextMap export_; // "export" section; the name itself is a reserved word

    TextMap allAttributes;
    std::vector<PolygonFilterDef> polygonFilters; // in attribute order

    // The map of a known section, or nullptr for any other section name.
    TextMap* section(const std::string& name)
    {
        return const_cast<TextMap*>(static_cast<const VQDMetadata*>(this)->section(name));
    }

    const TextMap* section(const std::string& name) const
    {
        const std::pair<const char*, const TextMap*> sections[] = {
            { "experiment", &experiment },
            { "setup", &setup },
            { "imaging", &imaging },
            { "online_contour", &online_contour },
            { "online_filter", &online_filter },
            { "offline_filter", &offline_filter },
            { "fluorescence", &fluorescence },
            { "export", &export_ },
        };
        for (const auto& [sectionName, map] : sections)
            if (name == sectionName)
                return map;
        return nullptr;
    }
};

} // namespace Tessaly
