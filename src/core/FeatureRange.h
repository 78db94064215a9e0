#pragma once

#include <optional>
#include <utility>
#include <vector>

namespace Tessaly {

// Smallest and largest finite value of a column; none when it holds no finite value.
std::optional<std::pair<double, double>> finiteRange(const std::vector<double>& values);

// Decimals that a bound of a range rule is shown with, from the width of the feature's range: fine
// ranges need more digits to be set at all.
int rangeDecimals(double width);

// Step of a bound's arrows: a hundredth of the range, or 0.01 for a constant feature.
double rangeStep(double width);

} // namespace Tessaly
