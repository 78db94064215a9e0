#pragma once

#include <cstddef>
#include <vector>

namespace Tessaly {

// The values at the given ranks (0-based, any order) of `values` sorted in rising order with NaN
// last, without sorting: values are counted into buckets by value, and only the buckets that hold
// a wanted rank are searched. Ranks beyond the end are clamped to the last one. Returns values
// in the order of `ranks`; empty input gives zeros.
std::vector<double> orderStatistics(const std::vector<double>& values, const std::vector<std::size_t>& ranks);

} // namespace Tessaly
