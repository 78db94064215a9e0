#include "io/AviWriter.h"

#include "IoTestBase.h"
#include "io/VQDReader.h"

#include <cmath>
#include <limits>
#include <opencv2/videoio.hpp>

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::ElementsAre;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

class AviWriterTest : public IoTest
{
protected:
    // Five events of 16 x 24 frames, uniform grey 40 e + 20; events 1 and 2 share camera frame 3.
    std::string writeSource(bool withFrameColumn = true)
    {
        std::vector<std::uint8_t> pixels;
        for (int e = 0; e < 5; ++e)
            pixels.insert(pixels.end(), 16 * 24, static_cast<std::uint8_t>(40 * e + 20));
        const std::string path = pathFor("source.vqd");
        FixtureWriter writer(path);
        writer.column<double>("deform", { 0.1, 0.2, 0.3, 0.4, 0.5 }).imageStack("image", 5, 16, 24, pixels);
        if (withFrameColumn)
            writer.column<double>("frame", { 1, 3.2, 3.9, 4, 5 });
        writer.close();
        return path;
    }

    // Frames of the video and the grey level of each, from the video library's own reader.
    static std::vector<int> greyLevels(const std::string& path, cv::Size* size = nullptr)
    {
        cv::VideoCapture capture(path);
        std::vector<int> levels;
        cv::Mat frame;
        while (capture.read(frame)) {
            levels.push_back(static_cast<int>(std::lround(cv::mean(frame)[0])));
            if (size)
                *size = frame.size();
        }
        return levels;
    }
};

} // namespace

TEST(AviFrameSelection, TheFirstEventOfEachTruncatedFrameNumberIsKept)
{
    struct Case
    {
        std::vector<std::int32_t> events;
        std::vector<double> frames;
        std::vector<bool> kept;
    };
    const Case cases[] = {
        // 3.2 and 3.9 both truncate to 3: the later one goes.
        { { 0, 1, 2, 3 }, { 1, 3.2, 3.9, 4 }, { true, true, false, true } },
        // The order of the event list decides which one is first.
        { { 2, 1, 0 }, { 1, 3.2, 3.9 }, { true, false, true } },
        // NaN frames are never duplicates; nor are events beyond the column.
        { { 0, 1, 2, 3 }, { notANumber, notANumber, 2 }, { true, true, true, true } },
        // Without a frame column nothing is skipped.
        { { 0, 1 }, {}, { true, true } },
        // Negative numbers truncate towards zero: -0.5 and 0.5 share frame 0.
        { { 0, 1 }, { -0.5, 0.5 }, { true, false } },
    };
    for (const Case& c : cases)
        EXPECT_EQ(firstEventOfFrame(c.events, c.frames), c.kept);
}

TEST_F(AviWriterTest, EveryEventBecomesAFrameInEitherCodec)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeSource()));
    for (const bool mjpeg : { true, false }) {
        const std::string path = pathFor(mjpeg ? "mjpeg.avi" : "raw.avi");
        AviExport video;
        video.events = { 4, 0, 2 };
        video.mjpeg = mjpeg;
        ASSERT_EQ(writeAvi(path, reader, video), AviResult::Written) << mjpeg;
        cv::Size size;
        const std::vector<int> levels = greyLevels(path, &size);
        ASSERT_EQ(levels.size(), 3u) << mjpeg;
        EXPECT_EQ(size, cv::Size(24, 16));
        // Colour conversion and compression move a level by a few steps; events are 80 apart.
        EXPECT_NEAR(levels[0], 180, 8);
        EXPECT_NEAR(levels[1], 20, 8);
        EXPECT_NEAR(levels[2], 100, 8);
    }
}

TEST_F(AviWriterTest, DuplicatesAreSkippedAndTheAverageComesFirstForReanalysis)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeSource()));
    AviExport video;
    video.events = { 0, 1, 2, 3, 4 };
    video.skipDuplicates = true;
    ASSERT_EQ(writeAvi(pathFor("skip.avi"), reader, video), AviResult::Written);
    EXPECT_EQ(greyLevels(pathFor("skip.avi")).size(), 4u);

    video.skipDuplicates = false;
    video.reanalysis = true;
    video.events = { 0, 4 };
    ASSERT_EQ(writeAvi(pathFor("average.avi"), reader, video), AviResult::Written);
    const std::vector<int> levels = greyLevels(pathFor("average.avi"));
    ASSERT_EQ(levels.size(), 102u);
    // The average of 20 and 180.
    EXPECT_NEAR(levels[0], 100, 8);
    EXPECT_NEAR(levels[99], 100, 8);
    EXPECT_NEAR(levels[100], 20, 8);
}

TEST_F(AviWriterTest, MissingImagesEventsOrDimensionsAreToldApart)
{
    const std::string plain = pathFor("plain.vqd");
    FixtureWriter(plain).column<double>("deform", { 0.1 }).close();
    VQDReader noImages;
    ASSERT_TRUE(noImages.open(plain));
    AviExport video;
    video.events = { 0 };
    EXPECT_EQ(writeAvi(pathFor("a.avi"), noImages, video), AviResult::NoImages);

    VQDReader reader;
    ASSERT_TRUE(reader.open(writeSource()));
    video.events = {};
    EXPECT_EQ(writeAvi(pathFor("b.avi"), reader, video), AviResult::NoEvents);
    video.events = { 9 }; // beyond the stack: no first image
    EXPECT_EQ(writeAvi(pathFor("c.avi"), reader, video), AviResult::NoDimensions);
    video.events = { 0 };
    EXPECT_EQ(writeAvi(pathFor("missing-folder/d.avi"), reader, video), AviResult::CannotCreate);
}
