#include "core/AxisRange.h"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace Tessaly;

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

struct RangeCase
{
    const char* name;
    std::vector<double> values;
    int mode;
    bool valid;
    double low;
    double high;
};

} // namespace

TEST(AxisRange, SpansOnlyWhatTheAxisCanDraw)
{
    const RangeCase cases[] = {
        { "linear keeps zero and negatives", { 0.0, -2.5, 3.0, 0.5 }, 0, true, -2.5, 3.0 },
        { "pseudo-log keeps them too", { 0.0, -2.5, 3.0 }, 2, true, -2.5, 3.0 },
        { "log drops zero and negatives", { 0.0, -2.5, 3.0, 0.5, 0.0 }, 1, true, 0.5, 3.0 },
        { "log keeps tiny positives", { 1e-9, 0.0, 4e5 }, 1, true, 1e-9, 4e5 },
        { "non-finite values never count", { nan, 2.0, inf, -inf, 7.0 }, 0, true, 2.0, 7.0 },
        { "one value is a range of zero width", { 4.0 }, 1, true, 4.0, 4.0 },
        { "nothing positive on a log axis", { 0.0, -1.0, nan }, 1, false, 0.0, 0.0 },
        { "no values", {}, 0, false, 0.0, 0.0 },
        { "only non-finite values", { nan, inf }, 2, false, 0.0, 0.0 },
    };
    for (const RangeCase& c : cases) {
        const AxisRange range = drawableRange(c.values, c.mode);
        EXPECT_EQ(range.isValid(), c.valid) << c.name;
        if (c.valid) {
            EXPECT_EQ(range.low, c.low) << c.name;
            EXPECT_EQ(range.high, c.high) << c.name;
        }
    }
}
