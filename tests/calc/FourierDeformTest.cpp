#include "calc/FourierDeform.h"

#include "calc/FLCompensation.h"
#include "calc/FLRefinement.h"
#include "io/IoTestBase.h"
#include "io/VQDReader.h"

#include <QCryptographicHash>
#include <QFile>
#include <QObject>
#include <cmath>

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr int width = 250;
constexpr int height = 80;

// A mask of 80 x 250 pixels; pixel (x, y) lies in the ellipse when
// (x - cx)² b² + (y - cy)² a² <= a² b², the same rule as in tests/reference/fourier_reference.py.
struct Mask
{
    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(width * height, 0);

    Mask& ellipse(long cx, long cy, long a, long b)
    {
        for (long y = 0; y < height; ++y)
            for (long x = 0; x < width; ++x)
                if ((x - cx) * (x - cx) * b * b + (y - cy) * (y - cy) * a * a <= a * a * b * b)
                    pixels[static_cast<std::size_t>(y * width + x)] = 255;
        return *this;
    }
    Mask& block(int x0, int y0, int w, int h)
    {
        for (int y = y0; y < y0 + h; ++y)
            for (int x = x0; x < x0 + w; ++x)
                pixels[static_cast<std::size_t>(y * width + x)] = 255;
        return *this;
    }
};

struct Deformations
{
    std::vector<double> odd, even, fc;
};

class FourierDeformTest : public IoTest
{
protected:
    std::string writeMasks(const std::vector<Mask>& masks)
    {
        const std::string path = pathFor("masks.vqd");
        std::vector<std::uint8_t> stack;
        for (const Mask& mask : masks)
            stack.insert(stack.end(), mask.pixels.begin(), mask.pixels.end());
        FixtureWriter(path)
            .column<double>("deform", std::vector<double>(masks.size(), 0.05))
            .imageStack("mask", masks.size(), height, width, stack)
            .close();
        return path;
    }

    Deformations computed(const std::vector<Mask>& masks)
    {
        VQDReader reader;
        EXPECT_TRUE(reader.open(writeMasks(masks)));
        FourierDeform fourier;
        EXPECT_TRUE(fourier.compute(&reader));
        return { reader.getFeature("deform_odd"), reader.getFeature("deform_even"),
            reader.getFeature("deform_fc") };
    }
};

std::vector<std::uint8_t> twice(const std::vector<std::uint8_t>& frame)
{
    std::vector<std::uint8_t> both(2 * frame.size());
    std::copy(frame.begin(), frame.end(), both.begin());
    std::copy(frame.begin(), frame.end(), both.begin() + static_cast<std::ptrdiff_t>(frame.size()));
    return both;
}

bool allNan(const std::vector<double>& values)
{
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isnan(v); });
}

QByteArray digest(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    file.open(QIODevice::ReadOnly);
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

} // namespace

TEST(FourierAnalysis, OutlineAgainstIndependentReference)
{
    // An egg-shaped outline; (30, 10), (40, 20) and (20, 4) lie inside and must not count. Reference
    // values from tests/reference/fourier_reference.py.
    const std::vector<cv::Point> egg = { { 0, 0 }, { 30, -8 }, { 55, -5 }, { 70, 10 }, { 60, 28 }, { 30, 32 },
        { 5, 20 }, { 30, 10 }, { 40, 20 }, { 20, 4 } };
    const FourierResult resampled = FourierDeform::analyzeContour(egg, 11, true);
    EXPECT_NEAR(resampled.deformOdd, 0.020870881995, 2e-6);
    EXPECT_NEAR(resampled.deformEven, 0.058062840714, 2e-6);
    EXPECT_NEAR(resampled.deformFc, 0.071147708200, 2e-6);

    const FourierResult weighted = FourierDeform::analyzeContour(egg, 11, false);
    EXPECT_NEAR(weighted.deformOdd, 0.020852594422, 2e-6);
    EXPECT_NEAR(weighted.deformEven, 0.058221480627, 2e-6);
    EXPECT_NEAR(weighted.deformFc, 0.071385350158, 2e-6);
}

TEST(FourierAnalysis, OutlinesWithoutCentroidGiveNan)
{
    const std::vector<std::vector<cv::Point>> cases = {
        { { 5, 5 }, { 5, 5 }, { 5, 5 } },
        { { 0, 0 }, { 1, 1 }, { 2, 2 }, { 3, 3 }, { 4, 4 } },
        {},
    };
    for (const auto& points : cases) {
        testing::internal::CaptureStderr();
        const FourierResult result = FourierDeform::analyzeContour(points, 11, true);
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("[FCA] ")) << points.size();
        EXPECT_TRUE(
            std::isnan(result.deformOdd) && std::isnan(result.deformEven) && std::isnan(result.deformFc));
    }
}

TEST_F(FourierDeformTest, EllipsesAndCircles)
{
    const Deformations d = computed({ Mask().ellipse(125, 40, 40, 20), Mask().ellipse(60, 40, 25, 25) });
    // The ellipse of semi-axes 40 and 20 pixels: its radius has even harmonics only, so the even and the
    // full rebuild agree with the reference drawn from the same pixels, and close to the exact
    // ellipse's 0.08285; the odd rebuild is the mean radius alone, a regular 100-gon.
    EXPECT_NEAR(d.even[0], 0.082909577999, 2e-6);
    EXPECT_NEAR(d.fc[0], 0.082909577999, 2e-6);
    EXPECT_NEAR(d.fc[0], 0.082849422937, 1e-3);
    EXPECT_NEAR(d.odd[0], 0.000164517764, 2e-6);
    // A circle comes close to 0 in all three.
    EXPECT_NEAR(d.odd[1], 0.0, 5e-4);
    EXPECT_NEAR(d.even[1], 0.0, 5e-4);
    EXPECT_NEAR(d.fc[1], 0.0, 5e-4);
}

TEST_F(FourierDeformTest, TheLargestBlobCounts)
{
    // Event 0 holds the ellipse beside a circle of a smaller area; event 1 the ellipse alone.
    const Deformations d = computed(
        { Mask().ellipse(60, 40, 40, 20).ellipse(190, 40, 15, 15), Mask().ellipse(60, 40, 40, 20) });
    EXPECT_EQ(d.odd[0], d.odd[1]);
    EXPECT_EQ(d.even[0], d.even[1]);
    EXPECT_EQ(d.fc[0], d.fc[1]);
}

TEST_F(FourierDeformTest, EventsWithoutUsableOutlineStayNan)
{
    // A 2 x 2 block has a boundary of 4 points, a line no area, and an empty mask no outline at all.
    const Deformations d = computed(
        { Mask().block(10, 10, 2, 2), Mask().block(10, 10, 30, 1), Mask(), Mask().ellipse(125, 40, 30, 20) });
    for (std::size_t e = 0; e < 3; ++e) {
        EXPECT_TRUE(std::isnan(d.odd[e]) && std::isnan(d.even[e]) && std::isnan(d.fc[e])) << e;
    }
    EXPECT_TRUE(std::isfinite(d.odd[3]) && std::isfinite(d.even[3]) && std::isfinite(d.fc[3]));
}

TEST_F(FourierDeformTest, AllMasksEmpty)
{
    const Deformations d = computed(std::vector<Mask>(3));
    EXPECT_EQ(d.odd.size(), 3u);
    EXPECT_TRUE(allNan(d.odd) && allNan(d.even) && allNan(d.fc));
}

TEST_F(FourierDeformTest, NoMasksNoFeatures)
{
    FourierDeform fourier;
    EXPECT_FALSE(fourier.compute(nullptr));
    const std::string path = pathFor("plain.vqd");
    FixtureWriter(path)
        .column<double>("deform", { 0.1 })
        .imageStack("image", 1, 4, 4, std::vector<std::uint8_t>(16, 9))
        .close();
    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    EXPECT_FALSE(fourier.compute(&reader));
    EXPECT_FALSE(reader.hasFeature("deform_fc"));
}

TEST_F(FourierDeformTest, ProgressEveryHundredEvents)
{
    VQDReader reader;
    ASSERT_TRUE(reader.open(writeMasks(std::vector<Mask>(250))));
    FourierDeform fourier;
    std::vector<int> progress;
    QObject::connect(
        &fourier, &FourierDeform::progressChanged, [&](int percent) { progress.push_back(percent); });
    ASSERT_TRUE(fourier.compute(&reader));
    EXPECT_THAT(progress, ElementsAre(0, 40, 80, 100));
}

TEST_F(FourierDeformTest, CalculationsLeaveTheFileAsItWas)
{
    const std::string path = pathFor("cells.vqd");
    Mask mask;
    mask.ellipse(125, 40, 30, 20);
    FixtureWriter(path)
        .column<double>("fl1_max", { 900, 800 })
        .column<double>("fl1_pos", { 80, 81 })
        .column<double>("fl2_max", { 100, 50 })
        .column<double>("fl2_pos", { 80, 81 })
        .column<double>("pos_x", { 30, 40 })
        .column<double>("size_x", { 8, 9 })
        .imageStack("mask", 2, height, width, twice(mask.pixels))
        .trace<std::int16_t>(
            "fl1_raw", std::vector<std::vector<std::int16_t>>(2, std::vector<std::int16_t>(160, 7)))
        .close();
    const QByteArray before = digest(path);
    {
        VQDReader reader;
        ASSERT_TRUE(reader.open(path));
        FourierDeform fourier;
        FLRefinement refinement;
        FLCompensation compensation;
        EXPECT_TRUE(fourier.compute(&reader));
        EXPECT_TRUE(refinement.refine(&reader, reader.readMetadata(), FLRefinementParams {}));
        EXPECT_TRUE(compensation.compensate(&reader, { 1, 2 }, { { 1, 0.1 }, { 0.1, 1 } }));
        EXPECT_TRUE(reader.hasFeature("deform_fc") && reader.hasFeature("fl1_max_rf")
            && reader.hasFeature("fl2_max_ctc"));
    }
    EXPECT_EQ(digest(path), before);
}
