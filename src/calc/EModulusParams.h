#pragma once

#include <string>

namespace Tessaly {

struct VQDMetadata;

// Viscosity models of the measuring medium.
enum ViscosityModel {
    ViscosityHerold2017 = 0,
    ViscosityKestin1978 = 1,
    ViscosityPowerLaw = 2,
    ViscosityManual = 3
};

// Media whose viscosity a model knows.
enum MediumCode {
    MediumSorvex = 0,
    MediumSorvexB = 1,
    MediumWater = 2,
    MediumMethylCellulose = 3,
    MediumOther = 4
};

// Where the temperature of a Young's modulus computation comes from.
enum TemperatureSource { TemperatureManual = 0, TemperatureEvent = 1, TemperatureMeta = 2 };

// Everything a Young's modulus computation needs: the table, the medium and its temperature, and the
// channel, flow and optics of the measurement.
struct EModulusParams
{
    int lutId = 0;
    int viscosityModel = ViscosityHerold2017;
    int medium = MediumSorvexB;
    double temperature = 23.0; // °C
    int temperatureSource = TemperatureMeta;
    double viscosity = 0.0; // mPa·s; used by the manual model only
    double channelWidth = 20.0; // µm
    double flowRate = 0.04; // µL/s
    double pixelSize = 0.34; // µm
    std::string deformFeature = "deform";
    bool pixelationCorrection = true;
};

// The medium code of the text a measurement file gives as its medium.
int mediumCode(const std::string& medium);
// The viscosity model that a medium is measured with; media without a model need a manual value.
int viscosityModelForMedium(int medium);

// Parameters for one dataset from its own metadata: channel width 20 µm, flow rate 0.04 µL/s and pixel
// size 0.34 µm where a value is absent or no number; the model follows the medium, with
// `manualViscosity` for media that have none. The temperature is taken per event when `eventTemperature`
// is set, else the metadata temperature (23 °C when absent).
EModulusParams emodulusParamsFromMetadata(
    const VQDMetadata& metadata, bool eventTemperature, double manualViscosity = 1.0);

} // namespace Tessaly
