#include "calc/EModulusParams.h"

#include "io/VQDMetadata.h"

#include <cstdlib>
#include <map>

namespace Tessaly {

namespace {

// A positive number from a metadata text, or `fallback`.
double positiveNumber(const std::map<std::string, std::string>& section, const char* key, double fallback)
{
    const auto it = section.find(key);
    if (it == section.end() || it->second.empty())
        return fallback;
    char* end = nullptr;
    const double value = std::strtod(it->second.c_str(), &end);
    while (end && (*end == ' ' || *end == '\t'))
        ++end;
    if (end == it->second.c_str() || (end && *end != '\0') || !(value > 0.0))
        return fallback;
    return value;
}

} // namespace

int mediumCode(const std::string& medium)
{
    if (medium == "Sorvex")
        return MediumSorvex;
    if (medium == "SorvexB")
        return MediumSorvexB;
    if (medium == "Water" || medium == "water")
        return MediumWater;
    if (medium == "0.83% MC-PBS" || medium == "MC-PBS 0.83%")
        return MediumMethylCellulose;
    return MediumOther;
}

int viscosityModelForMedium(int medium)
{
    switch (medium) {
    case MediumSorvex:
    case MediumSorvexB:
        return ViscosityHerold2017;
    case MediumWater:
        return ViscosityKestin1978;
    default:
        return ViscosityManual;
    }
}

EModulusParams emodulusParamsFromMetadata(
    const VQDMetadata& metadata, bool eventTemperature, double manualViscosity)
{
    EModulusParams params;
    params.channelWidth = positiveNumber(metadata.setup, "channel width", 20.0);
    params.flowRate = positiveNumber(metadata.setup, "flow rate", 0.04);
    params.pixelSize = positiveNumber(metadata.imaging, "pixel size", 0.34);
    const auto medium = metadata.setup.find("medium");
    params.medium = mediumCode(medium == metadata.setup.end() ? std::string() : medium->second);
    params.viscosityModel = viscosityModelForMedium(params.medium);
    if (params.viscosityModel == ViscosityManual)
        params.viscosity = manualViscosity;
    params.temperature = positiveNumber(metadata.setup, "temperature", 23.0);
    params.temperatureSource = eventTemperature ? TemperatureEvent : TemperatureMeta;
    return params;
}

} // namespace Tessaly
