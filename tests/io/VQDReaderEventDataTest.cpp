#include "IoTestBase.h"
#include "io/VQDReader.h"

#include <cstdint>
#include <limits>

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::ElementsAre;
using testing::FloatEq;
using testing::Pointwise;
using testing::StartsWith;

namespace {

// Stacks of three frames, 4 rows by 6 columns, so that a swap of width and height or of row and column
// shows. Pixel (event e, row r, column c) of the image is 100 e + 10 r + c; the mask is 255 inside a
// band of columns that moves with the event.
constexpr hsize_t frames = 3;
constexpr hsize_t rows = 4;
constexpr hsize_t columns = 6;

std::uint8_t imagePixel(hsize_t e, hsize_t r, hsize_t c)
{
    return static_cast<std::uint8_t>(100 * e + 10 * r + c);
}

std::uint8_t maskPixel(hsize_t e, hsize_t, hsize_t c)
{
    return c >= e + 1 && c <= e + 2 ? 255 : 0;
}

template <typename Pixel> std::vector<std::uint8_t> stack(Pixel pixel)
{
    std::vector<std::uint8_t> values;
    for (hsize_t e = 0; e < frames; ++e)
        for (hsize_t r = 0; r < rows; ++r)
            for (hsize_t c = 0; c < columns; ++c)
                values.push_back(pixel(e, r, c));
    return values;
}

template <typename Pixel> std::vector<std::uint8_t> frame(Pixel pixel, hsize_t e)
{
    std::vector<std::uint8_t> values;
    for (hsize_t r = 0; r < rows; ++r)
        for (hsize_t c = 0; c < columns; ++c)
            values.push_back(pixel(e, r, c));
    return values;
}

// The trace of the filter tests (tests/calc/TraceFiltersTest.cpp) as event 1 of a stored int16 trace,
// with the filtered result of the default settings from the same numpy reference.
const std::vector<std::int16_t> rawTrace
    = { 100, 111, 110, 96, 98, 900, 105, 100, 106, 85, 113, 100, 108, 106, 114, 143, 188, 248, 345, 469, 573,
          655, 703, 662, 565, 457, 343, 240, 169, 140, 124, -400, -380, 104, 106, 98, 104, 108, 98, 93 };
const std::vector<float> defaultFiltered = { 100.0f, 111.0f, 110.0f, 102.76190948486328f, 100.71428680419922f,
    100.42857360839844f, 105.4761962890625f, 100.66667175292969f, 99.80953216552734f, 99.19047546386719f,
    101.47618865966797f, 102.80953979492188f, 105.57142639160156f, 104.80953216552734f, 118.28572082519531f,
    141.38096618652344f, 185.19049072265625f, 293.61907958984375f, 342.0476379394531f, 335.09527587890625f,
    285.0000305175781f, 213.19049072265625f, 135.61904907226562f, 211.6666717529297f, 282.0476379394531f,
    331.19049072265625f, 333.23809814453125f, 281.857177734375f, 178.0f, 137.047607421875f,
    118.14286041259766f, 109.71428680419922f, 105.52381134033203f, 102.66667175292969f, 102.66667938232422f,
    103.52381134033203f, 103.90476989746094f, 108.0f, 98.0f, 93.0f };

std::vector<float> widened(const std::vector<std::int16_t>& values)
{
    return std::vector<float>(values.begin(), values.end());
}

const TraceProcessing allOff { false, 5, 3.0f, false, 11, 3.0f, false, 3, false, 3, false, 3 };

class VQDReaderEventData : public IoTest
{
protected:
    std::string writeFrames(const std::string& name, const Storage& storage)
    {
        const std::string path = pathFor(name);
        FixtureWriter(path)
            .column<float>("deform", std::vector<float>(frames, 0.1f))
            .imageStack("image", frames, rows, columns, stack(imagePixel), storage)
            .imageStack("mask", frames, rows, columns, stack(maskPixel), storage);
        return path;
    }

    // Event 0 flat, event 1 the raw trace above, event 2 its negative, so that events are told apart.
    std::string writeTraces(const std::string& name)
    {
        std::vector<std::int16_t> negative;
        for (std::int16_t value : rawTrace)
            negative.push_back(static_cast<std::int16_t>(-value));
        const std::string path = pathFor(name);
        FixtureWriter(path)
            .column<float>("deform", { 0.1f, 0.2f, 0.3f })
            .trace<std::int16_t>(
                "fl1_raw", { std::vector<std::int16_t>(rawTrace.size(), 7), rawTrace, negative })
            .trace<float>("fl2_median", { { 0.5f, -1.25f }, { 3.0e6f, 1e-3f }, { 0, 0 } });
        return path;
    }
};

} // namespace

TEST_F(VQDReaderEventData, FramesAreReadOneEventAtATimeInTheirOwnSize)
{
    for (const Storage& storage : { Storage::contiguous(), Storage::deflate(4, 1), Storage::deflate(6, 2) }) {
        const std::string path = writeFrames("frames.vqd", storage);
        VQDReader reader;
        ASSERT_TRUE(reader.open(path));
        ASSERT_TRUE(reader.hasImage());
        ASSERT_TRUE(reader.hasMask());
        for (const hsize_t e : { hsize_t { 0 }, frames - 1 }) {
            int width = -1;
            int height = -1;
            EXPECT_EQ(reader.getImage(e, &width, &height), frame(imagePixel, e)) << "event " << e;
            EXPECT_EQ(width, static_cast<int>(columns));
            EXPECT_EQ(height, static_cast<int>(rows));
            width = height = -1;
            EXPECT_EQ(reader.getMask(e, &width, &height), frame(maskPixel, e)) << "event " << e;
            EXPECT_EQ(width, static_cast<int>(columns));
            EXPECT_EQ(height, static_cast<int>(rows));
        }
        // Two known pixels of the last frame, by position: row 3, column 5 and row 1, column 4.
        int width = 0;
        int height = 0;
        const std::vector<std::uint8_t> last = reader.getImage(2, &width, &height);
        ASSERT_EQ(last.size(), 24u);
        EXPECT_EQ(last[3 * 6 + 5], 235);
        EXPECT_EQ(last[1 * 6 + 4], 214);
    }
}

TEST_F(VQDReaderEventData, IndicesAtAndPastTheEndGiveNothingSilently)
{
    const std::string path = writeFrames("frames.vqd", Storage::contiguous());
    const std::string tracePath = writeTraces("traces.vqd");
    VQDReader frameReader;
    VQDReader traceReader;
    ASSERT_TRUE(frameReader.open(path));
    ASSERT_TRUE(traceReader.open(tracePath));
    traceReader.addTraceAlias("fl1_median_rf", "fl1_raw");

    testing::internal::CaptureStderr();
    for (const std::size_t index :
        { std::size_t { frames }, std::size_t { 1000 }, std::numeric_limits<std::size_t>::max() }) {
        int width = -7;
        int height = -8;
        EXPECT_TRUE(frameReader.getImage(index, &width, &height).empty()) << index;
        EXPECT_TRUE(frameReader.getMask(index, &width, &height).empty()) << index;
        EXPECT_EQ(width, -7);
        EXPECT_EQ(height, -8);
        EXPECT_TRUE(traceReader.getTrace("fl1_raw", index).empty()) << index;
        EXPECT_TRUE(traceReader.getTrace("fl1_median_rf", index).empty()) << index;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(VQDReaderEventData, NoFramesWithoutTheirDatasetOrAnOpenFile)
{
    const std::string path = pathFor("columns.vqd");
    FixtureWriter(path).column<float>("deform", { 1, 2 });
    const std::string onlyImages = pathFor("images.vqd");
    FixtureWriter(onlyImages).imageStack("image", 2, 2, 3, std::vector<std::uint8_t>(12, 9));

    VQDReader reader;
    int width = -1;
    int height = -1;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(reader.getImage(0, &width, &height).empty());
    EXPECT_TRUE(reader.getTrace("fl1_raw", 0).empty());
    ASSERT_TRUE(reader.open(path));
    EXPECT_TRUE(reader.getImage(0, &width, &height).empty());
    EXPECT_TRUE(reader.getMask(0, &width, &height).empty());
    EXPECT_TRUE(reader.getTrace("fl1_raw", 0).empty());
    ASSERT_TRUE(reader.open(onlyImages));
    EXPECT_TRUE(reader.getMask(0, &width, &height).empty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(width, -1);
    EXPECT_EQ(height, -1);

    EXPECT_EQ(reader.getImage(1, &width, &height), std::vector<std::uint8_t>(6, 9));
    EXPECT_EQ(width, 3);
    EXPECT_EQ(height, 2);
}

TEST_F(VQDReaderEventData, UnreadableFramesAreReportedAndLeaveTheSizesAlone)
{
    // One frame per chunk, deflated; the chunk of event 1 is replaced by bytes that don't inflate.
    const std::string path = pathFor("broken.vqd");
    FixtureWriter(path)
        .imageStack("image", frames, rows, columns, stack(imagePixel), Storage::deflate(4, 1))
        .rawChunk("events/image", { 1, 0, 0 }, std::vector<char>(40, 'x'))
        .dataset("events/mask", H5::PredType::NATIVE_UINT8, H5::PredType::NATIVE_UINT8,
            { frames, rows * columns }, stack(maskPixel).data());

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    int width = -1;
    int height = -1;
    EXPECT_EQ(reader.getImage(0, &width, &height), frame(imagePixel, 0));
    width = height = -1;

    testing::internal::CaptureStderr();
    EXPECT_TRUE(reader.getImage(1, &width, &height).empty());
    std::string output = testing::internal::GetCapturedStderr();
    EXPECT_THAT(output, StartsWith("Error reading image at index 1: "));
    EXPECT_EQ(output.find('\n'), output.size() - 1) << output;

    // The mask is listed whatever its rank, but a stack of frames it isn't.
    testing::internal::CaptureStderr();
    EXPECT_TRUE(reader.getMask(2, &width, &height).empty());
    output = testing::internal::GetCapturedStderr();
    EXPECT_THAT(output, StartsWith("Error reading mask at index 2: "));
    EXPECT_EQ(output.find('\n'), output.size() - 1) << output;

    EXPECT_EQ(width, -1);
    EXPECT_EQ(height, -1);
    EXPECT_EQ(reader.getImage(2, &width, &height), frame(imagePixel, 2));
}

TEST_F(VQDReaderEventData, StoredTracesReadAsFloatWhateverTheirType)
{
    const std::string path = pathFor("types.vqd");
    const std::vector<std::int32_t> wide = { 100000, -7 };
    FixtureWriter(path)
        .column<float>("deform", { 0.1f, 0.2f })
        .trace<std::int16_t>("fl1_raw", { { -32768, 32767, 0 }, { -1, 1, 2 } })
        .trace<float>("fl2_raw", { { 0.5f, -1.25f, 3.0e6f }, { 1, 2, 3 } })
        .dataset("events/trace/fl3_raw", H5::PredType::STD_I32BE, H5::PredType::NATIVE_INT32, { 2, 1 },
            wide.data())
        .dataset("events/trace/fl4_raw", H5::PredType::IEEE_F64LE, H5::PredType::NATIVE_DOUBLE, { 1, 2 },
            std::vector<double> { 0.1, 1e300 }.data());

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    EXPECT_THAT(reader.getTrace("fl1_raw", 0), ElementsAre(-32768.0f, 32767.0f, 0.0f));
    EXPECT_THAT(reader.getTrace("fl1_raw", 1), ElementsAre(-1.0f, 1.0f, 2.0f));
    EXPECT_THAT(reader.getTrace("fl2_raw", 0), ElementsAre(0.5f, -1.25f, 3.0e6f));
    // Other types are converted by the library: a big-endian int32, and doubles rounded or, out of
    // range, made infinite.
    EXPECT_THAT(reader.getTrace("fl3_raw", 0), ElementsAre(100000.0f));
    EXPECT_THAT(reader.getTrace("fl3_raw", 1), ElementsAre(-7.0f));
    EXPECT_THAT(reader.getTrace("fl4_raw", 0), ElementsAre(0.1f, std::numeric_limits<float>::infinity()));
}

TEST_F(VQDReaderEventData, OnlyListedTracesAreReadAndUnknownNamesAreReported)
{
    const std::string path = pathFor("names.vqd");
    FixtureWriter(path)
        .column<float>("deform", { 0.1f })
        .trace<float>("fl1_raw_x", { { 1, 2 } })
        .trace<float>("foo", { { 3, 4 } });
    const std::string onlyFoo = pathFor("foo.vqd");
    FixtureWriter(onlyFoo).trace<float>("foo", { { 3, 4 } });

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    EXPECT_THAT(reader.getTrace("fl1_raw_x", 0), ElementsAre(1.0f, 2.0f));

    testing::internal::CaptureStderr();
    EXPECT_TRUE(reader.getTrace("fl9_raw", 0).empty());
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_THAT(output, StartsWith("Error reading trace 'fl9_raw' at index 0: "));
    EXPECT_EQ(output.find('\n'), output.size() - 1) << output;

    // A file whose only trace isn't one of the format has no traces to read at all.
    ASSERT_TRUE(reader.open(onlyFoo));
    ASSERT_FALSE(reader.hasTraces());
    testing::internal::CaptureStderr();
    EXPECT_TRUE(reader.getTrace("foo", 0).empty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(VQDReaderEventData, StoredTracesIgnoreTheFilterSettingsAndAliasesFollowThem)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeTraces("traces.vqd")));
    reader.addTraceAlias("fl1_median_rf", "fl1_raw");
    EXPECT_THAT(reader.traceNames(), ElementsAre("fl1_median_rf", "fl1_raw", "fl2_median"));
    reader.addTraceAlias("fl1_median_rf", "fl1_raw");
    EXPECT_EQ(reader.traceNames().size(), 3u);

    // Default settings.
    EXPECT_EQ(reader.getTrace("fl1_raw", 1), widened(rawTrace));
    EXPECT_THAT(reader.getTrace("fl1_median_rf", 1), Pointwise(FloatEq(), defaultFiltered));

    TraceProcessing strong;
    strong.median = true;
    strong.medianHalfWindow = 6;
    reader.setTraceProcessing(strong);
    EXPECT_EQ(reader.getTrace("fl1_raw", 1), widened(rawTrace));

    reader.setTraceProcessing(allOff);
    EXPECT_EQ(reader.getTrace("fl1_median_rf", 1), widened(rawTrace));
}

TEST_F(VQDReaderEventData, NewFilterSettingsAndOtherEventsAreComputedAnew)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeTraces("traces.vqd")));
    reader.addTraceAlias("fl1_median_rf", "fl1_raw");

    const std::vector<float> filtered = reader.getTrace("fl1_median_rf", 1);
    EXPECT_THAT(filtered, Pointwise(FloatEq(), defaultFiltered));
    // The same request again, then another event and back: each answer belongs to its event.
    EXPECT_EQ(reader.getTrace("fl1_median_rf", 1), filtered);
    EXPECT_THAT(
        reader.getTrace("fl1_median_rf", 0), Pointwise(FloatEq(), std::vector<float>(rawTrace.size(), 7.0f)));
    EXPECT_EQ(reader.getTrace("fl1_median_rf", 1), filtered);

    // The last trace, event 1, must not be served from before the change.
    reader.setTraceProcessing(false, 5, 3.0f, false, 11, 3.0f, false, 3, false, 3, false, 3);
    EXPECT_EQ(reader.getTrace("fl1_median_rf", 1), widened(rawTrace));
    EXPECT_EQ(reader.traceProcessing().hampel1, false);

    reader.setTraceProcessing(TraceProcessing {});
    EXPECT_THAT(reader.getTrace("fl1_median_rf", 1), Pointwise(FloatEq(), defaultFiltered));

    // Pointing the alias at another trace is a change of what it means as well.
    reader.setTraceProcessing(allOff);
    EXPECT_EQ(reader.getTrace("fl1_median_rf", 1), widened(rawTrace));
    reader.addTraceAlias("fl1_median_rf", "fl2_median");
    EXPECT_THAT(reader.getTrace("fl1_median_rf", 1), ElementsAre(3.0e6f, 1e-3f));
}

TEST_F(VQDReaderEventData, AliasesBelongToTheFileAndTheSettingsToTheReader)
{
    VQDReader reader;
    const std::string path = writeTraces("traces.vqd");
    ASSERT_TRUE(reader.open(path));
    reader.addTraceAlias("fl1_median_rf", "fl1_raw");
    reader.setTraceProcessing(allOff);
    ASSERT_EQ(reader.getTrace("fl1_median_rf", 2).size(), rawTrace.size());

    ASSERT_TRUE(reader.open(path));
    EXPECT_THAT(reader.traceNames(), ElementsAre("fl1_raw", "fl2_median"));
    // Without its alias the name is looked for in the file, where it isn't.
    testing::internal::CaptureStderr();
    EXPECT_TRUE(reader.getTrace("fl1_median_rf", 2).empty());
    EXPECT_THAT(testing::internal::GetCapturedStderr(), StartsWith("Error reading trace 'fl1_median_rf'"));
    EXPECT_EQ(reader.traceProcessing().hampel2, false);
}
