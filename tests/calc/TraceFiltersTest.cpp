#include "calc/TraceFilters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

using namespace Tessaly;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::FloatEq;
using testing::NanSensitiveFloatEq;
using testing::Pointwise;

namespace {

// A raw trace as the instrument records it: a baseline near 100 with noise, a fluorescence peak at
// sample 22, a one-sample spike at 5 and a two-sample dip at 31-32. Drawn with numpy:
//   rng = np.random.default_rng(11); t = np.arange(40)
//   x = np.round(100 + 8 rng.standard_normal(40) + 600 exp(-((t - 22) / 3)² / 2)).astype(int16)
//   x[5] = 900; x[31] = -400; x[32] = -380
const std::vector<float> rawTrace
    = { 100, 111, 110, 96, 98, 900, 105, 100, 106, 85, 113, 100, 108, 106, 114, 143, 188, 248, 345, 469, 573,
          655, 703, 662, 565, 457, 343, 240, 169, 140, 124, -400, -380, 104, 106, 98, 104, 108, 98, 93 };

// The reference values below come from a separate float32 implementation in Python/numpy that follows
// the definitions literally: np.sort of each window and element len(w) // 2 for medians, the window
// sum in float64 computed afresh for every sample for the mean, and the Savitzky-Golay sums as
// np.float32 operations in the order j = -m..m.

} // namespace

TEST(TraceFilters, HampelReplacesOutliersByTheMedianOfTheirWindow)
{
    // hampel(x, k = 5, t = 3): the spike and both samples of the dip are replaced, the peak stays.
    const std::vector<float> expected = { 100, 111, 110, 96, 98, 105, 105, 100, 106, 85, 113, 100, 108, 106,
        114, 143, 188, 248, 345, 469, 573, 655, 703, 662, 565, 457, 343, 240, 169, 140, 124, 106, 106, 104,
        106, 98, 104, 108, 98, 93 };
    EXPECT_EQ(hampelFilter(rawTrace, 5, 3.0f), expected);
    // With a high enough threshold nothing is an outlier.
    EXPECT_EQ(hampelFilter(rawTrace, 5, 1000.0f), rawTrace);
}

TEST(TraceFilters, HampelTakesTheUpperMiddleOfAnEvenWindow)
{
    // By hand, k = 2: sample 1 has the window {10, 500, 12, 14} of four; sorted, element 2 is 14 (the
    // lower middle would be 12). Deviations from 14 sorted {0, 2, 4, 486}: element 2 is 4, s = 5.93,
    // and 486 > 3 s, so 500 becomes 14. Every other sample lies within 3 s of its window's median.
    EXPECT_THAT(hampelFilter({ 10, 500, 12, 14, 16, 18 }, 2, 3.0f), ElementsAre(10, 14, 12, 14, 16, 18));
}

TEST(TraceFilters, HampelNeverReplacesInAFlatWindow)
{
    // More than half of each window equals the median exactly, so the robust deviation is 0 and the
    // spike, however far off, stays.
    std::vector<float> trace(11, 5.0f);
    trace[5] = 100.0f;
    EXPECT_EQ(hampelFilter(trace, 2, 3.0f), trace);
    EXPECT_TRUE(hampelFilter({}, 2, 3.0f).empty());
}

TEST(TraceFilters, NaNSortsAboveEveryNumberInHampelAndMedianWindows)
{
    // numpy reference (np.sort puts NaN last; a NaN deviation fails every comparison, so a NaN sample
    // is never replaced, and a window of mostly NaN has a NaN median).
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> trace = { 1, 2, nan, 4, 100, 5, 6, nan, nan, nan, 7, 8, 9, 200, 10 };
    EXPECT_THAT(hampelFilter(trace, 2, 3.0f),
        Pointwise(NanSensitiveFloatEq(),
            { 1.0f, 2.0f, nan, 4.0f, 6.0f, 5.0f, 6.0f, nan, nan, nan, 7.0f, 8.0f, 9.0f, 10.0f, 10.0f }));
    EXPECT_THAT(slidingMedian(trace, 1),
        Pointwise(NanSensitiveFloatEq(),
            { 2.0f, 2.0f, 4.0f, 100.0f, 5.0f, 6.0f, 6.0f, nan, nan, nan, 8.0f, 8.0f, 9.0f, 10.0f, 200.0f }));
    EXPECT_THAT(slidingMedian(trace, 2),
        Pointwise(NanSensitiveFloatEq(),
            { 2.0f, 4.0f, 4.0f, 5.0f, 6.0f, 6.0f, 100.0f, nan, nan, nan, 9.0f, 9.0f, 9.0f, 10.0f, 10.0f }));
}

TEST(TraceFilters, SlidingMedianShrinksItsWindowAtTheEnds)
{
    // By hand, k = 1: {3, 1} -> 3 (upper middle), {3, 1, 4} -> 3, {1, 4, 1} -> 1, {4, 1, 5} -> 4,
    // {1, 5, 9} -> 5, {5, 9, 2} -> 5, {9, 2, 6} -> 6, {2, 6} -> 6.
    EXPECT_THAT(slidingMedian({ 3, 1, 4, 1, 5, 9, 2, 6 }, 1), ElementsAre(3, 3, 1, 4, 5, 5, 6, 6));

    // numpy reference, k = 3.
    const std::vector<float> expected = { 110, 100, 110, 105, 105, 105, 100, 105, 105, 105, 106, 106, 108,
        113, 114, 143, 188, 248, 345, 469, 573, 573, 573, 573, 565, 457, 343, 240, 169, 140, 124, 106, 104,
        104, 104, 104, 104, 104, 98, 104 };
    EXPECT_EQ(slidingMedian(rawTrace, 3), expected);

    // A window wider than the trace is the whole trace everywhere.
    EXPECT_THAT(slidingMedian({ 3, 1, 2 }, 10), ElementsAre(2, 2, 2));
    EXPECT_THAT(hampelFilter({ 3, 1, 2, 2, 90 }, 10, 3.0f), ElementsAre(3, 1, 2, 2, 2));

    EXPECT_EQ(slidingMedian(rawTrace, 0), rawTrace);
    EXPECT_TRUE(slidingMedian({}, 3).empty());
}

TEST(TraceFilters, MovingMeanAveragesTheShrinkingWindowInDouble)
{
    // By hand, k = 2: 6/3, 10/4, 20/5, 19/4, 17/3.
    EXPECT_THAT(movingMean({ 1, 2, 3, 4, 10 }, 2), ElementsAre(2.0f, 2.5f, 4.0f, 4.75f, 17.0f / 3.0f));

    // 2^24 + 1 + 1 is exact in double: the first mean is 16777218 / 3 = 5592406. A float sum would
    // lose both ones and give 5592405.5.
    EXPECT_THAT(movingMean({ 16777216.0f, 1.0f, 1.0f }, 2), ElementsAre(5592406.0f, 5592406.0f, 5592406.0f));

    // numpy reference, k = 3.
    const std::vector<float> expected = { 104.25f, 103.0f, 235.8333282470703f, 217.14285278320312f,
        217.14285278320312f, 216.42857360839844f, 212.85714721679688f, 215.2857208251953f,
        215.57142639160156f, 102.42857360839844f, 102.57142639160156f, 104.57142639160156f,
        109.85713958740234f, 124.57142639160156f, 143.85714721679688f, 178.85714721679688f,
        230.42857360839844f, 297.1428527832031f, 374.4285583496094f, 454.4285583496094f, 522.1428833007812f,
        567.4285888671875f, 583.4285888671875f, 565.4285888671875f, 517.8571166992188f, 448.4285583496094f,
        368.0f, 291.1428527832031f, 153.2857208251953f, 33.71428680419922f, -0.4285714328289032f,
        -19.571428298950195f, -29.714284896850586f, -34.85714340209961f, -37.14285659790039f, 34.0f,
        101.57142639160156f, 101.16666412353516f, 100.19999694824219f, 100.75f };
    EXPECT_EQ(movingMean(rawTrace, 3), expected);

    EXPECT_THAT(movingMean({ 1, 2, 3, 6 }, 10), ElementsAre(3, 3, 3, 3));
    EXPECT_EQ(movingMean(rawTrace, 0), rawTrace);
    EXPECT_TRUE(movingMean({}, 3).empty());
}

TEST(TraceFilters, SavitzkyGolaySmoothsTheInteriorAndLeavesTheEnds)
{
    // numpy reference, m = 3 (weights -2, 3, 6, 7, 6, 3, -2 over 21). The first and last three samples
    // are those of the input.
    const std::vector<float> expected = { 100.0f, 111.0f, 110.0f, 216.33334350585938f, 327.857177734375f,
        365.4285583496094f, 332.61907958984375f, 214.2381134033203f, 24.095243453979492f, 99.19047546386719f,
        101.47618865966797f, 102.80953979492188f, 105.57142639160156f, 104.80953216552734f,
        118.28572082519531f, 141.38096618652344f, 185.19049072265625f, 256.952392578125f, 352.5714416503906f,
        462.76190185546875f, 575.1905517578125f, 657.8095092773438f, 685.0000610351562f, 654.5714111328125f,
        572.2381591796875f, 457.5714416503906f, 341.952392578125f, 245.95237731933594f, 226.19049072265625f,
        111.04761505126953f, -95.8571548461914f, -197.80953979492188f, -201.04762268066406f,
        -108.4761962890625f, 81.42858123779297f, 149.80953979492188f, 103.90476989746094f, 108.0f, 98.0f,
        93.0f };
    EXPECT_THAT(savitzkyGolay(rawTrace, 3), Pointwise(FloatEq(), expected));

    // A quadratic smoother reproduces a parabola: with m = 2 the weights are (-3, 12, 17, 12, -3) / 35
    // and every interior sample of j² comes back (to float rounding).
    EXPECT_THAT(
        savitzkyGolay({ 0, 1, 4, 9, 16, 25, 36 }, 2), Pointwise(FloatEq(), { 0, 1, 4, 9, 16, 25, 36 }));
    // A line whose ends are off stays off at the ends: only samples 2..n-3 are smoothed.
    // By hand: sample 2 sees 50 where the line has 0, off by 50 · -3/35; sample 3 sees -50 where the
    // line has 5, off by -55 · -3/35.
    EXPECT_THAT(savitzkyGolay({ 50, 1, 2, 3, 4, -50 }, 2),
        Pointwise(FloatEq(), { 50.0f, 1.0f, 2.0f - 150.0f / 35.0f, 3.0f + 165.0f / 35.0f, 4.0f, -50.0f }));
}

TEST(TraceFilters, SavitzkyGolayLeavesTracesShorterThanOneWindow)
{
    const std::vector<float> six = { 1, 9, 2, 8, 3, 7 };
    EXPECT_EQ(savitzkyGolay(six, 3), six);
    EXPECT_EQ(savitzkyGolay(six, 0), six);
    EXPECT_TRUE(savitzkyGolay({}, 3).empty());
    // Seven samples are one window: only the middle one changes. By hand:
    // (-2·1 + 3·9 + 6·2 + 7·8 + 6·3 + 3·7 - 2·4) / 21 = 124 / 21.
    EXPECT_THAT(savitzkyGolay({ 1, 9, 2, 8, 3, 7, 4 }, 3),
        Pointwise(FloatEq(), { 1.0f, 9.0f, 2.0f, 124.0f / 21.0f, 3.0f, 7.0f, 4.0f }));
}

TEST(TraceFilters, ChainRunsTheFiltersThatAreOnInFixedOrder)
{
    // numpy reference of the default settings: sg(hampel(hampel(x, 5, 3), 11, 3), 3). The second
    // Hampel window (23 samples) is wide enough to cut the top of the peak.
    const std::vector<float> defaults = { 100.0f, 111.0f, 110.0f, 102.76190948486328f, 100.71428680419922f,
        100.42857360839844f, 105.4761962890625f, 100.66667175292969f, 99.80953216552734f, 99.19047546386719f,
        101.47618865966797f, 102.80953979492188f, 105.57142639160156f, 104.80953216552734f,
        118.28572082519531f, 141.38096618652344f, 185.19049072265625f, 293.61907958984375f,
        342.0476379394531f, 335.09527587890625f, 285.0000305175781f, 213.19049072265625f, 135.61904907226562f,
        211.6666717529297f, 282.0476379394531f, 331.19049072265625f, 333.23809814453125f, 281.857177734375f,
        178.0f, 137.047607421875f, 118.14286041259766f, 109.71428680419922f, 105.52381134033203f,
        102.66667175292969f, 102.66667938232422f, 103.52381134033203f, 103.90476989746094f, 108.0f, 98.0f,
        93.0f };
    EXPECT_THAT(applyTraceProcessing(rawTrace, TraceProcessing {}), Pointwise(FloatEq(), defaults));

    // Everything on: sg(mean(median(hampel(hampel(x, 5, 3), 11, 3), 3), 3), 3).
    TraceProcessing all;
    all.median = true;
    all.rolling = true;
    const std::vector<float> allOn = { 105.0f, 105.0f, 105.0f, 104.31973266601562f, 104.06803131103516f,
        104.00680541992188f, 104.19728088378906f, 104.34014129638672f, 104.6258544921875f, 105.0272216796875f,
        105.78911590576172f, 108.92517852783203f, 115.2721176147461f, 124.71429443359375f,
        136.61904907226562f, 148.8367462158203f, 160.49661254882812f, 171.8299560546875f, 180.76870727539062f,
        186.37417602539062f, 188.70068359375f, 188.61227416992188f, 188.25851440429688f, 188.52381896972656f,
        187.6394500732422f, 184.5850372314453f, 178.353759765625f, 169.05441284179688f, 157.9115753173828f,
        145.87074279785156f, 133.63265991210938f, 122.7074966430664f, 113.93878173828125f,
        108.06123352050781f, 105.09751892089844f, 103.96463775634766f, 103.4680404663086f,
        103.33333587646484f, 102.80000305175781f, 102.5f };
    EXPECT_THAT(applyTraceProcessing(rawTrace, all), Pointwise(FloatEq(), allOn));

    const TraceProcessing off { false, 5, 3.0f, false, 11, 3.0f, false, 3, false, 3, false, 3 };
    EXPECT_EQ(applyTraceProcessing(rawTrace, off), rawTrace);
}
