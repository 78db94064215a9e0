#include "core/MeasurementMedium.h"

#include <array>

namespace Tessaly {

namespace {

struct KnownMedium
{
    std::vector<std::string> spellings; // the first one is shown
    int code;
    int viscosityModel;
};

const std::array<KnownMedium, 4>& knownMedia()
{
    static const std::array<KnownMedium, 4> media = { {
        { { "Sorvex" }, SorvexMedium, HeroldViscosity },
        { { "SorvexB" }, SorvexBMedium, HeroldViscosity },
        { { "Water", "water" }, WaterMedium, KestinViscosity },
        { { "0.83% MC-PBS", "MC-PBS 0.83%" }, McPbsMedium, ManualViscosity },
    } };
    return media;
}

} // namespace

MeasurementMedium lookUpMedium(const std::string& text)
{
    for (const KnownMedium& medium : knownMedia()) {
        for (const std::string& spelling : medium.spellings) {
            if (spelling == text)
                return { medium.code, medium.spellings.front(), medium.viscosityModel, true };
        }
    }
    return { OtherMedium, (text.empty() ? std::string("—") : text) + " (unknown)", ManualViscosity, false };
}

} // namespace Tessaly
