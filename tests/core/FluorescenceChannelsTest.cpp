#include "core/FluorescenceChannels.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace Tessaly;

TEST(FluorescenceChannels, WavelengthColorAtTheEndsOfTheRangeAndInEachPiece)
{
    // Expected values by hand from the piecewise rainbow: channel = floor(255 * (f * c)^0.8), checked
    // with python3. E.g. 450 nm: g = 10/50 = 0.2, f = 1, 255 * 0.2^0.8 = 70.37; 400 nm: r = 40/60,
    // f = 0.3 + 0.7 * 20/40 = 0.65, 255 * (0.65 * 2/3)^0.8 = 130.6, 255 * 0.65^0.8 = 180.6.
    const struct
    {
        double wavelength;
        RgbColor expected;
    } cases[] = {
        { 379.0, { 128, 128, 128 } },
        { 380.0, { 97, 0, 97 } }, // f = 0.3 at the violet end: 255 * 0.3^0.8 = 97.3
        { 400.0, { 130, 0, 180 } },
        { 420.0, { 105, 0, 255 } }, // dimming ends at 420
        { 440.0, { 0, 0, 255 } },
        { 450.0, { 0, 70, 255 } },
        { 490.0, { 0, 255, 255 } },
        { 500.0, { 0, 255, 146 } },
        { 510.0, { 0, 255, 0 } },
        { 525.0, { 74, 255, 0 } },
        { 580.0, { 255, 255, 0 } },
        { 600.0, { 255, 190, 0 } },
        { 645.0, { 255, 0, 0 } },
        { 700.0, { 255, 0, 0 } }, // dimming starts above 700
        { 740.0, { 180, 0, 0 } },
        { 780.0, { 97, 0, 0 } },
        { 781.0, { 128, 128, 128 } },
        { 800.0, { 128, 128, 128 } },
        { 0.0, { 128, 128, 128 } },
        { std::nan(""), { 128, 128, 128 } },
    };
    for (const auto& c : cases) {
        const RgbColor color = wavelengthColor(c.wavelength);
        EXPECT_EQ(color, c.expected) << c.wavelength << " nm gives " << color.r << ", " << color.g << ", "
                                     << color.b;
    }
}

TEST(FluorescenceChannels, WavelengthIsTheLastNumberBeforeTheFirstSlash)
{
    EXPECT_EQ(parseWavelength("525/50"), 525);
    EXPECT_EQ(parseWavelength("FL1 525/50"), 525);
    EXPECT_EQ(parseWavelength(" 593 / 46 "), 593);
    EXPECT_EQ(parseWavelength("FL1 488 nm"), 488);
    EXPECT_EQ(parseWavelength("700"), 700);
    // The band width after the slash never counts.
    EXPECT_EQ(parseWavelength("/50"), 0);
    EXPECT_EQ(parseWavelength("unknown"), 0);
    EXPECT_EQ(parseWavelength(""), 0);
    // Only a channel label: a number, but no wavelength; wavelengthColor makes it gray.
    EXPECT_EQ(parseWavelength("FL3"), 3);
    EXPECT_EQ(parseWavelength("99999999999999999999"), 2147483647);
}

TEST(FluorescenceChannels, RefinedTraceOnlyWhenPreferredAndPresent)
{
    const std::vector<std::string> refinedTraces { "fl1_median", "fl1_median_rf", "fl2_median", "fl2_raw" };

    const ChannelTrace refined = chooseChannelTrace(1, refinedTraces, true);
    EXPECT_EQ(refined.traceName, "fl1_median_rf");
    EXPECT_TRUE(refined.refined);

    const ChannelTrace notPreferred = chooseChannelTrace(1, refinedTraces, false);
    EXPECT_EQ(notPreferred.traceName, "fl1_median");
    EXPECT_FALSE(notPreferred.refined);

    const ChannelTrace noRefinedTrace = chooseChannelTrace(2, refinedTraces, true);
    EXPECT_EQ(noRefinedTrace.traceName, "fl2_median");
    EXPECT_FALSE(noRefinedTrace.refined);

    // The plain name is used even when the dataset lacks it; the plot then hides the channel.
    EXPECT_EQ(chooseChannelTrace(12, {}, true).traceName, "fl12_median");
}

TEST(FluorescenceChannels, SettingsFromEitherSpellingOfTheKeys)
{
    const FluorescenceChannelSettings blanks = readFluorescenceChannelSettings({
        { "channel 1 name", "FL1 525/50" },
        { "channel 2 name", "593/46" },
        { "channel 10 name", "700/75" },
        { "channel count", "3" },
        { "baseline 1 offset", "12.5" },
        { "baseline 10 offset", " -3 " },
        { "sample rate", "1000000.000000" },
        { "samples per event", "160" },
    });
    EXPECT_EQ(blanks.channelNames,
        (std::map<int, std::string> { { 1, "FL1 525/50" }, { 2, "593/46" }, { 10, "700/75" } }));
    EXPECT_EQ(blanks.offsets, (std::map<int, double> { { 1, 12.5 }, { 10, -3.0 } }));
    EXPECT_EQ(blanks.sampleRate, 1e6);

    const FluorescenceChannelSettings underscores = readFluorescenceChannelSettings({
        { "channel_1_name", "488" },
        { "channel_3_name", "640/30" },
        { "baseline_3_offset", "1e2" },
        { "sample_rate", "250000" },
    });
    EXPECT_EQ(underscores.channelNames, (std::map<int, std::string> { { 1, "488" }, { 3, "640/30" } }));
    EXPECT_EQ(underscores.offsets, (std::map<int, double> { { 3, 100.0 } }));
    EXPECT_EQ(underscores.sampleRate, 250000.0);
}

TEST(FluorescenceChannels, BlankSpellingWinsAndBadNumbersAreLeftOut)
{
    const FluorescenceChannelSettings both = readFluorescenceChannelSettings({
        { "channel 1 name", "525/50" },
        { "channel_1_name", "other" },
        { "baseline 1 offset", "7" },
        { "baseline_1_offset", "8" },
        { "baseline 2 offset", "n/a" },
        { "baseline 3 offset", "5 a.u." },
        { "baseline 4 offset", "" },
        { "channel x name", "not a channel" },
        { "channel 1 name extra", "not a channel either" },
        { "sample rate", "2e6" },
        { "sample_rate", "1" },
    });
    EXPECT_EQ(both.channelNames, (std::map<int, std::string> { { 1, "525/50" } }));
    EXPECT_EQ(both.offsets, (std::map<int, double> { { 1, 7.0 } }));
    EXPECT_EQ(both.sampleRate, 2e6);

    EXPECT_EQ(readFluorescenceChannelSettings({ { "sample rate", "fast" } }).sampleRate, 0.0);
    EXPECT_EQ(readFluorescenceChannelSettings({}).sampleRate, 0.0);
}
