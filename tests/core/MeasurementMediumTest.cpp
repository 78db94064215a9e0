#include "core/MeasurementMedium.h"

#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

struct MediumCase
{
    const char* text;
    int code;
    const char* shown;
    int model;
    bool known;
};

} // namespace

// Every spelling of a known medium, and texts that are close to one but not it: matching is exact,
// so that a medium of another composition never gets a viscosity law that isn't its own.
TEST(MeasurementMedium, TextsMapToCodeDisplayAndTheOneModelOnOffer)
{
    const MediumCase cases[] = {
        { "Sorvex", SorvexMedium, "Sorvex", HeroldViscosity, true },
        { "SorvexB", SorvexBMedium, "SorvexB", HeroldViscosity, true },
        { "Water", WaterMedium, "Water", KestinViscosity, true },
        { "water", WaterMedium, "Water", KestinViscosity, true },
        { "0.83% MC-PBS", McPbsMedium, "0.83% MC-PBS", ManualViscosity, true },
        { "MC-PBS 0.83%", McPbsMedium, "0.83% MC-PBS", ManualViscosity, true },
        { "WATER", OtherMedium, "WATER (unknown)", ManualViscosity, false },
        { "sorvex", OtherMedium, "sorvex (unknown)", ManualViscosity, false },
        { "Sorvex ", OtherMedium, "Sorvex  (unknown)", ManualViscosity, false },
        { "0.6% MC-PBS", OtherMedium, "0.6% MC-PBS (unknown)", ManualViscosity, false },
        { "", OtherMedium, "— (unknown)", ManualViscosity, false },
    };
    for (const MediumCase& c : cases) {
        SCOPED_TRACE(c.text);
        const MeasurementMedium medium = lookUpMedium(c.text);
        EXPECT_EQ(medium.code, c.code);
        EXPECT_EQ(medium.displayText, c.shown);
        EXPECT_EQ(medium.viscosityModel, c.model);
        EXPECT_EQ(medium.known, c.known);
    }
}
