#include "IoTestBase.h"
#include "io/VQDReader.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <fstream>

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

class VQDReaderLayout : public IoTest
{
};

QByteArray fileHash(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

// One line: the prefix, a detail from the library, the end of line.
void expectOneLine(const std::string& output, const std::string& prefix)
{
    EXPECT_THAT(output, StartsWith(prefix));
    EXPECT_GT(output.size(), prefix.size() + 1) << "no detail behind the prefix";
    EXPECT_EQ(output.find('\n'), output.size() - 1) << output;
}

} // namespace

TEST_F(VQDReaderLayout, MissingAndNonHdf5FilesFailToOpenWithOneLineAndNoException)
{
    const std::string garbage = pathFor("garbage.vqd");
    std::ofstream(garbage) << "this is not an HDF5 file\n";
    const std::string empty = pathFor("empty.vqd");
    std::ofstream(empty).close();
    const std::string folder = pathFor("folder.vqd");
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(folder)));

    for (const std::string& path : { pathFor("missing.vqd"), garbage, empty, folder }) {
        VQDReader reader;
        testing::internal::CaptureStderr();
        EXPECT_FALSE(reader.open(path)) << path;
        expectOneLine(testing::internal::GetCapturedStderr(), "Error opening file: ");
        EXPECT_FALSE(reader.isOpen());
        EXPECT_EQ(reader.eventCount(), 0u);
        EXPECT_TRUE(reader.featureNames().empty());
        EXPECT_TRUE(reader.getFeature("deform").empty());
        EXPECT_TRUE(reader.readMetadata().allAttributes.empty());
    }
}

TEST_F(VQDReaderLayout, FileWithoutEventsOpensEmptyAndIsNoInstrumentData)
{
    const std::string path = pathFor("bare.vqd");
    FixtureWriter(path).stringAttribute("experiment:sample", "water");

    VQDReader reader;
    testing::internal::CaptureStderr();
    ASSERT_TRUE(reader.open(path));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(reader.isOpen());
    EXPECT_EQ(reader.path(), path);
    EXPECT_TRUE(reader.featureNames().empty());
    EXPECT_EQ(reader.eventCount(), 0u);
    EXPECT_FALSE(reader.hasImage());
    EXPECT_FALSE(reader.hasMask());
    EXPECT_FALSE(reader.hasTraces());
    EXPECT_EQ(reader.readMetadata().experiment.at("sample"), "water");
    EXPECT_FALSE(reader.isInstrumentData());
}

TEST_F(VQDReaderLayout, ListsRankOneDatasetsAndImageMaskButNoGroupsOrOtherRanks)
{
    const std::string path = pathFor("layout.vqd");
    {
        FixtureWriter writer(path);
        writer.column<float>("deform", { 0.1f, 0.2f })
            .column<double>("area_um", { 10.0, 20.0 })
            .imageStack("image", 2, 3, 4, std::vector<std::uint8_t>(24, 7))
            .imageStack("mask", 2, 3, 4, std::vector<std::uint8_t>(24, 1))
            .imageStack("images", 2, 3, 4, std::vector<std::uint8_t>(24, 1))
            .group("events/contour")
            .trace<std::int16_t>("fl1_raw", { { 1, 2 }, { 3, 4 } });
        const std::vector<float> matrix(6, 1.0f);
        writer.dataset(
            "events/matrix", H5::PredType::NATIVE_FLOAT, H5::PredType::NATIVE_FLOAT, { 3, 2 }, matrix.data());
        const float scalar = 1.0f;
        writer.dataset("events/scalar", H5::PredType::NATIVE_FLOAT, H5::PredType::NATIVE_FLOAT, {}, &scalar);
    }

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    EXPECT_THAT(reader.featureNames(), ElementsAre("area_um", "deform", "image", "mask"));
    EXPECT_TRUE(reader.hasImage());
    EXPECT_TRUE(reader.hasMask());
    EXPECT_TRUE(reader.hasFeature("deform"));
    for (const char* skipped : { "contour", "trace", "matrix", "scalar", "images" })
        EXPECT_FALSE(reader.hasFeature(skipped)) << skipped;
    EXPECT_EQ(reader.eventCount(), 2u);
}

TEST_F(VQDReaderLayout, EventCountIsTheLengthOfTheFirstFeatureInBytewiseNameOrder)
{
    const std::string path = pathFor("unequal.vqd");
    FixtureWriter(path)
        .column<float>("b", { 1, 2, 3, 4, 5 })
        .column<float>("a", { 1, 2, 3 })
        .column<float>("Z", { 1, 2, 3, 4, 5, 6, 7 });

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    // Upper case sorts before lower case bytewise.
    EXPECT_THAT(reader.featureNames(), ElementsAre("Z", "a", "b"));
    EXPECT_EQ(reader.eventCount(), 7u);
    // Every column keeps its own length.
    EXPECT_EQ(reader.getFeature("a").size(), 3u);
    EXPECT_EQ(reader.getFeature("b").size(), 5u);
}

TEST_F(VQDReaderLayout, TracesAreDatasetsWhoseNameHoldsMedianOrRaw)
{
    const std::string path = pathFor("traces.vqd");
    FixtureWriter(path)
        .column<float>("deform", { 1, 2 })
        // First in the walk but not a trace: its length must not become the trace length.
        .trace<float>("aaa", { std::vector<float>(9), std::vector<float>(9) })
        .trace<std::int16_t>("fl2_raw", { std::vector<std::int16_t>(4), std::vector<std::int16_t>(4) })
        .trace<float>("fl1_median", { std::vector<float>(4), std::vector<float>(4) })
        .trace<float>("fl1_raw_x", { std::vector<float>(4), std::vector<float>(4) })
        .trace<float>("foo", { std::vector<float>(5), std::vector<float>(5) })
        .group("events/trace/group_raw");

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    EXPECT_TRUE(reader.hasTraces());
    EXPECT_THAT(reader.traceNames(), ElementsAre("fl1_median", "fl1_raw_x", "fl2_raw"));
    EXPECT_EQ(reader.traceLength(), 4u);
}

TEST_F(VQDReaderLayout, AnUnacceptedTraceAloneMeansNoTraces)
{
    const std::string path = pathFor("foo.vqd");
    FixtureWriter(path).trace<float>("foo", { { 1, 2, 3 } });

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    EXPECT_FALSE(reader.hasTraces());
    EXPECT_TRUE(reader.traceNames().empty());
    EXPECT_EQ(reader.traceLength(), 0u);
}

TEST_F(VQDReaderLayout, CloseAndReopenForgetEverythingOfTheFileBefore)
{
    const std::string first = pathFor("first.vqd");
    const std::string second = pathFor("second.vqd");
    FixtureWriter(first)
        .column<float>("deform", { 1, 2, 3 })
        .imageStack("image", 3, 1, 1, { 1, 2, 3 })
        .trace<float>("fl1_raw", { { 1, 2 }, { 3, 4 }, { 5, 6 } })
        .stringAttribute("setup:module composition", "Vortiq");
    FixtureWriter(second).column<float>("area_um", { 5 });

    VQDReader reader;
    ASSERT_TRUE(reader.open(first));
    reader.readMetadata();
    reader.setFeature("computed", { 1.0, 2.0, 3.0 });
    ASSERT_TRUE(reader.isInstrumentData());
    ASSERT_EQ(reader.getFeature("deform").size(), 3u);

    ASSERT_TRUE(reader.open(second));
    EXPECT_EQ(reader.path(), second);
    EXPECT_THAT(reader.featureNames(), ElementsAre("area_um"));
    EXPECT_EQ(reader.eventCount(), 1u);
    EXPECT_FALSE(reader.hasFeature("computed"));
    EXPECT_FALSE(reader.isComputedFeature("computed"));
    EXPECT_TRUE(reader.getFeature("deform").empty());
    EXPECT_FALSE(reader.isInstrumentData());
    EXPECT_FALSE(reader.hasImage());
    EXPECT_FALSE(reader.hasTraces());

    reader.close();
    EXPECT_FALSE(reader.isOpen());
    EXPECT_EQ(reader.path(), "");
    EXPECT_EQ(reader.eventCount(), 0u);
    EXPECT_EQ(reader.traceLength(), 0u);
    EXPECT_TRUE(reader.featureNames().empty());
    EXPECT_FALSE(reader.hasFeature("area_um"));
    EXPECT_TRUE(reader.getFeature("area_um").empty());
    EXPECT_TRUE(reader.readMetadata().allAttributes.empty());
}

TEST_F(VQDReaderLayout, ReadingLeavesTheFileUntouchedAndOpenForNoWriter)
{
    const std::string path = pathFor("untouched.vqd");
    FixtureWriter(path)
        .column<float>("deform", { 1, 2, 3 })
        .column<float>("area_um", { 4, 5, 6 }, Storage::deflate())
        .imageStack("image", 3, 2, 2, std::vector<std::uint8_t>(12, 5), Storage::deflate(4, 1))
        .trace<std::int16_t>("fl1_raw", { { 1, 2 }, { 3, 4 }, { 5, 6 } })
        .stringAttribute("setup:module composition", "Vortiq")
        .pointsAttribute("online_filter:area_um,deform polygon points", { { 1, 2 }, { 3, 4 }, { 5, 6 } });
    const QByteArray hashBefore = fileHash(path);
    const QDateTime modifiedBefore = QFileInfo(QString::fromStdString(path)).lastModified();
    ASSERT_FALSE(hashBefore.isEmpty());

    {
        VQDReader reader;
        ASSERT_TRUE(reader.open(path));
        // The library lets a file be opened for writing in the same process only if every other
        // handle on it may write as well.
        hid_t writer = -1;
        H5E_BEGIN_TRY
        {
            writer = H5Fopen(path.c_str(), H5F_ACC_RDWR, H5P_DEFAULT);
        }
        H5E_END_TRY;
        EXPECT_LT(writer, 0) << "the reader holds the file open for writing";
        if (writer >= 0)
            H5Fclose(writer);

        reader.readMetadata();
        reader.cacheAllFeatures();
        reader.setFeature("computed", { 1, 2, 3 });
        reader.setFeature("deform", { 7, 8, 9 });
        int width = 0;
        int height = 0;
        EXPECT_EQ(reader.getImage(2, &width, &height).size(), 4u);
        reader.addTraceAlias("fl1_median_rf", "fl1_raw");
        reader.setTraceProcessing(TraceProcessing {});
        EXPECT_EQ(reader.getTrace("fl1_median_rf", 1).size(), 2u);
    }

    EXPECT_EQ(fileHash(path), hashBefore);
    EXPECT_EQ(QFileInfo(QString::fromStdString(path)).lastModified(), modifiedBefore);
}
