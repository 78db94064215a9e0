#pragma once

#include <string>
#include <vector>

namespace Tessaly::ExampleData {

// A closed-form stand-in for a finite-element Young's modulus table, for demonstrations and tests. A
// cell of projected area A (µm², equivalent diameter d = 2 sqrt(A / pi)) with modulus E (kPa), in a
// channel of width W (µm) at flow rate Q (µL/s) in a medium of viscosity eta (mPa·s), deforms by
//
//     deform = 4.5 * sigma / E * (1 + d / W),   sigma = eta * Q / W^3   (in Pa: 1e6 eta Q / W^3)
//
// that is, in proportion to the hydrodynamic stress scale over the stiffness, more so the more of the
// channel the cell fills. At 0.04 µL/s in a 20 µm channel of water-like medium (1 mPa·s) the stress
// scale is 5 Pa, and 0.5 to 5 kPa at 20 to 250 µm² give deformations from 0.0056 to 0.085. The law
// rescales exactly as a table is carried over to other channels, flows and media.
namespace DemoLaw {
constexpr double coefficient = 4500.0; // 4.5 with the units above (1e6 Pa per unit sigma, 1e3 Pa per kPa)
constexpr double channelWidth = 20.0; // µm, reference conditions of the demonstration table
constexpr double flowRate = 0.04; // µL/s
constexpr double viscosity = 1.0; // mPa·s
} // namespace DemoLaw

double demoDeformation(double area, double modulus, double viscosity, double flowRate, double channelWidth);
// The inverse: the modulus of a cell of that area and (pixelation-corrected) deformation; NaN for a
// deformation that isn't positive.
double demoModulus(double area, double deformation, double viscosity, double flowRate, double channelWidth);

struct DemoTableRow
{
    double area;
    double deform;
    double emodulus;
};

// Rows at the reference conditions: `areaCount` areas from 5 to 450 µm² times `modulusCount` moduli
// spaced evenly in log from 0.1 to 30 kPa, area by area.
std::vector<DemoTableRow> demoTableRows(int areaCount = 90, int modulusCount = 60);

// The table as text: a metadata block that states the law, the reference conditions and that it is a
// demonstration, a header line, and the rows.
std::string demoTableText(const std::vector<DemoTableRow>& rows);

// Writes the table to `path` through a temporary file renamed into place. False, with the reason on the
// standard error stream, when it can't be written.
bool writeDemoTable(const std::string& path, const std::vector<DemoTableRow>& rows = demoTableRows());

} // namespace Tessaly::ExampleData
