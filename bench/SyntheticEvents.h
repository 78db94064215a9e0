#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace Tessaly::Bench {

// Feature columns that look like a measurement of two cell populations: area in µm² of
// N(90, 20) and N(40, 8), deformation rising with area with scatter, brightness independent, and
// about 0.1 % NaN in each column.
struct SyntheticEvents
{
    std::vector<double> area;
    std::vector<double> deform;
    std::vector<double> brightness;
};

inline SyntheticEvents makeSyntheticEvents(std::size_t count, std::uint64_t seed = 20240611)
{
    std::mt19937_64 rng(seed);
    std::normal_distribution<double> large(90.0, 20.0);
    std::normal_distribution<double> small(40.0, 8.0);
    std::normal_distribution<double> scatter(0.0, 0.008);
    std::normal_distribution<double> bright(120.0, 15.0);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double nan = std::numeric_limits<double>::quiet_NaN();

    SyntheticEvents events;
    events.area.reserve(count);
    events.deform.reserve(count);
    events.brightness.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double area = std::max(5.0, unit(rng) < 0.6 ? large(rng) : small(rng));
        const double deform = std::min(0.12, std::max(0.005, 0.005 + 0.0007 * area + scatter(rng)));
        events.area.push_back(unit(rng) < 0.001 ? nan : area);
        events.deform.push_back(unit(rng) < 0.001 ? nan : deform);
        events.brightness.push_back(unit(rng) < 0.001 ? nan : bright(rng));
    }
    return events;
}

// The plotted points of a scatter plot: events with both values finite.
inline void finitePairs(const std::vector<double>& x, const std::vector<double>& y, std::vector<double>& fx,
    std::vector<double>& fy)
{
    fx.clear();
    fy.clear();
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (std::isfinite(x[i]) && std::isfinite(y[i])) {
            fx.push_back(x[i]);
            fy.push_back(y[i]);
        }
    }
}

} // namespace Tessaly::Bench
