#pragma once

#include <utility>
#include <vector>

namespace Tessaly {

// One line of equal Young's modulus in the (area, deformation) plane.
struct IsoelasticLine
{
    double value = 0.0; // the modulus (kPa) that the line stands for at the measurement's conditions
    std::vector<std::pair<double, double>> points; // area in µm², deformation
};

} // namespace Tessaly
