#include "stats/DistributionStats.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tessaly {

namespace {

// The quantile q of `sorted`, which is not empty, interpolated between the neighbouring ranks.
double sortedQuantile(const std::vector<double>& sorted, double q)
{
    const std::size_t n = sorted.size();
    const double pos = q * static_cast<double>(n - 1);
    const auto i = static_cast<std::size_t>(pos);
    const double f = pos - static_cast<double>(i);
    if (i + 1 >= n)
        return sorted[i];
    return f * sorted[i + 1] + (1.0 - f) * sorted[i];
}

} // namespace

DistributionStats computeDistributionStats(const std::vector<double>& values)
{
    DistributionStats stats;
    const std::size_t n = values.size();
    if (n == 0)
        return stats;

    double sum = 0.0;
    for (const double v : values)
        sum += v;
    stats.mean = sum / static_cast<double>(n);

    if (n >= 2) {
        double squares = 0.0;
        for (const double v : values)
            squares += (v - stats.mean) * (v - stats.mean);
        stats.sd = std::sqrt(squares / static_cast<double>(n - 1));
    }

    std::vector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    stats.q1 = sortedQuantile(sorted, 0.25);
    stats.median = sortedQuantile(sorted, 0.5);
    stats.q3 = sortedQuantile(sorted, 0.75);
    stats.iqr = stats.q3 - stats.q1;
    return stats;
}

} // namespace Tessaly
