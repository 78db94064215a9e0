#include "stats/DistributionStats.h"

#include "calc/OrderStatistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace Tessaly {

namespace {

// The ranks around q * (n - 1), for n > 0, and the weight of the upper one.
struct QuantileRanks
{
    std::size_t lower;
    std::size_t upper;
    double weight;
};

QuantileRanks quantileRanks(std::size_t n, double q)
{
    const double pos = q * static_cast<double>(n - 1);
    const auto i = static_cast<std::size_t>(pos);
    return { i, std::min(i + 1, n - 1), pos - static_cast<double>(i) };
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

    // The quartiles need six ranks of the sorted order, which a selection finds without sorting.
    const std::array<double, 3> fractions { 0.25, 0.5, 0.75 };
    std::vector<std::size_t> ranks;
    for (const double q : fractions) {
        const QuantileRanks r = quantileRanks(n, q);
        ranks.push_back(r.lower);
        ranks.push_back(r.upper);
    }
    const std::vector<double> ordered = orderStatistics(values, ranks);
    std::array<double, 3> quartiles {};
    for (std::size_t k = 0; k < fractions.size(); ++k) {
        const QuantileRanks r = quantileRanks(n, fractions[k]);
        const double lower = ordered[2 * k];
        quartiles[k] = r.lower + 1 >= n ? lower : r.weight * ordered[2 * k + 1] + (1.0 - r.weight) * lower;
    }
    stats.q1 = quartiles[0];
    stats.median = quartiles[1];
    stats.q3 = quartiles[2];
    stats.iqr = stats.q3 - stats.q1;
    return stats;
}

} // namespace Tessaly
