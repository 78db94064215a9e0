#include "calc/Viscosity.h"

#include "calc/EModulusParams.h"

#include <cmath>

namespace Tessaly {

namespace {

// Shear-thinning fit of the two Sorvex media: the viscosity follows the wall shear rate of the channel
// by a power law and falls with the temperature.
double herold2017(int medium, double temperature, double channelWidth, double flowRate)
{
    const bool sorvex = medium == MediumSorvex;
    const double shearFactor = sorvex ? 1.6707050335189184 : 1.706549572791479;
    const double exponent = sorvex ? -0.32299999999999995 : -0.366;
    const double consistency = sorvex ? 0.179 : 0.36;
    const double referenceTemperature = sorvex ? 23.2 : 23.6;
    const double width = channelWidth * 1e-6;
    const double shearRate = (2.0 / 3.0) * (flowRate * 7.1136 * 1e-9) / (width * width * width);
    return consistency * std::pow(shearRate * shearFactor, exponent)
        * std::pow(temperature / referenceTemperature, -0.866) * 1000.0;
}

// Water, Newtonian, relative to its viscosity at 20 °C.
double kestin1978(double temperature)
{
    const double d = 20.0 - temperature;
    return 1.002 * std::pow(10.0, (1.2364 - 0.00137 * d + 5.7e-6 * d * d) * d / (temperature + 96.0));
}

// A power law whose index grows with the absolute temperature, for either Sorvex, methylcellulose or
// anything else.
double powerLaw(int medium, double temperature, double channelWidth, double flowRate)
{
    double a = 5.7e-6;
    double b = -0.0744;
    if (medium == MediumSorvex) {
        a = 2.3e-6;
        b = -0.0056;
    } else if (medium == MediumMethylCellulose) {
        a = 1.652e-5;
        b = -0.1455;
    }
    const double kelvin = temperature + 273.15;
    const double widthMm = channelWidth * 0.001;
    const double n = 0.00223 * kelvin + b;
    const double c = 0.2121 / n + 0.6671;
    return std::pow(c * 8.0 * flowRate / (widthMm * widthMm * widthMm), n - 1.0) * a
        * std::exp(3379.7 / kelvin) * 1000.0;
}

} // namespace

double mediumViscosity(
    int model, int medium, double temperature, double channelWidth, double flowRate, double manualViscosity)
{
    switch (model) {
    case ViscosityHerold2017:
        return herold2017(medium, temperature, channelWidth, flowRate);
    case ViscosityKestin1978:
        return kestin1978(temperature);
    case ViscosityPowerLaw:
        return powerLaw(medium, temperature, channelWidth, flowRate);
    case ViscosityManual:
        return manualViscosity;
    default:
        return 1.0;
    }
}

double pixelationCorrection(double area, double pixelSize)
{
    const double ratio = 0.34 / pixelSize;
    const double u = -(ratio * ratio) * area;
    return 0.02 * std::exp(u / 7.1) + 0.0012 + 0.01 * std::exp(u / 38.6) + 0.005 * std::exp(u / 296.0);
}

} // namespace Tessaly
