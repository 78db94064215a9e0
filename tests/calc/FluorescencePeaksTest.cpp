#include "calc/FluorescencePeaks.h"

#include <gtest/gtest.h>
#include <limits>

using namespace Tessaly;

namespace {

const double notANumber = std::numeric_limits<double>::quiet_NaN();

// Speed estimates of one channel: every event above the threshold pairs its distance from the channel
// centre (10 µm) with its time from the trace centre (80 µs).
SpeedEstimate oneChannel(const std::vector<double>& max, const std::vector<double>& pos,
    const std::vector<double>& posX, double threshold = 400.0)
{
    return estimateSpeed({ { &max, &pos } }, threshold, posX, 10.0, 80.0, 160);
}

PeakWindow window(std::size_t start, std::size_t high)
{
    return { start, high };
}

} // namespace

TEST(SpeedEstimate, MedianOfTheHalfFarthestFromTheChannelCentre)
{
    // Pairs (|dx|, dx / dt) over both channels:
    //   channel 1: (20, 20/10 = 2.0), (6, -6/-3 = 2.0), (15, -15/-6 = 2.5); event 3 lies at the trace
    //   centre (dt 0) and event 1 is not above the threshold;
    //   channel 2: (12, 12/4 = 3.0), (15, 15/5 = 3.0), (15, -15/-10 = 1.5).
    // Sorted by distance, equal ones in list order: 20 (2.0), 15 (2.5), 15 (3.0), 15 (1.5), 12, 6. The
    // first three are kept: median of {2.0, 2.5, 3.0} is 2.5; deviations {0.5, 0, 0.5} sorted
    // {0, 0.5, 0.5}, element 1 is 0.5, spread 1.4826 * 0.5.
    const std::vector<double> posX = { 30, 22, 4, 25, -5 };
    const std::vector<double> max1 = { 500, 400, 1000, 900, 800 };
    const std::vector<double> pos1 = { 90, 84, 77, 80, 74 };
    const std::vector<double> max2 = { 100, 700, 50, 600, 800 };
    const std::vector<double> pos2 = { 0, 84, 0, 85, 70 };
    const SpeedEstimate estimate
        = estimateSpeed({ { &max1, &pos1 }, { &max2, &pos2 } }, 400.0, posX, 10.0, 80.0, 160);
    EXPECT_DOUBLE_EQ(estimate.speed, 2.5);
    EXPECT_DOUBLE_EQ(estimate.spread, 0.7413);
}

TEST(SpeedEstimate, SingleEstimates)
{
    struct Case
    {
        const char* what;
        std::vector<double> max, pos, posX;
        double speed, spread;
    };
    const Case cases[] = {
        // Included, the event at the threshold would be the farthest one (40 µm, 2.0).
        { "a height equal to the threshold doesn't count", { 400, 401 }, { 100, 90 }, { 50, 40 }, 3.0, 0.0 },
        // One estimate of three is kept: the farthest, not the NaN.
        { "a position that is not a number sorts last", { 500, 500, 500 }, { 90, 90, 90 },
            { notANumber, 30, 20 }, 2.0, 0.0 },
        { "cells that seem to flow backwards give no speed", { 500 }, { 70 }, { 30 }, 0.0, 0.0 },
        { "no event above the threshold", { 100, 200 }, { 90, 95 }, { 30, 40 }, 0.0, 0.0 },
        { "every event at the trace centre", { 500, 600 }, { 80, 80.0000001 }, { 30, 40 }, 0.0, 0.0 },
        // Columns shorter than pos_x count only as far as they go.
        { "a short column", { 500 }, { 90 }, { 30, 1000 }, 2.0, 0.0 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const SpeedEstimate estimate = oneChannel(c.max, c.pos, c.posX);
        EXPECT_DOUBLE_EQ(estimate.speed, c.speed);
        EXPECT_DOUBLE_EQ(estimate.spread, c.spread);
    }
}

TEST(SpeedEstimate, NoneWithoutPositionsChannelCentreOrTrace)
{
    const std::vector<double> max = { 500 };
    const std::vector<double> pos = { 90 };
    const std::vector<double> posX = { 30 };
    EXPECT_EQ(estimateSpeed({ { &max, &pos } }, 400.0, {}, 10.0, 80.0, 160).speed, 0.0);
    EXPECT_EQ(estimateSpeed({ { &max, &pos } }, 400.0, posX, 0.0, 80.0, 160).speed, 0.0);
    EXPECT_EQ(estimateSpeed({ { &max, &pos } }, 400.0, posX, 10.0, 80.0, 0).speed, 0.0);
    EXPECT_EQ(estimateSpeed({}, 400.0, posX, 10.0, 80.0, 160).speed, 0.0);
}

TEST(PeakWindows, CellWindowFollowsPositionAndSize)
{
    struct Case
    {
        const char* what;
        double posX, sizeX, speed, spread, sampleTime;
        std::size_t traceLength, start, high;
    };
    // Channel centre 10 µm. centre = (posX - 10) / (dt v) + n / 2, half = sizeX / v / dt / 2 * widening.
    const Case cases[] = {
        { "centre 20/2 + 80 = 90, half 2", 30, 8, 2, 0, 1, 160, 88, 92 },
        { "spread a quarter of the speed widens by 1.25: 87.5..92.5", 30, 8, 2, 0.5, 1, 160, 87, 92 },
        { "widening stops at 1.5: half 3", 30, 8, 2, 3, 1, 160, 87, 93 },
        { "half-microsecond samples: centre 100, half 4", 30, 8, 2, 0, 0.5, 160, 96, 104 },
        // 161 / 2 is 80 in whole samples: centre 90, half 2.25, 87.75..92.25 (not 88.25..92.75).
        { "odd trace length", 30, 9, 2, 0, 1, 161, 87, 92 },
        { "a cell left of the channel centre", 0, 8, 2, 0, 1, 160, 73, 77 },
        { "beyond the trace's end: both ends at its last sample", 400, 8, 2, 0, 1, 160, 159, 159 },
        { "before the trace's start: both ends at sample 0", -400, 8, 2, 0, 1, 160, 0, 0 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        PeakWindow w;
        ASSERT_TRUE(cellWindow(c.posX, c.sizeX, 10.0, c.speed, c.spread, c.sampleTime, c.traceLength, w));
        EXPECT_EQ(w.start, c.start);
        EXPECT_EQ(w.high, c.high);
    }
    PeakWindow w;
    EXPECT_FALSE(cellWindow(notANumber, 8, 10.0, 2, 0, 1, 160, w));
    EXPECT_FALSE(cellWindow(30, notANumber, 10.0, 2, 0, 1, 160, w));
}

TEST(PeakWindows, RecordedWindowAndClamping)
{
    PeakWindow w;
    // 45 µs at 0.5 µs a sample is sample 90; 8 samples either side.
    ASSERT_TRUE(recordedWindow(45.0, 8.0, 0.5, 160, w));
    EXPECT_EQ(w.start, 82u);
    EXPECT_EQ(w.high, 98u);
    // The low end stops at 0.
    ASSERT_TRUE(recordedWindow(2.0, 8.0, 1.0, 160, w));
    EXPECT_EQ(w.start, 0u);
    EXPECT_EQ(w.high, 10u);
    EXPECT_FALSE(recordedWindow(notANumber, 8.0, 1.0, 160, w));

    struct Case
    {
        double low, high;
        std::size_t start, end;
    };
    const Case cases[] = {
        { 150.0, 170.0, 150, 159 }, // high capped at n - 1
        { 170.0, 200.0, 159, 159 }, // an end at or beyond n is n - 1
        { 50.9, 40.7, 40, 40 }, // high left of low: the window is its high end
        { 0.0, -5.0, 0, 0 }, { 12.99, 13.99, 12, 13 }, // truncated, not rounded
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.low << ".." << c.high);
        ASSERT_TRUE(clampWindow(c.low, c.high, 160, w));
        EXPECT_EQ(w.start, c.start);
        EXPECT_EQ(w.high, c.end);
    }
    EXPECT_FALSE(clampWindow(1.0, 2.0, 0, w));
}

TEST(PeakSearch, HeightPositionAndWidth)
{
    const std::vector<float> trace = { 10, 20, 50, 100, 80, 40, 60, 100, 30, 10 };
    struct Case
    {
        const char* what;
        std::vector<float> trace;
        PeakWindow window;
        double offset, max, pos, width;
    };
    const Case cases[] = {
        // The first 100 (sample 3) wins over the one at 7. Half 50: left of the peak 50 isn't below it
        // and sample 2 is start + 1, where the scan stops (sample 1, start, is never looked at); right,
        // 40 at sample 5 is. Width (5 - 2) * 2 µs.
        { "first of equal peaks, scan stops right of start", trace, window(1, 8), 0.0, 100, 6, 6 },
        // With the offset every value is 100 higher: half 100 and no sample right of the peak is below
        // it, so the scan ends at high (8), which is looked at.
        { "offset included in height and half height", trace, window(1, 8), 100.0, 200, 6, 12 },
        // The peak at the window's first sample: the left scan doesn't run.
        { "peak at the start of the window", { 90, 50, 20, 10, 5, 0 }, window(0, 5), 0.0, 90, 0, 4 },
        // Sample 1 (400) is outside the window and left of start: never the left end.
        { "peak at a start inside the trace", { 500, 400, 100, 60, 10, 0 }, window(2, 5), 0.0, 100, 4, 4 },
        { "a window of one sample", trace, window(7, 7), 0.0, 100, 14, 0 },
        // Below half on the left: sample 2 of {30, 5, 8, 60} is 8 < 30.
        { "left end at the first sample below half", { 30, 5, 8, 60, 61, 0 }, window(0, 5), 0.0, 61, 8, 6 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        PeakResult result;
        ASSERT_TRUE(findPeak(c.trace, c.window, c.offset, 2.0, result));
        EXPECT_DOUBLE_EQ(result.max, c.max);
        EXPECT_DOUBLE_EQ(result.pos, c.pos);
        EXPECT_DOUBLE_EQ(result.width, c.width);
    }
}

TEST(PeakSearch, NothingToSearch)
{
    PeakResult result;
    EXPECT_FALSE(findPeak({}, window(0, 0), 0.0, 1.0, result));
    EXPECT_FALSE(findPeak({ 1, 2, 3 }, window(0, 3), 0.0, 1.0, result)); // high beyond the trace
    const float nanf = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(findPeak({ nanf, nanf, nanf }, window(0, 2), 0.0, 1.0, result));
}
