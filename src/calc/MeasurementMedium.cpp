#include "calc/MeasurementMedium.h"

#include "calc/EModulusParams.h"

namespace Tessaly {

MeasurementMedium lookUpMedium(const std::string& text)
{
    MeasurementMedium medium;
    medium.code = mediumCode(text);
    medium.viscosityModel = viscosityModelForMedium(medium.code);
    medium.known = medium.code != MediumOther;
    switch (medium.code) {
    case MediumSorvex:
        medium.displayText = "Sorvex";
        break;
    case MediumSorvexB:
        medium.displayText = "SorvexB";
        break;
    case MediumWater:
        medium.displayText = "Water";
        break;
    case MediumMethylCellulose:
        medium.displayText = "0.83% MC-PBS";
        break;
    default:
        medium.displayText = (text.empty() ? std::string("—") : text) + " (unknown)";
    }
    return medium;
}

} // namespace Tessaly
