#include "IoTestBase.h"
#include "io/VQDReader.h"

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Five events of a four-sample trace; sample s of event e is 10 e + s, with a spike in event 2 that the
// default filters would take out.
std::vector<std::vector<std::int16_t>> rows()
{
    std::vector<std::vector<std::int16_t>> values(5, std::vector<std::int16_t>(4));
    for (std::size_t e = 0; e < 5; ++e)
        for (std::size_t s = 0; s < 4; ++s)
            values[e][s] = static_cast<std::int16_t>(10 * e + s);
    values[2][1] = -32768;
    return values;
}

// Five masks of 2 x 3 pixels; pixel p of mask e is e + p.
std::vector<std::uint8_t> masks()
{
    std::vector<std::uint8_t> values;
    for (int e = 0; e < 5; ++e)
        for (int p = 0; p < 6; ++p)
            values.push_back(static_cast<std::uint8_t>(e + p));
    return values;
}

class VQDReaderBlockRead : public IoTest
{
protected:
    void SetUp() override
    {
        const std::string path = pathFor("traces.vqd");
        FixtureWriter(path)
            .column<double>("deform", std::vector<double>(5, 0.1))
            .trace<std::int16_t>("fl1_raw", rows(), Storage::deflate(4, 2))
            .trace<float>("fl2_median", { { 1.5f, 2.5f }, { 3.5f, 4.5f } })
            .imageStack("mask", 5, 2, 3, masks(), Storage::deflate(4, 1))
            .close();
        ASSERT_TRUE(reader.open(path));
    }

    VQDReader reader;
};

} // namespace

TEST_F(VQDReaderBlockRead, RowsAsOneReadGivesWhatSingleReadsGive)
{
    // Chunks of two rows, so that the block starts inside one and ends inside another.
    const auto block = reader.getRawTraces("fl1_raw", 1, 3);
    ASSERT_EQ(block.size(), 3u);
    for (std::size_t r = 0; r < block.size(); ++r)
        EXPECT_EQ(block[r], reader.getTrace("fl1_raw", 1 + r)) << r;
    EXPECT_THAT(block[1], ElementsAre(20.0f, -32768.0f, 22.0f, 23.0f));
    EXPECT_THAT(reader.getRawTraces("fl2_median", 0, 2)[1], ElementsAre(3.5f, 4.5f));
}

TEST_F(VQDReaderBlockRead, FewerRowsAtTheEndNoneBeyond)
{
    EXPECT_EQ(reader.getRawTraces("fl1_raw", 3, 10).size(), 2u);
    EXPECT_THAT(reader.getRawTraces("fl1_raw", 5, 1), IsEmpty());
    EXPECT_THAT(reader.getRawTraces("fl1_raw", 0, 0), IsEmpty());
    testing::internal::CaptureStderr();
    EXPECT_THAT(reader.getRawTraces("fl9_raw", 0, 2), IsEmpty());
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
        testing::StartsWith("Error reading trace 'fl9_raw' at index 0: "));
}

TEST_F(VQDReaderBlockRead, AnAliasGivesItsSourceUnfiltered)
{
    reader.addTraceAlias("fl1_median_rf", "fl1_raw");
    const auto block = reader.getRawTraces("fl1_median_rf", 2, 1);
    ASSERT_EQ(block.size(), 1u);
    EXPECT_EQ(block[0], reader.getTrace("fl1_raw", 2));
    // Filtered by the reader's settings it is the alias's trace.
    EXPECT_EQ(applyTraceProcessing(block[0], reader.traceProcessing()), reader.getTrace("fl1_median_rf", 2));
}

TEST_F(VQDReaderBlockRead, MasksAsOneReadGiveWhatSingleReadsGive)
{
    int width = 0;
    int height = 0;
    const auto block = reader.getMasks(3, 4, &width, &height);
    ASSERT_EQ(block.size(), 2u); // events 3 and 4 only
    EXPECT_EQ(width, 3);
    EXPECT_EQ(height, 2);
    for (std::size_t f = 0; f < block.size(); ++f)
        EXPECT_EQ(block[f], reader.getMask(3 + f, nullptr, nullptr)) << f;
    EXPECT_THAT(block[1], ElementsAre(4, 5, 6, 7, 8, 9));

    // Nothing to read leaves the sizes as they were.
    int untouched = -1;
    EXPECT_THAT(reader.getMasks(5, 2, &untouched, &untouched), IsEmpty());
    EXPECT_EQ(untouched, -1);
}
