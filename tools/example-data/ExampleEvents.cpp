#include "ExampleEvents.h"

#include "DemoLookupTable.h"
#include "calc/EModulusParams.h"
#include "calc/Viscosity.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace Tessaly::ExampleData {

namespace {

constexpr double kPi = 3.14159265358979323846;

// Circularity of an ellipse of the given area and axis ratio (>= 1).
double ellipseCircularity(double area, double ratio)
{
    const double b = std::sqrt(area / (kPi * ratio));
    const double a = ratio * b;
    return 2.0 * std::sqrt(kPi * area) / ellipsePerimeter(a, b);
}

// The axis ratio whose ellipse has deformation d = 1 - circularity; bisection works because the
// deformation grows monotonically with the ratio.
double ratioForDeformation(double area, double deformation)
{
    double low = 1.0, high = 12.0;
    for (int i = 0; i < 60; ++i) {
        const double mid = 0.5 * (low + high);
        if (1.0 - ellipseCircularity(area, mid) < deformation)
            low = mid;
        else
            high = mid;
    }
    return 0.5 * (low + high);
}

class Columns
{
public:
    Columns(std::map<std::string, std::vector<double>>& columns, std::size_t n)
        : columns(columns)
        , n(n)
    {
    }

    std::vector<double>& operator[](const std::string& name)
    {
        auto& column = columns[name];
        if (column.size() != n)
            column.assign(n, 0.0);
        return column;
    }

private:
    std::map<std::string, std::vector<double>>& columns;
    std::size_t n;
};

} // namespace

double ellipsePerimeter(double a, double b)
{
    const double h = (a - b) * (a - b) / ((a + b) * (a + b));
    return kPi * (a + b) * (1.0 + 3.0 * h / (10.0 + std::sqrt(4.0 - 3.0 * h)));
}

ExampleEvents generateEvents(const ExampleSettings& s)
{
    const std::size_t n = s.eventCount;
    ExampleEvents result;
    result.cells.resize(n);
    Columns col(result.columns, n);

    std::mt19937_64 rng(s.seed);
    std::normal_distribution<double> gauss(0.0, 1.0);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    std::geometric_distribution<int> frameGap(0.35);

    const double frameLengthUm = s.frameWidth * s.pixelSize;
    const double halfChannel = 0.5 * s.channelWidth;
    // Mean speed in a square channel, in mm/s (1 µL/s = 1e9 µm³/s).
    const double meanSpeed = s.flowRate * 1e9 / (s.channelWidth * s.channelWidth) / 1000.0;
    const double dtTrace = 1e6 / s.traceSampleRate; // µs per sample
    // The medium of the example files is SorvexB; its viscosity sets the cells' moduli.
    const double viscosity
        = mediumViscosity(ViscosityHerold2017, MediumSorvexB, s.temperature, s.channelWidth, s.flowRate, 0.0);
    long frame = 1;
    long onlineIndex = 0;

    for (std::size_t i = 0; i < n; ++i) {
        CellShape& cell = result.cells[i];
        // Two populations: larger cells and a smaller, stiffer one.
        const bool small = uniform(rng) < 0.3;
        const double area = std::clamp(
            small ? 40.0 * std::exp(0.2 * gauss(rng)) : 95.0 * std::exp(0.25 * gauss(rng)), 15.0, 400.0);
        const double softness = small ? 0.6 : 1.0;
        // The cell's own deformation, and what the camera measures: the pixel grid adds to every
        // contour's deformation, most for small cells.
        const double trueDeform
            = s.deformScale * softness * (0.008 + 0.00035 * area) * std::exp(0.3 * gauss(rng));
        const double deform = std::clamp(trueDeform + pixelationCorrection(area, s.pixelSize), 0.002, 0.3);
        const double ratio = ratioForDeformation(area, deform);
        cell.semiAxisY = std::sqrt(area / (kPi * ratio));
        cell.semiAxisX = ratio * cell.semiAxisY;
        const double perimeter = ellipsePerimeter(cell.semiAxisX, cell.semiAxisY);

        const double marginX = cell.semiAxisX + 2.0;
        cell.centreX = marginX + uniform(rng) * std::max(0.0, frameLengthUm - 2.0 * marginX);
        const double maxY = std::max(0.0, halfChannel - cell.semiAxisY - 0.5);
        cell.centreY = std::clamp(0.08 * s.channelWidth * gauss(rng), -maxY, maxY);
        cell.brightness = std::clamp((small ? 92.0 : 100.0) + 5.0 * gauss(rng), 40.0, 200.0);

        frame += 1 + frameGap(rng);
        onlineIndex += 1 + (uniform(rng) < 0.05 ? 1 : 0);
        const double lateral = cell.centreY / halfChannel;
        const double speed
            = std::max(1.0, meanSpeed * 1.4 * (1.0 - 0.5 * lateral * lateral) * (1.0 + 0.03 * gauss(rng)));

        const bool positive = uniform(rng) < s.fluorescentFraction;
        const double fl1
            = positive ? 2500.0 * std::exp(0.35 * gauss(rng)) : 120.0 * std::exp(0.3 * gauss(rng));
        const double ownFl2 = 150.0 * std::exp(0.4 * gauss(rng));
        const double flValues[3]
            = { fl1, ownFl2 + 0.12 * fl1, 60.0 * std::exp(0.3 * gauss(rng)) + 0.02 * fl1 };
        const double basePosition = 0.5 * s.traceLength * dtTrace;
        const double width = 2.0 + 0.25 * 2.0 * cell.semiAxisX * 1000.0 / speed;
        for (int c = 0; c < 3; ++c) {
            cell.flPeak[c] = flValues[c];
            cell.flPosition[c] = basePosition + 3.0 * gauss(rng) + 2.0 * c;
            cell.flWidth[c] = width * (1.0 + 0.05 * gauss(rng));
        }

        const double areaPx = area / (s.pixelSize * s.pixelSize);
        const double porosity = 1.0 + std::abs(0.01 * gauss(rng));
        col["area_um"][i] = area;
        col["area_um_raw"][i] = area * (1.0 + 0.01 * gauss(rng));
        col["area_msd"][i] = std::round(areaPx);
        col["area_cvx"][i] = std::round(areaPx * porosity);
        col["area_ratio"][i] = porosity;
        col["deform"][i] = deform;
        // The true modulus under the demonstration table's law, of the deformation without pixelation.
        col["emodulus"][i] = demoModulus(
            area, deform - pixelationCorrection(area, s.pixelSize), viscosity, s.flowRate, s.channelWidth);
        col["deform_raw"][i] = std::max(0.0, deform + 0.002 * gauss(rng));
        col["circ"][i] = 1.0 - deform;
        col["aspect"][i] = cell.semiAxisX / cell.semiAxisY;
        col["inert_ratio_raw"][i] = cell.semiAxisX / cell.semiAxisY;
        col["inert_ratio_cvx"][i] = cell.semiAxisX / cell.semiAxisY * (1.0 - 0.005 * std::abs(gauss(rng)));
        col["per_um_raw"][i] = perimeter;
        col["size_x"][i] = 2.0 * cell.semiAxisX;
        col["size_y"][i] = 2.0 * cell.semiAxisY;
        col["volume"][i] = 4.0 / 3.0 * kPi * cell.semiAxisX * cell.semiAxisY * cell.semiAxisY;
        col["pos_x"][i] = cell.centreX;
        col["pos_y"][i] = cell.centreY + halfChannel;
        col["bright_avg"][i] = cell.brightness;
        col["bright_sd"][i] = std::max(1.0, 8.0 + 1.5 * gauss(rng));
        col["bg_med"][i] = 105.0 + 0.5 * gauss(rng);
        col["frame"][i] = static_cast<double>(frame);
        col["time"][i] = frame / s.frameRate;
        col["index"][i] = static_cast<double>(i + 1);
        col["index_online"][i] = static_cast<double>(onlineIndex);
        col["temp"][i] = s.temperature + 0.05 * gauss(rng);
        col["userdef0"][i] = speed;
        for (int c = 0; c < 3; ++c) {
            const std::string prefix = "fl" + std::to_string(c + 1);
            col[prefix + "_max"][i] = cell.flPeak[c];
            col[prefix + "_pos"][i] = cell.flPosition[c];
            col[prefix + "_width"][i] = cell.flWidth[c];
            // A Gaussian peak's area is its height times its full width at half maximum times 1.0645.
            col[prefix + "_area"][i] = cell.flPeak[c] * cell.flWidth[c] * 1.0645;
            col[prefix + "_npeaks"][i] = cell.flPeak[c] > 200.0 ? 1.0 : 0.0;
        }
    }
    return result;
}

} // namespace Tessaly::ExampleData
