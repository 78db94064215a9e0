#include "IoTestBase.h"
#include "io/VQDReader.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::StartsWith;

namespace {

class VQDReaderColumns : public IoTest
{
protected:
    // Opens a file holding one column written by `write`, returns its values as the reader gives them.
    template <typename Write> std::vector<double> readBack(Write write, const std::string& name = "x")
    {
        const std::string path = pathFor(name + ".vqd");
        {
            FixtureWriter writer(path);
            write(writer);
        }
        VQDReader reader;
        if (!reader.open(path))
            return { -12345.0 };
        return reader.getFeature(name);
    }
};

constexpr double quietNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

} // namespace

TEST_F(VQDReaderColumns, FloatColumnsKeepNaNAndInfinities)
{
    const std::vector<double> single = readBack([](FixtureWriter& w) {
        w.column<float>("x",
            { 1.5f, static_cast<float>(quietNaN), static_cast<float>(infinity), -static_cast<float>(infinity),
                0.1f });
    });
    ASSERT_EQ(single.size(), 5u);
    EXPECT_EQ(single[0], 1.5);
    EXPECT_TRUE(std::isnan(single[1]));
    EXPECT_EQ(single[2], infinity);
    EXPECT_EQ(single[3], -infinity);
    EXPECT_EQ(single[4], static_cast<double>(0.1f));

    const std::vector<double> full = readBack([](FixtureWriter& w) {
        w.column<double>("x", { 0.1, 1e300, quietNaN, -infinity });
    });
    ASSERT_EQ(full.size(), 4u);
    EXPECT_EQ(full[0], 0.1);
    EXPECT_EQ(full[1], 1e300);
    EXPECT_TRUE(std::isnan(full[2]));
    EXPECT_EQ(full[3], -infinity);
}

TEST_F(VQDReaderColumns, IntegerColumnsOfOneTwoAndFourBytesFollowTheirSign)
{
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.column<std::uint8_t>("x", { 0, 200, 255 });
    }),
        ElementsAre(0.0, 200.0, 255.0));
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.column<std::int8_t>("x", { -128, -1, 127 });
    }),
        ElementsAre(-128.0, -1.0, 127.0));
    // The same 16 bits: all ones.
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.column<std::uint16_t>("x", { 65535, 1 });
    }),
        ElementsAre(65535.0, 1.0));
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.column<std::int16_t>("x", { -1, -32768 });
    }),
        ElementsAre(-1.0, -32768.0));
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.column<std::uint32_t>("x", { 4294967295u, 3 });
    }),
        ElementsAre(4294967295.0, 3.0));
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.column<std::int32_t>("x", { -2147483647 - 1, 2147483647 });
    }),
        ElementsAre(-2147483648.0, 2147483647.0));
}

TEST_F(VQDReaderColumns, EightByteIntegersAreSignedSoLargeUnsignedValuesWrap)
{
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.column<std::int64_t>("x", { -5, std::int64_t(1) << 53, std::numeric_limits<std::int64_t>::min() });
    }),
        ElementsAre(-5.0, 9007199254740992.0, -9223372036854775808.0));
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.column<std::uint64_t>(
            "x", { 7, std::numeric_limits<std::uint64_t>::max(), std::uint64_t(1) << 63 });
    }),
        ElementsAre(7.0, -1.0, -9223372036854775808.0));
}

TEST_F(VQDReaderColumns, IntegersOfOtherSizesAndOtherClassesGiveZerosOfTheRightLength)
{
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.integerColumn("x", { 1, -2, 3 }, 3, true);
    }),
        ElementsAre(0.0, 0.0, 0.0));
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.integerColumn("x", { 1, 2 }, 5, false);
    }),
        ElementsAre(0.0, 0.0));

    const std::vector<double> text = readBack([](FixtureWriter& w) {
        const H5::StrType type(H5::PredType::C_S1, 4);
        const char values[] = "0001"
                              "0002";
        w.dataset("events/x", type, type, { 2 }, values);
    });
    EXPECT_THAT(text, ElementsAre(0.0, 0.0));
}

TEST_F(VQDReaderColumns, EnumerationColumnsReadAsSignedBytes)
{
    EXPECT_THAT(readBack([](FixtureWriter& w) {
        w.boolColumn("x", { false, true, true, false });
    }),
        ElementsAre(0.0, 1.0, 1.0, 0.0));
}

TEST_F(VQDReaderColumns, CompressedColumnsReadLikePlainOnes)
{
    // Several chunks, the last one partly filled.
    std::vector<float> values(250001);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<float>(std::sin(i * 0.001) * 100.0);
    const std::vector<double> expected(values.begin(), values.end());

    EXPECT_THAT(readBack([&](FixtureWriter& w) { w.column("x", values, Storage::deflate(4, 100000)); }),
        ElementsAreArray(expected));
    EXPECT_THAT(readBack([&](FixtureWriter& w) { w.column("x", values, Storage::zstd(3, 100000)); }),
        ElementsAreArray(expected));
    EXPECT_THAT(readBack([&](FixtureWriter& w) { w.column("x", values, Storage::chunked(7000)); }),
        ElementsAreArray(expected));
}

TEST_F(VQDReaderColumns, NothingToGiveIsOneSharedEmptyVectorAndSilent)
{
    const std::string path = pathFor("one.vqd");
    FixtureWriter(path).column<float>("deform", { 1, 2 }).column<float>("empty", {});

    VQDReader reader;
    VQDReader closed;
    ASSERT_TRUE(reader.open(path));
    testing::internal::CaptureStderr();
    const std::vector<double>& missing = reader.getFeature("nope");
    EXPECT_TRUE(missing.empty());
    EXPECT_EQ(&reader.getFeature("nope"), &missing);
    EXPECT_EQ(&reader.getFeature("other"), &missing);
    EXPECT_EQ(&closed.getFeature("deform"), &missing);
    EXPECT_EQ(&reader.getFeature("events/deform"), &missing);
    EXPECT_EQ(&reader.getFeature(""), &missing);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(reader.getFeature("empty").empty());
}

TEST_F(VQDReaderColumns, UnreadableColumnIsRetriedButReportedOnce)
{
    const std::string path = pathFor("broken.vqd");
    {
        FixtureWriter writer(path);
        writer.column<float>("deform", { 1, 2, 3, 4 });
        writer.dataset("events/broken", H5::PredType::NATIVE_FLOAT, H5::PredType::NATIVE_FLOAT, { 4 },
            nullptr, Storage::deflate(4, 4));
        writer.rawChunk("events/broken", { 0 }, { 'n', 'o', 't', ' ', 'z', 'l', 'i', 'b' });
    }

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    testing::internal::CaptureStderr();
    const std::vector<double>* first = &reader.getFeature("broken");
    const std::vector<double>* second = &reader.getFeature("broken");
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_EQ(first, &reader.getFeature("nope"));
    EXPECT_EQ(second, first);
    // Tried twice, since the failure is not cached, but the same failure is reported once.
    EXPECT_THAT(output, StartsWith("Error reading feature 'broken': "));
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1);
    EXPECT_EQ("Error reading feature 'broken': " + reader.featureError("broken") + "\n", output);
    EXPECT_EQ(reader.featureError("deform"), "");
    EXPECT_THAT(reader.getFeature("deform"), ElementsAre(1.0, 2.0, 3.0, 4.0));
}

TEST_F(VQDReaderColumns, SetFeatureAddsComputedColumnsAndReplacesStoredOnes)
{
    const std::string path = pathFor("computed.vqd");
    FixtureWriter(path).column<float>("deform", { 1, 2, 3 }).column<float>("area_um", { 4, 5, 6 });

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    ASSERT_THAT(reader.featureNames(), ElementsAre("area_um", "deform"));
    EXPECT_FALSE(reader.isComputedFeature("deform"));

    std::vector<double> modulus { 0.5, 1.5, 2.5 };
    reader.setFeature("emodulus", std::move(modulus));
    EXPECT_TRUE(modulus.empty());
    std::vector<double> ratio { 9.0 };
    reader.setFeature("aspect", std::move(ratio));
    EXPECT_THAT(reader.featureNames(), ElementsAre("area_um", "aspect", "deform", "emodulus"));
    EXPECT_TRUE(reader.hasFeature("emodulus"));
    EXPECT_TRUE(reader.isComputedFeature("emodulus"));
    EXPECT_THAT(reader.getFeature("emodulus"), ElementsAre(0.5, 1.5, 2.5));
    EXPECT_EQ(reader.eventCount(), 3u);

    // Replacing a stored column and a computed one keeps one entry per name.
    reader.getFeature("deform");
    reader.setFeature("deform", { 7.0, 8.0, 9.0 });
    reader.setFeature("emodulus", { 3.0 });
    EXPECT_THAT(reader.featureNames(), ElementsAre("area_um", "aspect", "deform", "emodulus"));
    EXPECT_THAT(reader.getFeature("deform"), ElementsAre(7.0, 8.0, 9.0));
    EXPECT_THAT(reader.getFeature("emodulus"), ElementsAre(3.0));
    EXPECT_TRUE(reader.isComputedFeature("deform"));
    EXPECT_FALSE(reader.isComputedFeature("area_um"));
}

TEST_F(VQDReaderColumns, CacheAllFeaturesReadsEveryScalarColumnIntoMemory)
{
    // Large enough to be read from the disk directly rather than through the library's small buffers.
    const std::size_t n = 40000;
    std::vector<double> deform(n), area(n), contour(n);
    std::vector<std::int16_t> frame(n);
    for (std::size_t i = 0; i < n; ++i) {
        deform[i] = 0.001 * i;
        area[i] = 10.0 + i;
        contour[i] = 3.0 + i;
        frame[i] = static_cast<std::int16_t>(i % 1000);
    }
    const std::string path = pathFor("cache.vqd");
    FixtureWriter(path)
        .column("deform", deform)
        .column("area_um", area)
        .column("frame", frame)
        .column("contour", contour)
        .imageStack("image", 2, 2, 2, std::vector<std::uint8_t>(8, 1));

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    reader.cacheAllFeatures();

    // With the file emptied on disk only what is in memory still reads right.
    std::filesystem::resize_file(path, 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(reader.getFeature("deform"), deform);
    EXPECT_EQ(reader.getFeature("area_um"), area);
    EXPECT_EQ(reader.getFeature("frame"), std::vector<double>(frame.begin(), frame.end()));
    // contour is no scalar feature and must not have been read.
    EXPECT_NE(reader.getFeature("contour"), contour);
    testing::internal::GetCapturedStderr();
}
