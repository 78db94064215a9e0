#pragma once

#include <vector>

namespace Tessaly {

// Six figures of one distribution.
struct DistributionStats
{
    double mean = 0.0;
    double sd = 0.0; // sample standard deviation, divisor n - 1
    double q1 = 0.0;
    double median = 0.0;
    double q3 = 0.0;
    double iqr = 0.0; // q3 - q1
};

// Mean, sample standard deviation (0 below two values), quartiles and interquartile range of
// `values`. A quantile q interpolates linearly between the sorted values at the ranks around
// q * (n - 1). No value is checked for NaN: callers pass finite values. An empty vector gives zeros.
DistributionStats computeDistributionStats(const std::vector<double>& values);

} // namespace Tessaly
