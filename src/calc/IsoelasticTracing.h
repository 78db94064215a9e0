#pragma once

#include "calc/EModulusMesh.h"
#include "calc/IsoelasticLine.h"

#include <vector>

namespace Tessaly {

// How the lines of a table are carried over to a measurement.
struct IsoelasticScaling
{
    double areaScale = 1.0; // (table channel width / measurement channel width)²
    double modulusFactor = 1.0; // measurement modulus per table modulus
    double pixelSize = 0.34; // µm, for the pixelation correction added to every point
};

// For each level (a modulus in table units) the line of points where the table takes that value:
// 151 areas across the table's range (in measurement units), at each the deformation found by a scan
// of 50 steps for the first bracket and bisection inside it, plus the pixelation correction so that the
// line lies in measured deformation. Areas without a bracket give no point; lines of fewer than 2
// points are dropped. `value` of a line is its level times the modulus factor.
std::vector<IsoelasticLine> traceIsoelastics(
    const EModulusMesh& mesh, const std::vector<double>& levels, const IsoelasticScaling& scaling);

} // namespace Tessaly
