#pragma once

namespace Tessaly {

// Viscosity of the measuring medium in mPa·s, by model (see ViscosityModel) and medium (MediumCode), at
// `temperature` °C in a channel of `channelWidth` µm at `flowRate` µL/s. The shear-thinning models need
// the channel and the flow; the manual model returns `manualViscosity`; an unknown model gives 1.0.
double mediumViscosity(
    int model, int medium, double temperature, double channelWidth, double flowRate, double manualViscosity);

// How much a contour drawn on a pixel grid overstates the deformation of a cell of `area` µm² imaged
// at `pixelSize` µm per pixel. Small cells suffer most: the terms fade with the area in pixels.
double pixelationCorrection(double area, double pixelSize);

} // namespace Tessaly
