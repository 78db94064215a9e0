#pragma once

#include <vector>

namespace Tessaly::Testing {

struct Points
{
    std::vector<double> x;
    std::vector<double> y;
};

// A broad bell of 1,000 points with a dense core of 500: the data set bellWithCore() of
// tests/reference/density_reference.py, which computed the reference densities and contours.
inline Points bellWithCore()
{
    Points p;
    for (long long i = 0; i < 1000; ++i) {
        const long long a = (i * 7919) % 1009;
        const long long b = (i * 104729) % 1013;
        const long long c = (i * 1299709) % 1019;
        p.x.push_back(static_cast<double>(a + b + c) / 300.0);
        p.y.push_back(static_cast<double>(a + 2 * ((i * 15485863) % 1021)) / 250.0);
    }
    for (int i = 0; i < 500; ++i) {
        p.x.push_back(5.0 + (i % 37) / 100.0);
        p.y.push_back(4.0 + (i * 7 % 41) / 100.0);
    }
    return p;
}

} // namespace Tessaly::Testing
