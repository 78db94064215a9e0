#include "calc/IsoelasticTracing.h"

#include "calc/Viscosity.h"

#include <cmath>

namespace Tessaly {

namespace {

constexpr int areaSteps = 150;
constexpr int deformSteps = 50;
constexpr int bisections = 40;
constexpr double narrowest = 1e-8;

// The deformation at which the table reaches `level` for one (table) area, or NaN.
double deformationAtLevel(const EModulusMesh& mesh, double area, double level)
{
    const double step = (mesh.yMax - mesh.yMin) / deformSteps;
    double low = mesh.yMin;
    double fLow = interpolate(mesh, area, low);
    for (int k = 1; k <= deformSteps; ++k) {
        const double high = mesh.yMin + k * step;
        const double fHigh = interpolate(mesh, area, high);
        if (!std::isnan(fLow) && !std::isnan(fHigh) && (fLow - level) * (fHigh - level) <= 0.0) {
            double lo = low, hi = high;
            for (int i = 0; i < bisections; ++i) {
                const double mid = 0.5 * (lo + hi);
                const double f = interpolate(mesh, area, mid);
                if (std::isnan(f))
                    break;
                if ((f - level) * (fLow - level) > 0.0) {
                    lo = mid;
                    fLow = f;
                } else {
                    hi = mid;
                }
                if (hi - lo < narrowest)
                    break;
            }
            return 0.5 * (lo + hi);
        }
        low = high;
        fLow = fHigh;
    }
    return std::nan("");
}

} // namespace

std::vector<IsoelasticLine> traceIsoelastics(
    const EModulusMesh& mesh, const std::vector<double>& levels, const IsoelasticScaling& scaling)
{
    std::vector<IsoelasticLine> lines;
    const double first = mesh.xMin / scaling.areaScale;
    const double last = mesh.xMax / scaling.areaScale;
    const double step = (last - first) / areaSteps;
    for (const double level : levels) {
        IsoelasticLine line;
        line.value = level * scaling.modulusFactor;
        for (int k = 0; k <= areaSteps; ++k) {
            const double area = first + k * step;
            if (area > last)
                break;
            const double deform = deformationAtLevel(mesh, area * scaling.areaScale, level);
            if (std::isnan(deform))
                continue;
            line.points.emplace_back(area, deform + pixelationCorrection(area, scaling.pixelSize));
        }
        if (line.points.size() >= 2)
            lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace Tessaly
