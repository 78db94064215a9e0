#include "calc/FLRefinement.h"

#include "RefinementFixture.h"
#include "io/VQDReader.h"

#include <QObject>

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Not;

namespace {

// The three refined features of a channel.
struct Refined
{
    std::vector<double> max, pos, width;
};

Refined refinedOf(VQDReader& reader, int channel)
{
    const std::string prefix = "fl" + std::to_string(channel);
    return { reader.getFeature(prefix + "_max_rf"), reader.getFeature(prefix + "_pos_rf"),
        reader.getFeature(prefix + "_width_rf") };
}

// The results of the fixture with each cell's own window (see RefinementFixture.h): channel 1 with
// its offset of 10, e.g. event 0: 200 + 10 at sample 12; half 105 is first undercut at 14 on the
// right, and the left scan ends at 11, right of the window's start 10.
const Refined cellWindows = { { 210, 310, 10, 510 }, { 12, 6, 8, 15 }, { 3, 1, 4, 3 } };
// The same with windows of one sample around the recorded position: event 1 searches 7..9 (110 at 7,
// below 55 at 9), event 2 9..11 (flat: the first sample, width to the end).
const Refined recordedWindows = { { 210, 110, 10, 510 }, { 12, 7, 9, 15 }, { 1, 2, 2, 1 } };

} // namespace

TEST_F(RefinementTest, PeaksInTheWindowsOfTheCellsOwnPositions)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeCells()));
    FLRefinement refinement;
    ASSERT_TRUE(refinement.refine(&reader, reader.readMetadata(), unfiltered()));

    const Refined fl1 = refinedOf(reader, 1);
    EXPECT_THAT(fl1.max, ElementsAreArray(cellWindows.max));
    EXPECT_THAT(fl1.pos, ElementsAreArray(cellWindows.pos));
    EXPECT_THAT(fl1.width, ElementsAreArray(cellWindows.width));
    EXPECT_TRUE(reader.isComputedFeature("fl1_max_rf"));
}

TEST_F(RefinementTest, ChannelsAndAliases)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeCells()));
    FLRefinement refinement;
    ASSERT_TRUE(refinement.refine(&reader, reader.readMetadata(), unfiltered()));

    // Channel 2 has peak features but no raw trace: no alias, no peak, the recorded position kept.
    const Refined fl2 = refinedOf(reader, 2);
    EXPECT_THAT(fl2.max, ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(fl2.pos, ElementsAre(3, 4, 5, 6));
    EXPECT_THAT(fl2.width, ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(reader.traceNames(), ElementsAre("fl1_median_rf", "fl1_raw", "fl2_median"));

    // "fl1_max_ctc" names channel 1 a second time and "fl3_max_rf" is a refined feature: neither makes a
    // channel, so nothing of channel 3 appears.
    EXPECT_FALSE(reader.hasFeature("fl3_pos_rf"));
    EXPECT_FALSE(reader.isComputedFeature("fl3_max_rf"));
    EXPECT_THAT(reader.featureNames(), Not(Contains("fl1_max_ctc_rf")));
}

TEST_F(RefinementTest, FiltersApplyToTheRefinedTrace)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeCells()));
    FLRefinement refinement;
    const auto raw = rawTraces();

    // Every filter off: the refined trace is the raw one.
    ASSERT_TRUE(refinement.refine(&reader, reader.readMetadata(), unfiltered()));
    for (std::size_t e = 0; e < raw.size(); ++e)
        EXPECT_EQ(reader.getTrace("fl1_median_rf", e), std::vector<float>(raw[e].begin(), raw[e].end())) << e;

    // The default filters reach the reader. (Event 0's spike stays, in a window of zeros that has no
    // robust deviation, but the smoothing spreads it.)
    const FLRefinementParams defaults;
    ASSERT_TRUE(refinement.refine(&reader, reader.readMetadata(), defaults));
    const std::vector<float> raw0(raw[0].begin(), raw[0].end());
    const std::vector<float> filtered = reader.getTrace("fl1_median_rf", 0);
    EXPECT_NE(filtered, raw0);
    EXPECT_EQ(filtered, applyTraceProcessing(raw0, defaults.traceProcessing()));
}

TEST_F(RefinementTest, WithoutSpeedTheWindowsLieAroundTheRecordedPositions)
{
    struct Case
    {
        const char* what;
        Layout layout;
        double threshold;
    };
    const Case cases[] = {
        { "no images: no channel centre", { false, true, true }, 400.0 },
        { "no pixel size: no channel centre", { true, false, true }, 400.0 },
        { "no event above the threshold", {}, 2000.0 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        VQDReader reader;
        ASSERT_TRUE(reader.open(writeCells(c.layout)));
        FLRefinementParams params = unfiltered();
        params.flMaxThreshold = c.threshold;
        FLRefinement refinement;
        ASSERT_TRUE(refinement.refine(&reader, reader.readMetadata(), params));
        const Refined fl1 = refinedOf(reader, 1);
        EXPECT_THAT(fl1.max, ElementsAreArray(recordedWindows.max));
        EXPECT_THAT(fl1.pos, ElementsAreArray(recordedWindows.pos));
        EXPECT_THAT(fl1.width, ElementsAreArray(recordedWindows.width));
    }
}

TEST_F(RefinementTest, WithoutRawTraceThereIsNoPeakToSearch)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeCells({ true, true, false })));
    FLRefinement refinement;
    testing::internal::CaptureStderr();
    ASSERT_TRUE(refinement.refine(&reader, reader.readMetadata(), unfiltered()));
    // Events that have no trace to search are not errors, one line each.
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const Refined fl1 = refinedOf(reader, 1);
    EXPECT_THAT(fl1.max, ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(fl1.pos, ElementsAre(12, 8, 10, 14));
    EXPECT_THAT(reader.traceNames(), ElementsAre("fl2_median"));
}

TEST_F(RefinementTest, ProgressPerChannelAndCancellation)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeCells()));
    FLRefinement refinement;
    std::vector<int> progress;
    QObject::connect(
        &refinement, &FLRefinement::progressChanged, [&](int percent) { progress.push_back(percent); });
    ASSERT_TRUE(refinement.refine(&reader, reader.readMetadata(), unfiltered()));
    // Event 0 of each of the two channels, then the end.
    EXPECT_THAT(progress, ElementsAre(0, 50, 100));

    // Cancelled when the second channel begins: the first channel's features stay, the second's are
    // dropped, and the result is false.
    reader.close();
    VQDReader second;
    ASSERT_TRUE(second.open(writeCells()));
    QObject::connect(&refinement, &FLRefinement::progressChanged, [&](int percent) {
        if (percent == 50)
            refinement.cancel();
    });
    EXPECT_FALSE(refinement.refine(&second, second.readMetadata(), unfiltered()));
    EXPECT_TRUE(second.isComputedFeature("fl1_max_rf"));
    EXPECT_FALSE(second.hasFeature("fl2_max_rf"));

    // A cancellation holds for the run it was meant for only.
    refinement.cancel();
    QObject::disconnect(&refinement, &FLRefinement::progressChanged, nullptr, nullptr);
    EXPECT_TRUE(refinement.refine(&second, second.readMetadata(), unfiltered()));
    EXPECT_TRUE(second.hasFeature("fl2_max_rf"));
}

TEST_F(RefinementTest, NothingToRefine)
{
    FLRefinement refinement;
    EXPECT_FALSE(refinement.refine(nullptr, VQDMetadata {}, FLRefinementParams {}));

    const std::string path = pathFor("plain.vqd");
    FixtureWriter(path).column<double>("deform", { 0.1, 0.2 }).column<double>("fl1_max_rf", { 1, 2 }).close();
    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    const std::vector<std::string> before = reader.featureNames();
    EXPECT_FALSE(refinement.refine(&reader, reader.readMetadata(), unfiltered()));
    EXPECT_EQ(reader.featureNames(), before);
    // The filter settings stay as they were, too.
    EXPECT_TRUE(reader.traceProcessing().hampel1);
}
