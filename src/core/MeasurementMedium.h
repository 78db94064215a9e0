#pragma once

#include <string>
#include <vector>

namespace Tessaly {

// Viscosity models as their numbers are stored and passed to the Young's modulus engine.
enum ViscosityModel { HeroldViscosity = 0, KestinViscosity = 1, PowerLawViscosity = 2, ManualViscosity = 3 };

// Measuring media by their codes; every text that names none of the first four is "other".
enum MediumCode { SorvexMedium = 0, SorvexBMedium = 1, WaterMedium = 2, McPbsMedium = 3, OtherMedium = 4 };

// What the program knows of the medium named in a measurement's metadata: its code, the text to show,
// and the one viscosity model that fits it. Only media whose flow behaviour has been measured have a
// model of their own (the two Sorvex buffers a shear-thinning fit, water the pure-water law); for every
// other medium the user must enter the viscosity.
struct MeasurementMedium
{
    int code = OtherMedium;
    std::string displayText;
    int viscosityModel = ManualViscosity;
    bool known = false;
};

// Looks up the metadata text of a medium. Known media are matched by their exact spellings and shown
// by their first one ("water" shows as "Water"); an unknown one shows its own text and " (unknown)",
// an empty one "— (unknown)".
MeasurementMedium lookUpMedium(const std::string& text);

} // namespace Tessaly
