#include "calc/Viscosity.h"

#include "calc/EModulusParams.h"
#include "io/VQDMetadata.h"

#include <gtest/gtest.h>

using namespace Tessaly;

// Expected values computed independently (python3, math module) from the published fits; water also
// against the tabulated 1.002 mPa·s at 20 °C and 0.692 mPa·s at 37 °C.
TEST(Viscosity, ModelsMatchIndependentValues)
{
    struct Case
    {
        int model, medium;
        double temperature, width, flow, expected;
    };
    const Case cases[] = {
        { ViscosityHerold2017, MediumSorvex, 23.0, 20.0, 0.04, 5.901983166045348 },
        { ViscosityHerold2017, MediumSorvexB, 23.0, 20.0, 0.04, 7.582180390559559 },
        { ViscosityHerold2017, MediumSorvex, 30.0, 30.0, 0.16, 4.43848052539143 },
        { ViscosityHerold2017, MediumSorvexB, 25.0, 20.0, 0.06, 6.0811395588100305 },
        // Every medium but Sorvex takes the SorvexB constants.
        { ViscosityHerold2017, MediumOther, 22.0, 40.0, 0.32, 7.879748878463999 },
        { ViscosityKestin1978, MediumWater, 20.0, 20.0, 0.04, 1.002 },
        { ViscosityKestin1978, MediumWater, 23.0, 20.0, 0.04, 0.9323802528744568 },
        { ViscosityKestin1978, MediumWater, 37.0, 99.0, 9.0, 0.6912643450925647 },
        { ViscosityKestin1978, MediumWater, 0.0, 20.0, 0.04, 1.7915037498227595 },
        { ViscosityPowerLaw, MediumSorvex, 23.0, 20.0, 0.04, 5.379466386424171 },
        { ViscosityPowerLaw, MediumMethylCellulose, 25.0, 20.0, 0.04, 8.202189349651709 },
        { ViscosityPowerLaw, MediumSorvexB, 23.0, 30.0, 0.16, 5.9049726247643815 },
        { ViscosityManual, MediumOther, 23.0, 20.0, 0.04, 3.25 },
        { 7, MediumSorvex, 23.0, 20.0, 0.04, 1.0 },
    };
    for (const Case& c : cases)
        EXPECT_NEAR(mediumViscosity(c.model, c.medium, c.temperature, c.width, c.flow, 3.25), c.expected,
            1e-12 * c.expected)
            << "model " << c.model << " medium " << c.medium << " at " << c.temperature << " °C";
}

TEST(Viscosity, PixelationCorrectionFadesWithTheAreaInPixels)
{
    EXPECT_NEAR(pixelationCorrection(0.0, 0.34), 0.0362, 1e-15);
    EXPECT_NEAR(pixelationCorrection(50.0, 0.34), 0.008178426332280239, 1e-15);
    // Twice the pixel size: the same area covers a quarter of the pixels.
    EXPECT_NEAR(pixelationCorrection(100.0, 0.68), 0.011619010628832317, 1e-15);
    EXPECT_NEAR(pixelationCorrection(100.0, 0.68), pixelationCorrection(25.0, 0.34), 1e-15);
    EXPECT_NEAR(pixelationCorrection(1e6, 0.34), 0.0012, 1e-15);
}

TEST(EModulusParams, MetadataGivesMediumModelAndConditions)
{
    VQDMetadata metadata;
    metadata.setup = { { "medium", "water" }, { "channel width", "30" }, { "flow rate", "0.16" },
        { "temperature", "25.5" } };
    metadata.imaging = { { "pixel size", "0.68" } };
    EModulusParams p = emodulusParamsFromMetadata(metadata, false);
    EXPECT_EQ(p.medium, MediumWater);
    EXPECT_EQ(p.viscosityModel, ViscosityKestin1978);
    EXPECT_EQ(p.channelWidth, 30.0);
    EXPECT_EQ(p.flowRate, 0.16);
    EXPECT_EQ(p.pixelSize, 0.68);
    EXPECT_EQ(p.temperature, 25.5);
    EXPECT_EQ(p.temperatureSource, TemperatureMeta);

    // Values that are absent, empty or no number fall back to the usual conditions.
    metadata.setup = { { "medium", "0.83% MC-PBS" }, { "channel width", "wide" }, { "flow rate", "" } };
    metadata.imaging.clear();
    p = emodulusParamsFromMetadata(metadata, true, 4.5);
    EXPECT_EQ(p.medium, MediumMethylCellulose);
    EXPECT_EQ(p.viscosityModel, ViscosityManual);
    EXPECT_EQ(p.viscosity, 4.5);
    EXPECT_EQ(p.channelWidth, 20.0);
    EXPECT_EQ(p.flowRate, 0.04);
    EXPECT_EQ(p.pixelSize, 0.34);
    EXPECT_EQ(p.temperature, 23.0);
    EXPECT_EQ(p.temperatureSource, TemperatureEvent);
}

TEST(EModulusParams, MediumCodes)
{
    const std::pair<const char*, int> cases[] = { { "Sorvex", MediumSorvex }, { "SorvexB", MediumSorvexB },
        { "Water", MediumWater }, { "water", MediumWater }, { "MC-PBS 0.83%", MediumMethylCellulose },
        { "0.83% MC-PBS", MediumMethylCellulose }, { "sorvex", MediumOther }, { "", MediumOther } };
    for (const auto& [text, code] : cases)
        EXPECT_EQ(mediumCode(text), code) << text;
}
