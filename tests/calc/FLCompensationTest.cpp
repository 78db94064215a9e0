#include "calc/FLCompensation.h"

#include "RefinementFixture.h"
#include "calc/FLRefinement.h"
#include "io/VQDReader.h"

#include <QObject>

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

const SquareMatrix identity = { { 1, 0 }, { 0, 1 } };

} // namespace

// The fixture's channels 1 and 2 (see RefinementFixture.h).
using CompensationTest = RefinementTest;

TEST_F(CompensationTest, IdentityKeepsTheInstrumentsHeights)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeCells()));
    FLCompensation compensation;
    std::vector<int> progress;
    QObject::connect(
        &compensation, &FLCompensation::progressChanged, [&](int percent) { progress.push_back(percent); });
    ASSERT_TRUE(compensation.compensate(&reader, { 1, 2 }, identity));
    // The stored "fl1_max_ctc" of the file is replaced.
    EXPECT_THAT(reader.getFeature("fl1_max_ctc"), ElementsAre(1000, 900, 300, 800));
    EXPECT_THAT(reader.getFeature("fl2_max_ctc"), ElementsAre(100, 100, 100, 100));
    EXPECT_TRUE(reader.isComputedFeature("fl1_max_ctc"));
    EXPECT_THAT(progress, ElementsAre(0, 100));
}

TEST_F(CompensationTest, RefinedHeightsArePreferredOnceComputed)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeCells()));
    FLRefinement refinement;
    ASSERT_TRUE(refinement.refine(&reader, reader.readMetadata(), unfiltered()));
    FLCompensation compensation;
    // Channel 2 has no trace: its refined heights are 0, so channel 1 keeps its own,
    // x1 = (y1 - 0.5 y2) / 0.9 = y1 / 0.9, and channel 2 gets x2 = -0.2 y1 / 0.9.
    ASSERT_TRUE(compensation.compensate(&reader, { 1, 2 }, { { 1, 0.5 }, { 0.2, 1 } }));
    const std::vector<double> refined = { 210, 310, 10, 510 };
    const std::vector<double>& fl1 = reader.getFeature("fl1_max_ctc");
    const std::vector<double>& fl2 = reader.getFeature("fl2_max_ctc");
    ASSERT_EQ(fl1.size(), 4u);
    ASSERT_EQ(fl2.size(), 4u);
    for (std::size_t e = 0; e < 4; ++e) {
        EXPECT_NEAR(fl1[e], refined[e] / 0.9, 1e-9) << e;
        EXPECT_NEAR(fl2[e], -0.2 * refined[e] / 0.9, 1e-9) << e;
    }

    // A later refinement with other windows changes "_max_rf" but not the compensated heights.
    FLRefinementParams params = unfiltered();
    params.flMaxThreshold = 5000.0;
    ASSERT_TRUE(refinement.refine(&reader, reader.readMetadata(), params));
    EXPECT_EQ(reader.getFeature("fl1_max_rf")[1], 110.0);
    EXPECT_NEAR(reader.getFeature("fl1_max_ctc")[1], 310 / 0.9, 1e-9);
}

TEST_F(CompensationTest, SingularMatrixLeavesNoFeature)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeCells()));
    FLCompensation compensation;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(compensation.compensate(&reader, { 1, 2 }, { { 1, 1 }, { 1, 1 } }));
    EXPECT_THAT(
        testing::internal::GetCapturedStderr(), HasSubstr("FLCompensation: spillover matrix is singular"));
    EXPECT_FALSE(reader.isComputedFeature("fl1_max_ctc"));
    EXPECT_FALSE(reader.hasFeature("fl2_max_ctc"));
}

TEST_F(CompensationTest, RefusedInputs)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeCells()));
    FLCompensation compensation;
    struct Case
    {
        const char* what;
        std::vector<int> channels;
        SquareMatrix matrix;
    };
    const Case cases[] = {
        { "one channel", { 1 }, { { 1 } } },
        { "matrix smaller than the channel list", { 1, 2 }, { { 1 } } },
        { "a row too short", { 1, 2 }, { { 1, 0 }, { 0 } } },
        { "a channel without peak heights", { 1, 5 }, identity },
    };
    testing::internal::CaptureStderr();
    for (const Case& c : cases) {
        EXPECT_FALSE(compensation.compensate(&reader, c.channels, c.matrix)) << c.what;
        EXPECT_FALSE(reader.hasFeature("fl2_max_ctc")) << c.what;
        EXPECT_FALSE(reader.isComputedFeature("fl1_max_ctc")) << c.what;
    }
    EXPECT_FALSE(compensation.compensate(nullptr, { 1, 2 }, identity));
    testing::internal::GetCapturedStderr();

    // A dataset without events.
    const std::string empty = pathFor("empty.vqd");
    FixtureWriter(empty).column<double>("fl1_max", {}).column<double>("fl2_max", {}).close();
    VQDReader none;
    ASSERT_TRUE(none.open(empty));
    EXPECT_FALSE(compensation.compensate(&none, { 1, 2 }, identity));
    EXPECT_FALSE(none.isComputedFeature("fl1_max_ctc"));
}
