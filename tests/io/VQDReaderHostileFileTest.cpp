#include "IoTestBase.h"
#include "io/ReadLimits.h"
#include "io/VQDReader.h"

#include <cstdint>
#include <random>

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class VQDReaderHostileFile : public IoTest
{
protected:
    void TearDown() override { setReadMemoryLimit(0); }
};

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

// Runs `read` with the standard error stream captured and gives its lines.
template <typename Read> std::vector<std::string> errorLinesOf(Read read)
{
    testing::internal::CaptureStderr();
    read();
    return linesOf(testing::internal::GetCapturedStderr());
}

const H5::PredType& doubles = H5::PredType::NATIVE_DOUBLE;
const H5::PredType& floats = H5::PredType::NATIVE_FLOAT;
const H5::PredType& bytes = H5::PredType::NATIVE_UINT8;

} // namespace

// A virtual dataset that maps to itself sends the library into endless recursion when it is read
// (its extent alone is harmless); external storage reads whatever files the dataset names.
TEST_F(VQDReaderHostileFile, VirtualAndExternallyStoredDatasetsAreNeitherListedNorRead)
{
    const std::string path = pathFor("virtual.vqd");
    const std::string rawFile = pathFor("raw.bin");
    const std::vector<double> values { 1, 2, 3 };
    const std::vector<float> samples(6, 1.0f);
    FixtureWriter(path)
        .column<double>("area_um", values)
        .virtualDataset("events/deform", doubles, { 3 }, ".", "/events/deform")
        .virtualDataset("events/copy", doubles, { 3 }, ".", "/events/area_um")
        .externalDataset("events/brightness", doubles, doubles, { 3 }, rawFile, values.data())
        .virtualDataset("events/image", bytes, { 3, 2, 2 }, ".", "/events/image")
        .virtualDataset("events/trace/fl1_raw", floats, { 3, 2 }, ".", "/events/trace/fl1_raw")
        .externalDataset("events/trace/fl2_raw", floats, floats, { 3, 2 }, rawFile + "2", samples.data())
        .trace<float>("fl3_raw", { { 1, 2 }, { 3, 4 }, { 5, 6 } });

    VQDReader reader;
    const std::vector<std::string> listing = errorLinesOf([&] { ASSERT_TRUE(reader.open(path)); });
    EXPECT_THAT(listing,
        testing::UnorderedElementsAre("Skipping '/events/deform': virtual datasets are not read",
            "Skipping '/events/copy': virtual datasets are not read",
            "Skipping '/events/brightness': datasets with external storage are not read",
            "Skipping '/events/image': virtual datasets are not read",
            "Skipping '/events/trace/fl1_raw': virtual datasets are not read",
            "Skipping '/events/trace/fl2_raw': datasets with external storage are not read"));
    EXPECT_THAT(reader.featureNames(), ElementsAre("area_um"));
    EXPECT_EQ(reader.eventCount(), 3u);
    EXPECT_FALSE(reader.hasImage());
    EXPECT_THAT(reader.traceNames(), ElementsAre("fl3_raw"));

    // Asked for by name all the same, they give the neutral result with one line each.
    EXPECT_THAT(errorLinesOf([&] { EXPECT_TRUE(reader.getFeature("deform").empty()); }),
        ElementsAre("Error reading feature 'deform': virtual datasets are not read"));
    EXPECT_THAT(errorLinesOf([&] { EXPECT_TRUE(reader.getFeature("brightness").empty()); }),
        ElementsAre("Error reading feature 'brightness': datasets with external storage are not read"));
    EXPECT_THAT(errorLinesOf([&] { EXPECT_TRUE(reader.getTrace("fl1_raw", 0).empty()); }),
        ElementsAre("Error reading trace 'fl1_raw' at index 0: virtual datasets are not read"));
    reader.addTraceAlias("fl2_filtered", "fl2_raw");
    EXPECT_THAT(errorLinesOf([&] { EXPECT_TRUE(reader.getTrace("fl2_filtered", 1).empty()); }),
        ElementsAre("Error reading trace 'fl2_raw' at index 1: datasets with external storage are not read"));

    // The rest of the file reads as usual.
    EXPECT_EQ(reader.getFeature("area_um"), values);
    EXPECT_EQ(reader.getTrace("fl3_raw", 2), (std::vector<float> { 5, 6 }));
    reader.cacheAllFeatures();
    EXPECT_EQ(reader.readMetadata().allAttributes.size(), 0u);
}

TEST_F(VQDReaderHostileFile, LinksThatLeadNowhereOrToGroupsAreSkippedAndTheRestLists)
{
    const std::string path = pathFor("links.vqd");
    const std::string other = pathFor("other.vqd");
    FixtureWriter(other).column<float>("remote", { 7, 8 }).trace<float>("fl9_raw", { { 1 }, { 2 } });
    FixtureWriter(path)
        .column<float>("c_late", { 1, 2, 3 })
        .column<float>("a_first", { 1, 2 })
        .group("events/contour")
        .softLink("events/b_broken", "/nowhere")
        .softLink("events/b_group", "/events/contour")
        .softLink("events/b_loop1", "/events/b_loop2")
        .softLink("events/b_loop2", "/events/b_loop1")
        .externalLink("events/b_missing_file", pathFor("missing.vqd"), "/events/remote")
        .externalLink("events/b_missing_target", other, "/events/nothing")
        .externalLink("events/b_remote_group", other, "/events")
        .externalLink("events/d_remote", other, "/events/remote")
        .trace<float>("fl1_median", { { 1, 2, 3 }, { 4, 5, 6 } })
        .softLink("events/trace/fl2_raw", "/nowhere")
        .softLink("events/trace/fl3_raw", "/events")
        .externalLink("events/trace/fl4_raw", pathFor("missing.vqd"), "/x")
        .externalLink("events/trace/fl5_raw", other, "/events/trace/fl9_raw")
        .softLink("events/trace/other", "/nowhere");

    VQDReader reader;
    const std::vector<std::string> listing = errorLinesOf([&] { ASSERT_TRUE(reader.open(path)); });
    EXPECT_THAT(listing,
        ElementsAre("Skipping '/events/b_broken': the link leads to no object",
            "Skipping '/events/b_loop1': the link leads to no object",
            "Skipping '/events/b_loop2': the link leads to no object",
            "Skipping '/events/b_missing_file': the link leads to no object",
            "Skipping '/events/b_missing_target': the link leads to no object",
            "Skipping '/events/trace/fl2_raw': the link leads to no object",
            "Skipping '/events/trace/fl4_raw': the link leads to no object"));
    // A link that leads to a dataset is as good as the dataset, also into another file.
    EXPECT_THAT(reader.featureNames(), ElementsAre("a_first", "c_late", "d_remote"));
    EXPECT_EQ(reader.eventCount(), 2u);
    EXPECT_EQ(reader.getFeature("d_remote"), (std::vector<double> { 7, 8 }));
    EXPECT_THAT(reader.traceNames(), ElementsAre("fl1_median", "fl5_raw"));
    EXPECT_EQ(reader.traceLength(), 3u);
    EXPECT_EQ(reader.getTrace("fl5_raw", 1), (std::vector<float> { 2 }));

    // A dangling name asked for directly is an unreadable column.
    const std::vector<std::string> lines = errorLinesOf([&] {
        EXPECT_TRUE(reader.getFeature("b_broken").empty());
        EXPECT_TRUE(reader.getFeature("b_loop1").empty());
        EXPECT_TRUE(reader.getTrace("fl2_raw", 0).empty());
    });
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_THAT(lines[0], StartsWith("Error reading feature 'b_broken': "));
    EXPECT_THAT(lines[1], StartsWith("Error reading feature 'b_loop1': "));
    EXPECT_THAT(lines[2], StartsWith("Error reading trace 'fl2_raw' at index 0: "));
}

// Chunks that are never written cost nothing in the file, so a few hundred bytes can declare
// terabytes. Such sizes are refused before anything is allocated.
TEST_F(VQDReaderHostileFile, DeclaredSizesBeyondTheMachineOrTheFrameLimitAreRefused)
{
    const std::string path = pathFor("huge.vqd");
    const hsize_t tera = hsize_t { 1 } << 40;
    FixtureWriter(path)
        .column<float>("area_um", { 1, 2 })
        .unwrittenDataset("events/zz_huge", doubles, { tera }, { 4096 })
        .unwrittenDataset("events/image", bytes, { 2, 16385, 4 }, { 1, 16385, 4 })
        .unwrittenDataset("events/mask", bytes, { 2, 3, 16385 }, { 1, 3, 16385 })
        .unwrittenDataset("events/trace/fl1_raw", floats, { 2, tera }, { 1, 4096 })
        .unwrittenDataset("events/trace/fl2_raw", H5::PredType::NATIVE_INT16, { 2, tera }, { 1, 4096 });

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    EXPECT_THAT(reader.featureNames(), ElementsAre("area_um", "image", "mask", "zz_huge"));
    ASSERT_LT(readMemoryLimit(), tera * 8) << "a machine with more than 8 TiB of memory";

    const std::vector<std::string> lines = errorLinesOf([&] {
        reader.cacheAllFeatures();
        EXPECT_TRUE(reader.getFeature("zz_huge").empty());
        int width = -1;
        int height = -1;
        EXPECT_TRUE(reader.getImage(0, &width, &height).empty());
        EXPECT_TRUE(reader.getMask(1, &width, &height).empty());
        EXPECT_EQ(width, -1);
        EXPECT_EQ(height, -1);
        EXPECT_TRUE(reader.getTrace("fl1_raw", 0).empty());
        EXPECT_TRUE(reader.getTrace("fl2_raw", 1).empty());
    });
    ASSERT_EQ(lines.size(), 5u);
    // The second request tries again, but the same refusal is not reported twice. The limit that
    // refused it is named.
    EXPECT_THAT(lines[0], StartsWith("Error reading feature 'zz_huge': 1099511627776 values would need "));
    EXPECT_THAT(lines[0], HasSubstr(" bytes of memory available now"));
    EXPECT_EQ(lines[1],
        "Error reading image at index 0: a frame of 16385 x 4 pixels is larger than 16384 "
        "pixels a side");
    EXPECT_EQ(lines[2],
        "Error reading mask at index 1: a frame of 3 x 16385 pixels is larger than 16384 "
        "pixels a side");
    EXPECT_THAT(lines[3],
        StartsWith("Error reading trace 'fl1_raw' at index 0: a trace of 1099511627776 "
                   "samples would need "));
    EXPECT_THAT(lines[4],
        StartsWith("Error reading trace 'fl2_raw' at index 1: a trace of 1099511627776 "
                   "samples would need "));
    EXPECT_THAT(reader.featureError("zz_huge"), HasSubstr("more than half of the "));
    EXPECT_EQ(reader.featureError("area_um"), "");
    EXPECT_EQ(reader.getFeature("area_um"), (std::vector<double> { 1, 2 }));
}

TEST_F(VQDReaderHostileFile, TheMemoryLimitCountsBuffersAndOneChunk)
{
    const std::string path = pathFor("limit.vqd");
    const std::vector<std::uint8_t> pixels(2 * 100 * 100, 9);
    FixtureWriter(path)
        .column<double>("plain", std::vector<double>(1000, 1.0))
        .column<float>("narrow", std::vector<float>(800, 1.0f))
        .column<float>("chunked", std::vector<float>(800, 1.0f), Storage::chunked(800))
        .imageStack("image", 2, 100, 100, pixels)
        .trace<float>("fl1_raw", { std::vector<float>(1000), std::vector<float>(1000) });

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    // A column counts 8 bytes a value and its stored size for the buffer it is read into: 16000 for
    // 1000 doubles, 9600 for 800 floats, 12800 with their chunk of 3200. A 100 x 100 frame takes
    // 10000 bytes, a trace of 1000 samples 6000 (floats and the two-byte buffer).
    setReadMemoryLimit(12000);
    const std::vector<std::string> lines = errorLinesOf([&] {
        EXPECT_TRUE(reader.getFeature("plain").empty());
        EXPECT_EQ(reader.getFeature("narrow").size(), 800u);
        EXPECT_TRUE(reader.getFeature("chunked").empty());
        int width = 0;
        int height = 0;
        EXPECT_EQ(reader.getImage(1, &width, &height).size(), 10000u);
        EXPECT_EQ(reader.getTrace("fl1_raw", 1).size(), 1000u);
        setReadMemoryLimit(9999);
        EXPECT_TRUE(reader.getImage(1, &width, &height).empty());
        setReadMemoryLimit(5999);
        EXPECT_TRUE(reader.getTrace("fl1_raw", 1).empty());
    });
    EXPECT_THAT(lines,
        ElementsAre("Error reading feature 'plain': 1000 values would need 16000 bytes, more than the 12000 "
                    "bytes of memory allowed for one read",
            "Error reading feature 'chunked': 800 values would need 12800 bytes, more than the 12000 bytes "
            "of memory allowed for one read",
            "Error reading image at index 1: a frame of 100 x 100 pixels would need 10000 bytes, more than "
            "the 9999 bytes of memory allowed for one read",
            "Error reading trace 'fl1_raw' at index 1: a trace of 1000 samples would need 6000 bytes, more "
            "than the 5999 bytes of memory allowed for one read"));

    // Asked again, even under another limit, the column is tried again but not reported again; the
    // reason given is the newest.
    setReadMemoryLimit(15999);
    EXPECT_THAT(errorLinesOf([&] { EXPECT_TRUE(reader.getFeature("plain").empty()); }), IsEmpty());
    EXPECT_EQ(reader.featureError("plain"),
        "1000 values would need 16000 bytes, more than the 15999 bytes of memory allowed for one read");

    setReadMemoryLimit(0);
    EXPECT_GT(readMemoryLimit(), std::uint64_t { 1 } << 26) << "half the available memory is the default";
    EXPECT_EQ(reader.getFeature("plain").size(), 1000u);
    EXPECT_EQ(reader.featureError("plain"), "");
    // Once read, it is cached, so a lower limit changes nothing for it.
    setReadMemoryLimit(100);
    EXPECT_THAT(errorLinesOf([&] { EXPECT_EQ(reader.getFeature("plain").size(), 1000u); }), IsEmpty());
}

// Opening attributes one by one by their index makes the library list all of them each time; with
// tens of thousands that took minutes. Every attribute must still be read, and one that can't be read
// must not stop the others.
TEST_F(VQDReaderHostileFile, ThousandsOfAttributesAreAllReadAndAFailingOneIsSkipped)
{
    const std::string path = pathFor("many.vqd");
    constexpr int count = 5000;
    {
        FixtureWriter writer(path, FileFormat::Latest);
        writer.column<float>("deform", { 1, 2 }).stringAttribute("setup:module composition", "Vortiq");
        for (int i = 0; i < count; ++i)
            writer.floatAttribute("experiment:value " + std::to_string(i), i * 0.5);
        writer.stringAttribute("setup:too long", std::string(300, 'x'), StringStorage::NullPadded)
            .pointsAttribute("online_filter:area_um,deform polygon points", { { 1, 2 }, { 3, 4 } });
    }
    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    // Fixed-length text is read whole: a limit below its size makes that one attribute fail.
    setReadMemoryLimit(200);
    VQDMetadata metadata;
    const std::vector<std::string> lines = errorLinesOf([&] { metadata = reader.readMetadata(); });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_THAT(lines[0],
        testing::MatchesRegex("Warning: failed to read attribute [0-9]+: a text of 300 "
                              "bytes would need 300 bytes, more than .*"));
    EXPECT_EQ(metadata.experiment.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(metadata.experiment.at("value 0"), "0.000000");
    EXPECT_EQ(metadata.experiment.at("value 4999"), "2499.500000");
    EXPECT_EQ(metadata.allAttributes.size(), static_cast<std::size_t>(count) + 2);
    EXPECT_EQ(metadata.setup.count("too long"), 0u);
    ASSERT_EQ(metadata.polygonFilters.size(), 1u);
    EXPECT_EQ(metadata.polygonFilters[0].vertices.size(), 2u);
    EXPECT_TRUE(reader.isInstrumentData());
}

// Attributes of every kind the format allows, none of which may stop the walk or leave
// readMetadata by an exception.
TEST_F(VQDReaderHostileFile, AttributesOfAnyTypeRankAndSizeNeverStopTheMetadata)
{
    const std::string path = pathFor("attributes.vqd");
    std::string large(10 * 1000 * 1000, 'x');
    std::mt19937 random(7);
    for (char& c : large)
        c = static_cast<char>('a' + random() % 26);
    const std::string invalidUtf8 = std::string("caf\xe9 \xff\xfe\x80 ") + '\0' + "after";
    {
        FixtureWriter writer(path);
        writer.column<float>("deform", { 1, 2 })
            .stringAttribute("setup:module composition", "Vortiq")
            .stringAttribute("experiment:large", large)
            .stringAttribute("experiment:bytes", invalidUtf8.substr(0, invalidUtf8.find('\0')))
            .stringAttribute("experiment:fixed bytes", invalidUtf8, StringStorage::NullPadded)
            .referenceAttribute("setup:reference", "/events/deform");

        H5::CompType pair(sizeof(double) + sizeof(char*));
        pair.insertMember("value", 0, doubles);
        pair.insertMember("text", sizeof(double), H5::StrType(H5::PredType::C_S1, H5T_VARIABLE));
        struct
        {
            double value;
            const char* text;
        } compound { 1.5, "inside" };
        writer.attribute("setup:compound", pair, pair, {}, &compound);

        H5::DataType opaque(H5T_OPAQUE, 5);
        H5Tset_tag(opaque.getId(), "bytes");
        writer.attribute("setup:opaque", opaque, opaque, {}, "\x01\x02\x03\x04\x05");

        const H5::VarLenType sequence(H5::PredType::NATIVE_INT);
        int numbers[] = { 1, 2, 3 };
        hvl_t one { 3, numbers };
        writer.attribute("setup:sequence", sequence, sequence, {}, &one);
        hvl_t many[] = { { 3, numbers }, { 0, nullptr }, { 1, numbers } };
        writer.attribute("setup:sequences", sequence, sequence, { 3 }, many);

        const hsize_t four = 4;
        const H5::ArrayType array(doubles, 1, &four);
        const double quad[] = { 1, 2, 3, 4 };
        writer.attribute("setup:array", array, array, {}, quad);

        H5::FloatType wide(H5::PredType::NATIVE_LDOUBLE);
        const long double precise = 2.5L;
        writer.attribute("setup:long double", wide, wide, {}, &precise);
        const double notANumber = std::numeric_limits<double>::quiet_NaN();
        writer.attribute("setup:nan", doubles, doubles, {}, &notANumber)
            .floatAttribute("setup:huge", 1e308)
            .intAttribute("setup:sixteen bytes", -3, 16)
            .attribute("setup:empty array", floats, floats, { 0, 2 }, nullptr);
        writer.stringAttribute("setup:after", "still read");
    }

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    VQDMetadata metadata;
    EXPECT_NO_THROW(metadata = reader.readMetadata());
    EXPECT_TRUE(reader.isInstrumentData());
    EXPECT_EQ(metadata.experiment.at("large"), large);
    // Text is kept byte for byte, whatever its encoding; fixed-length text ends at its padding.
    EXPECT_EQ(metadata.experiment.at("bytes"), "caf\xe9 \xff\xfe\x80 ");
    EXPECT_EQ(metadata.experiment.at("fixed bytes"), invalidUtf8);
    for (const char* dropped : { "reference", "compound", "opaque", "sequence", "sequences", "array" })
        EXPECT_EQ(metadata.setup.count(dropped), 0u) << dropped;
    EXPECT_EQ(metadata.setup.at("long double"), "2.500000");
    EXPECT_EQ(metadata.setup.at("nan"), "nan");
    EXPECT_EQ(metadata.setup.at("huge").size(), 309u + 7u);
    EXPECT_EQ(metadata.setup.at("sixteen bytes"), "-3");
    EXPECT_EQ(metadata.setup.at("empty array"), "");
    EXPECT_EQ(metadata.setup.at("after"), "still read");
    EXPECT_THAT(metadata.polygonFilters, IsEmpty());
}

// In the oldest file format all attributes stand in the object header, where each one is found by a
// search from its start; such a header is read up to a bound, with a line about the rest.
TEST_F(VQDReaderHostileFile, AttributesInTheObjectHeaderAreReadUpToABound)
{
    const std::string path = pathFor("header.vqd");
    const int count = static_cast<int>(maxHeaderAttributes) + 4;
    {
        FixtureWriter writer(path, FileFormat::Earliest);
        writer.column<float>("deform", { 1, 2 }).stringAttribute("setup:module composition", "Vortiq");
        for (int i = 1; i < count; ++i)
            writer.intAttribute("experiment:n" + std::to_string(i), i);
    }
    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    VQDMetadata metadata;
    EXPECT_THAT(errorLinesOf([&] { metadata = reader.readMetadata(); }),
        ElementsAre(
            "Warning: only the first 4096 of the 4100 attributes in the file's root header are read"));
    EXPECT_EQ(metadata.allAttributes.size(), maxHeaderAttributes);
    // In writing order: the first ones are there, the last ones not.
    EXPECT_TRUE(reader.isInstrumentData());
    EXPECT_EQ(metadata.experiment.at("n4095"), "4095");
    EXPECT_EQ(metadata.experiment.count("n4096"), 0u);
}
