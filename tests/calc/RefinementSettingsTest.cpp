#include "calc/RefinementSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Tessaly;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

TEST(RefinementSettings, ChannelsFromPeakHeightFeatures)
{
    // Derived heights ("_max_ctc", "_max_rf") don't make channels of their own, and each channel counts
    // once however many features name it.
    EXPECT_THAT(refinementChannels({ "deform", "fl3_max", "fl1_max", "fl1_max_ctc", "fl1_max_rf", "fl1_pos",
                    "fl12_max", "fl2_width" }),
        ElementsAre(1, 3, 12));
    // Neither the middle of these is a number.
    EXPECT_THAT(refinementChannels({ "fl_max", "flx_max", "fl1a_max", "flow_max", "fl-1_max" }), IsEmpty());
    // A number too large for a channel is no channel; leading zeros are the same channel.
    EXPECT_THAT(refinementChannels({ "fl99999999999_max", "fl02_max", "fl2_max" }), ElementsAre(2));
    EXPECT_THAT(refinementChannels({}), IsEmpty());
}

TEST(RefinementSettings, SampleRateAndOffsets)
{
    struct Case
    {
        const char* what;
        std::map<std::string, std::string> fluorescence;
        double sampleTime;
        std::map<int, double> offsets;
    };
    const Case cases[] = {
        { "blanks", { { "sample rate", "2000000" }, { "baseline 1 offset", "12.5" } }, 0.5, { { 1, 12.5 } } },
        { "underscores", { { "sample_rate", "1e6" }, { "baseline_3_offset", "-4" } }, 1.0, { { 3, -4.0 } } },
        // The number is the run of digits after the first 9 characters, whatever follows.
        { "text after the number", { { "baseline 2 offset (a.u.)", "7" }, { "baseline_12_offset_adc", "8" } },
            1e6, { { 2, 7.0 }, { 12, 8.0 } } },
        { "no number in the key", { { "baseline x offset", "7" }, { "baseline  offset", "1" } }, 1e6, {} },
        { "a value that is no number is skipped",
            { { "baseline 1 offset", "n/a" }, { "sample rate", "fast" } }, 1e6, {} },
        // Keys are read in ascending order: "sample_rate" comes after "sample rate" and overrides it.
        { "the later spelling wins", { { "sample rate", "1000000" }, { "sample_rate", "250000" } }, 4.0, {} },
        { "a rate of 0 counts as 1 Hz", { { "sample rate", "0" } }, 1e6, {} },
        { "a negative rate counts as 1 Hz", { { "sample rate", "-5" } }, 1e6, {} },
        { "other keys", { { "channel 1 name", "FL1 525/50" }, { "offset 1", "5" } }, 1e6, {} },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const FluorescenceSampling sampling = readFluorescenceSampling(c.fluorescence);
        EXPECT_DOUBLE_EQ(sampling.sampleTime, c.sampleTime);
        EXPECT_EQ(sampling.offsets, c.offsets);
    }
}

TEST(RefinementSettings, PixelSize)
{
    EXPECT_DOUBLE_EQ(readPixelSize({ { "pixel size", "0.34" } }), 0.34);
    EXPECT_DOUBLE_EQ(readPixelSize({ { "pixel_size", " 0.68 " } }), 0.68);
    EXPECT_DOUBLE_EQ(readPixelSize({ { "pixel size", "0.34" }, { "pixel_size", "9" } }), 0.34);
    EXPECT_DOUBLE_EQ(readPixelSize({ { "pixel size", "small" }, { "pixel_size", "0.5" } }), 0.5);
    EXPECT_DOUBLE_EQ(readPixelSize({ { "pixel size", "small" } }), 0.0);
    EXPECT_DOUBLE_EQ(readPixelSize({}), 0.0);
}
