#include "calc/OrderStatistics.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Tessaly {

namespace {

// NaN sorts last, which keeps the ordering strict and weak for any input.
bool lessNanLast(double a, double b)
{
    if (std::isnan(a))
        return false;
    if (std::isnan(b))
        return true;
    return a < b;
}

// Small inputs and inputs without a finite spread are searched directly.
std::vector<double> selectDirectly(const std::vector<double>& values, const std::vector<std::size_t>& ranks)
{
    std::vector<double> work(values);
    std::vector<double> out;
    for (const std::size_t rank : ranks) {
        const auto at = work.begin() + static_cast<std::ptrdiff_t>(rank);
        std::nth_element(work.begin(), at, work.end(), lessNanLast);
        out.push_back(*at);
    }
    return out;
}

} // namespace

std::vector<double> orderStatistics(
    const std::vector<double>& values, const std::vector<std::size_t>& requested)
{
    const std::size_t n = values.size();
    if (n == 0)
        return std::vector<double>(requested.size(), 0.0);
    std::vector<std::size_t> ranks(requested);
    for (std::size_t& rank : ranks)
        rank = std::min(rank, n - 1);

    // The finite extent, in four independent lanes so that the comparisons don't wait on each other.
    constexpr double inf = std::numeric_limits<double>::infinity();
    double lows[4] = { inf, inf, inf, inf };
    double highs[4] = { -inf, -inf, -inf, -inf };
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        for (std::size_t lane = 0; lane < 4; ++lane) {
            const double v = values[i + lane];
            const bool finite = std::isfinite(v);
            lows[lane] = std::min(lows[lane], finite ? v : inf);
            highs[lane] = std::max(highs[lane], finite ? v : -inf);
        }
    }
    for (; i < n; ++i) {
        const double v = values[i];
        if (std::isfinite(v)) {
            lows[0] = std::min(lows[0], v);
            highs[0] = std::max(highs[0], v);
        }
    }
    const double lo = std::min(std::min(lows[0], lows[1]), std::min(lows[2], lows[3]));
    const double hi = std::max(std::max(highs[0], highs[1]), std::max(highs[2], highs[3]));
    const double spread = hi - lo;
    constexpr std::size_t directLimit = 4096;
    if (n < directLimit || !std::isfinite(spread) || !(spread > 0.0))
        return selectDirectly(values, ranks);

    // Bucket b holds the values v with truncate((v - lo) * scale) = b, clamped, which is
    // non-decreasing in v; -inf goes to the first bucket, +inf to the last finite one, NaN to an
    // extra bucket at the end. So every value of a bucket sorts before every value of the next.
    // The clamping is written as selections, which the processor does without branches.
    const std::size_t bucketCount = std::min<std::size_t>(n / 8 + 1, std::size_t { 1 } << 16);
    const double scale = static_cast<double>(bucketCount) / spread;
    const double lastBucket = static_cast<double>(bucketCount - 1);
    const auto nanBucket = static_cast<std::uint32_t>(bucketCount);
    const auto bucketOf = [&](double v) -> std::uint32_t {
        double position = (v - lo) * scale;
        position = position > 0.0 ? position : 0.0;
        position = position < lastBucket ? position : lastBucket;
        const auto b = static_cast<std::uint32_t>(static_cast<std::int32_t>(position));
        return std::isnan(v) ? nanBucket : b;
    };
    // Each value's bucket is worked out once, several values at a time, and then counted.
    std::vector<std::uint32_t> bucketOfValue(n);
    for (std::size_t i = 0; i < n; ++i)
        bucketOfValue[i] = bucketOf(values[i]);
    std::vector<std::uint32_t> counts(bucketCount + 1, 0);
    for (const std::uint32_t bucket : bucketOfValue)
        ++counts[bucket];

    // The bucket of each rank and the rank within it, found in one walk over the buckets in the
    // order of the ranks.
    std::vector<std::size_t> order(ranks.size());
    for (std::size_t r = 0; r < order.size(); ++r)
        order[r] = r;
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return ranks[a] < ranks[b]; });
    std::vector<std::size_t> bucketOfRank(ranks.size());
    std::vector<std::size_t> rankInBucket(ranks.size());
    std::size_t before = 0;
    std::size_t b = 0;
    for (const std::size_t r : order) {
        while (before + counts[b] <= ranks[r]) {
            before += counts[b];
            ++b;
        }
        bucketOfRank[r] = b;
        rankInBucket[r] = ranks[r] - before;
    }

    // Gather the wanted buckets' values, in one pass, and select inside each. Whether a value's
    // bucket is wanted is read from a bit per bucket, which stays in the nearest cache.
    std::vector<std::uint64_t> wanted((bucketCount + 1 + 63) / 64, 0);
    std::vector<std::size_t> slotOfBucket(bucketCount + 1, 0);
    std::vector<std::vector<double>> gathered;
    for (const std::size_t bucket : bucketOfRank) {
        if (!(wanted[bucket / 64] >> (bucket % 64) & 1u)) {
            wanted[bucket / 64] |= std::uint64_t { 1 } << (bucket % 64);
            slotOfBucket[bucket] = gathered.size();
            gathered.emplace_back();
            gathered.back().reserve(counts[bucket]);
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        const std::uint32_t bucket = bucketOfValue[i];
        if (wanted[bucket / 64] >> (bucket % 64) & 1u)
            gathered[slotOfBucket[bucket]].push_back(values[i]);
    }
    std::vector<double> out;
    for (std::size_t r = 0; r < ranks.size(); ++r) {
        std::vector<double>& bucket = gathered[slotOfBucket[bucketOfRank[r]]];
        const auto at = bucket.begin() + static_cast<std::ptrdiff_t>(rankInBucket[r]);
        std::nth_element(bucket.begin(), at, bucket.end(), lessNanLast);
        out.push_back(*at);
    }
    return out;
}

} // namespace Tessaly
