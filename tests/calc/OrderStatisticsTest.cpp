#include "calc/OrderStatistics.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace Tessaly;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

// The reference order: a full sort with NaN last.
std::vector<double> sortedNanLast(std::vector<double> v)
{
    std::stable_partition(v.begin(), v.end(), [](double a) { return !std::isnan(a); });
    const auto firstNaN = std::find_if(v.begin(), v.end(), [](double a) { return std::isnan(a); });
    std::sort(v.begin(), firstNaN);
    return v;
}

bool sameValue(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || a == b;
}

} // namespace

TEST(OrderStatistics, AgreesWithAFullSortOnAwkwardData)
{
    std::mt19937_64 rng(3);
    std::normal_distribution<double> wide(0.0, 1e3);
    std::uniform_int_distribution<int> lattice(-20, 20);
    std::uniform_int_distribution<int> kind(0, 99);
    for (const std::size_t n : { std::size_t { 1 }, std::size_t { 7 }, std::size_t { 4095 },
             std::size_t { 4096 }, std::size_t { 50000 } }) {
        for (int variant = 0; variant < 4; ++variant) {
            std::vector<double> v(n);
            for (double& value : v) {
                const int k = kind(rng);
                if (variant >= 2 && k == 0)
                    value = kNaN;
                else if (variant >= 2 && k == 1)
                    value = -kInf;
                else if (variant >= 2 && k == 2)
                    value = kInf;
                else if (variant % 2 == 1)
                    value = lattice(rng) * 0.5; // many ties
                else
                    value = wide(rng) * (k < 5 ? 1e6 : 1.0); // a few far outliers
            }
            const std::vector<double> sorted = sortedNanLast(v);
            // Ranks in rising order, and in no order with one asked twice.
            for (const std::vector<std::size_t>& ranks :
                { std::vector<std::size_t> { 0, n / 4, n / 4 + 1, n / 2, (3 * n) / 4, n - 1, n + 10 },
                    std::vector<std::size_t> { (3 * n) / 4, n + 10, 0, n / 2, n / 4 + 1, n / 2, n - 1 } }) {
                const std::vector<double> got = orderStatistics(v, ranks);
                ASSERT_EQ(got.size(), ranks.size());
                for (std::size_t r = 0; r < ranks.size(); ++r) {
                    const double expected = sorted[std::min(ranks[r], n - 1)];
                    EXPECT_TRUE(sameValue(got[r], expected))
                        << "n " << n << " variant " << variant << " rank " << ranks[r] << ": " << got[r]
                        << " vs " << expected;
                }
            }
        }
    }
}

TEST(OrderStatistics, ConstantAndEmptyInputs)
{
    EXPECT_EQ(orderStatistics(std::vector<double>(10000, 2.5), { 0, 5000, 9999 }),
        (std::vector<double> { 2.5, 2.5, 2.5 }));
    EXPECT_EQ(orderStatistics({}, { 0, 3 }), (std::vector<double> { 0.0, 0.0 }));
    // Two values far apart among many equal ones land in the first and last buckets.
    std::vector<double> v(9000, 1.0);
    v[17] = -1e300;
    v[4000] = 1e300;
    EXPECT_EQ(orderStatistics(v, { 0, 1, 8998, 8999 }), (std::vector<double> { -1e300, 1.0, 1.0, 1e300 }));
}
