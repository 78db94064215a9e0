#include "core/FeatureCatalogue.h"

#include <cctype>

namespace Tessaly {

namespace {

// The suffix table has to exist before the general table expands the fluorescence families from
// it; both live in this file, so their order of static initialisation is the order below.
FeatureTable makeSuffixTable()
{
    return {
        { "_area", { "area of peak", "a.u." } },
        { "_dist", { "distance between two first peaks", "µs" } },
        { "_max", { "maximum", "a.u." } },
        { "_max_ctc", { "maximum, crosstalk-corrected", "a.u." } },
        { "_max_rf", { "maximum refined", "a.u." } },
        { "_npeaks", { "number of peaks", "" } },
        { "_pos", { "position of peak", "µs" } },
        { "_pos_rf", { "position refined", "µs" } },
        { "_width", { "width", "µs" } },
        { "_width_rf", { "width refined", "µs" } },
    };
}

FeatureTable makeInfoTable(const FeatureTable& suffixes)
{
    FeatureTable table = {
        { "area_cvx", { "Convex area", "px" } },
        { "area_msd", { "Measured area", "px" } },
        { "area_ratio", { "Porosity", "" } },
        { "area_um", { "Area", "µm²" } },
        { "area_um_raw", { "Area of raw contour", "µm²" } },
        { "aspect", { "Aspect ratio of bounding box", "" } },
        { "bg_med", { "Median frame background brightness", "a.u." } },
        { "bg_off", { "Background offset", "a.u." } },
        { "bright_avg", { "Brightness average", "a.u." } },
        { "bright_sd", { "Brightness SD", "a.u." } },
        { "bright_bc_avg", { "Brightness average (bgc)", "a.u." } },
        { "bright_bc_sd", { "Brightness SD (bgc)", "a.u." } },
        { "circ", { "Circularity", "" } },
        { "deform", { "Deformation", "" } },
        { "deform_raw", { "Deformation of raw contour", "" } },
        { "deform_odd", { "Deformation of odd FC only", "" } },
        { "deform_even", { "Deformation of even FC only", "" } },
        { "deform_fc", { "Deformation from FC", "" } },
        { "eccentr_prnc", { "Eccentricity of raw contour", "" } },
        { "emodulus", { "Young's modulus", "kPa" } },
        { "flow_rate", { "Flow rate", "µL/s" } },
        { "frame", { "Video frame number", "" } },
        { "index", { "Index (Dataset)", "" } },
        { "index_online", { "Index (Online)", "" } },
        { "inert_ratio_cvx", { "Inertia ratio of convex contour", "" } },
        { "inert_ratio_prnc", { "Principal inertia ratio of raw contour", "" } },
        { "inert_ratio_raw", { "Inertia ratio of raw contour", "" } },
        { "ml_class", { "Most probable ML class", "" } },
        { "per_ratio", { "Inverse convexity", "" } },
        { "per_um_raw", { "Perimeter of raw contour", "µm" } },
        { "pos_x", { "Position along channel axis", "µm" } },
        { "pos_y", { "Position lateral in channel", "µm" } },
        { "size_x", { "Bounding box size x", "µm" } },
        { "size_y", { "Bounding box size y", "µm" } },
        { "temp", { "Chip temperature", "°C" } },
        { "temp_amb", { "Ambient temperature", "°C" } },
        { "time", { "Time", "s" } },
        { "volume", { "Volume", "µm³" } },
    };
    for (int i = 0; i <= 9; ++i)
        table["userdef" + std::to_string(i)] = { "User-defined " + std::to_string(i), "" };
    for (int channel = 1; channel <= 3; ++channel) {
        const std::string prefix = "fl" + std::to_string(channel);
        for (const auto& [suffix, info] : suffixes)
            table[prefix + suffix] = { "FL-" + std::to_string(channel) + " " + info.label, info.unit };
    }
    return table;
}

std::string withUnit(const FeatureInfo& info)
{
    return info.unit.empty() ? info.label : info.label + " [" + info.unit + "]";
}

// A fluorescence family key is "fl", one or more digits, then one of the known suffixes, which
// begin with the underscore. Any channel number is accepted, written as in the key.
bool parseFluorescenceKey(const std::string& key, FeatureInfo& result)
{
    if (key.size() < 4 || key.compare(0, 2, "fl") != 0)
        return false;
    std::size_t pos = 2;
    while (pos < key.size() && std::isdigit(static_cast<unsigned char>(key[pos])))
        ++pos;
    if (pos == 2 || pos >= key.size() || key[pos] != '_')
        return false;
    const auto suffix = traceFeatureSuffixTable.find(key.substr(pos));
    if (suffix == traceFeatureSuffixTable.end())
        return false;
    result.label = "FL-" + key.substr(2, pos - 2) + " " + suffix->second.label;
    result.unit = suffix->second.unit;
    return true;
}

} // namespace

const FeatureTable traceFeatureSuffixTable = makeSuffixTable();
const FeatureTable featureInfoTable = makeInfoTable(traceFeatureSuffixTable);
const FeatureTable instrumentFeatureOverrides = {
    { "userdef0", { "Velocity", "mm/s" } },
    { "userdef1", { "Deformation of odd FC only", "" } },
    { "userdef2", { "Deformation of even FC only", "" } },
    { "userdef9", { "Cell Type ID", "" } },
};

std::string featureLabel(const std::string& key, bool instrumentData)
{
    if (instrumentData) {
        const auto hit = instrumentFeatureOverrides.find(key);
        if (hit != instrumentFeatureOverrides.end())
            return withUnit(hit->second);
    }
    const auto hit = featureInfoTable.find(key);
    if (hit != featureInfoTable.end())
        return withUnit(hit->second);
    FeatureInfo family;
    if (parseFluorescenceKey(key, family))
        return withUnit(family);
    return key;
}

bool isScalarFeature(const std::string& key)
{
    return key != "image" && key != "mask" && key != "contour";
}

} // namespace Tessaly
