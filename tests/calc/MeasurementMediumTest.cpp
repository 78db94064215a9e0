#include "calc/MeasurementMedium.h"

#include "calc/EModulusParams.h"

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
        { "Sorvex", MediumSorvex, "Sorvex", ViscosityHerold2017, true },
        { "SorvexB", MediumSorvexB, "SorvexB", ViscosityHerold2017, true },
        { "Water", MediumWater, "Water", ViscosityKestin1978, true },
        { "water", MediumWater, "Water", ViscosityKestin1978, true },
        { "0.83% MC-PBS", MediumMethylCellulose, "0.83% MC-PBS", ViscosityManual, true },
        { "MC-PBS 0.83%", MediumMethylCellulose, "0.83% MC-PBS", ViscosityManual, true },
        { "WATER", MediumOther, "WATER (unknown)", ViscosityManual, false },
        { "sorvex", MediumOther, "sorvex (unknown)", ViscosityManual, false },
        { "Sorvex ", MediumOther, "Sorvex  (unknown)", ViscosityManual, false },
        { "0.6% MC-PBS", MediumOther, "0.6% MC-PBS (unknown)", ViscosityManual, false },
        { "", MediumOther, "— (unknown)", ViscosityManual, false },
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
