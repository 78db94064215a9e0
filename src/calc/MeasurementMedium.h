#pragma once

#include <string>

namespace Tessaly {

// What the program knows of the medium named in a measurement's metadata: its code, the text to show,
// and the one viscosity model that fits it. Only media whose flow behaviour has been measured have a
// model of their own (the two Sorvex buffers a shear-thinning fit, water the pure-water law); for every
// other medium the user must enter the viscosity.
struct MeasurementMedium
{
    int code = 4;
    std::string displayText;
    int viscosityModel = 3;
    bool known = false;
};

// Looks up the metadata text of a medium. Known media are matched by their exact spellings and shown
// by their first one ("water" shows as "Water"); an unknown one shows its own text and " (unknown)",
// an empty one "— (unknown)".
MeasurementMedium lookUpMedium(const std::string& text);

} // namespace Tessaly
