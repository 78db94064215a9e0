#include "io/Hdf5Filters.h"

#include "IoTestBase.h"
#include "io/ReadLimits.h"
#include "io/VQDReader.h"

#include <QDir>
#include <cmath>
#include <cstring>
#include <hdf5.h>
#include <zstd.h>

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::ElementsAreArray;

namespace {

class Hdf5Filters : public IoTest
{
};

// Runs the filter on a copy of `input` in a buffer of the library's allocator, as HDF5 would.
std::vector<char> runFilter(
    unsigned int flags, const std::vector<char>& input, std::vector<unsigned> cdValues = {})
{
    std::size_t bufferSize = std::max<std::size_t>(input.size(), 1);
    void* buffer = H5allocate_memory(bufferSize, false);
    std::memcpy(buffer, input.data(), input.size());
    const std::size_t size
        = zstdFilter(flags, cdValues.size(), cdValues.data(), input.size(), &bufferSize, &buffer);
    std::vector<char> output;
    if (size > 0) {
        EXPECT_LE(size, bufferSize);
        output.assign(static_cast<char*>(buffer), static_cast<char*>(buffer) + size);
    }
    H5free_memory(buffer);
    return output;
}

// A frame as a streaming compressor writes it: the content size is not recorded.
std::vector<char> streamedFrame(const std::vector<char>& input)
{
    ZSTD_CCtx* context = ZSTD_createCCtx();
    ZSTD_CCtx_setParameter(context, ZSTD_c_contentSizeFlag, 0);
    std::vector<char> output(ZSTD_compressBound(input.size()));
    ZSTD_outBuffer out { output.data(), output.size(), 0 };
    ZSTD_inBuffer in { input.data(), input.size(), 0 };
    while (ZSTD_compressStream2(context, &out, &in, ZSTD_e_end) != 0) { }
    ZSTD_freeCCtx(context);
    output.resize(out.pos);
    return output;
}

std::vector<char> sampleBytes(std::size_t size)
{
    std::vector<char> bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 7) % 13 + (i / 1000));
    return bytes;
}

std::vector<float> sampleColumn(std::size_t n)
{
    std::vector<float> values(n);
    for (std::size_t i = 0; i < n; ++i)
        values[i] = static_cast<float>(std::round(std::sin(i * 0.01) * 50.0));
    return values;
}

// The filters of a stored dataset, to make sure a test really reads compressed data.
std::vector<H5Z_filter_t> filtersOf(const std::string& path, const std::string& dataset)
{
    const H5::H5File file(path, H5F_ACC_RDONLY);
    const H5::DSetCreatPropList properties = file.openDataSet(dataset).getCreatePlist();
    std::vector<H5Z_filter_t> filters;
    for (int i = 0; i < H5Pget_nfilters(properties.getId()); ++i) {
        unsigned int flags = 0;
        std::size_t count = 0;
        filters.push_back(H5Pget_filter2(
            properties.getId(), static_cast<unsigned>(i), &flags, &count, nullptr, 0, nullptr, nullptr));
    }
    return filters;
}

} // namespace

TEST_F(Hdf5Filters, ZstdRoundTripsAndDecodesFramesWithoutContentSize)
{
    const std::vector<char> input = sampleBytes(300000);
    const std::vector<char> compressed = runFilter(0, input, { 9 });
    ASSERT_FALSE(compressed.empty());
    EXPECT_LT(compressed.size(), input.size() / 4);
    EXPECT_EQ(runFilter(H5Z_FLAG_REVERSE, compressed), input);
    // Without client data the default level is used.
    EXPECT_EQ(runFilter(H5Z_FLAG_REVERSE, runFilter(0, input)), input);

    const std::vector<char> streamed = streamedFrame(input);
    ASSERT_EQ(ZSTD_getFrameContentSize(streamed.data(), streamed.size()), ZSTD_CONTENTSIZE_UNKNOWN);
    EXPECT_EQ(runFilter(H5Z_FLAG_REVERSE, streamed), input);

    // Two frames in a row: the first records its size, which is not the size of the whole.
    const std::vector<char> small = sampleBytes(1000);
    std::vector<char> twoFrames = runFilter(0, small);
    const std::vector<char> second = streamedFrame(input);
    twoFrames.insert(twoFrames.end(), second.begin(), second.end());
    std::vector<char> both = small;
    both.insert(both.end(), input.begin(), input.end());
    EXPECT_EQ(runFilter(H5Z_FLAG_REVERSE, twoFrames), both);
}

TEST_F(Hdf5Filters, ZstdRejectsBrokenInput)
{
    const std::vector<char> compressed = runFilter(0, sampleBytes(5000));
    EXPECT_TRUE(runFilter(H5Z_FLAG_REVERSE, { 'n', 'o', 't', ' ', 'z', 's', 't', 'd' }).empty());
    const std::vector<char> truncated(compressed.begin(), compressed.begin() + compressed.size() / 2);
    EXPECT_TRUE(runFilter(H5Z_FLAG_REVERSE, truncated).empty());
    EXPECT_EQ(runFilter(H5Z_FLAG_REVERSE, streamedFrame(sampleBytes(5000))).size(), 5000u);
    const std::vector<char> streamed = streamedFrame(sampleBytes(5000));
    EXPECT_TRUE(runFilter(H5Z_FLAG_REVERSE, { streamed.begin(), streamed.end() - 3 }).empty());
}

TEST_F(Hdf5Filters, ZstdColumnsWrittenWithAndWithoutContentSizeRead)
{
    registerHdf5Filters();
    registerHdf5Filters();
    ASSERT_GT(H5Zfilter_avail(zstdFilterId), 0);

    const std::vector<float> values = sampleColumn(2500);
    const std::vector<double> expected(values.begin(), values.end());
    const std::string path = pathFor("zstd.vqd");
    {
        FixtureWriter writer(path);
        writer.column("deform", values, Storage::zstd(5, 1000));
        // Chunks as a streaming encoder of other software stores them.
        writer.dataset("events/area_um", H5::PredType::IEEE_F32LE, H5::PredType::NATIVE_FLOAT,
            { values.size() }, nullptr, Storage::zstd(3, 1000));
        for (hsize_t start = 0; start < values.size(); start += 1000) {
            std::vector<char> chunk(1000 * sizeof(float), 0);
            const std::size_t count = std::min<std::size_t>(1000, values.size() - start);
            std::memcpy(chunk.data(), values.data() + start, count * sizeof(float));
            writer.rawChunk("events/area_um", { start }, streamedFrame(chunk));
        }
    }
    EXPECT_EQ(filtersOf(path, "events/deform"), std::vector<H5Z_filter_t> { zstdFilterId });
    EXPECT_EQ(filtersOf(path, "events/area_um"), std::vector<H5Z_filter_t> { zstdFilterId });

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    EXPECT_THAT(reader.getFeature("deform"), ElementsAreArray(expected));
    EXPECT_THAT(reader.getFeature("area_um"), ElementsAreArray(expected));
}

// A chunk whose frame decodes to fewer bytes than the chunk holds, or that claims far more than
// memory allows, found by the fuzzer: the first made the library read past the decoded buffer.
TEST_F(Hdf5Filters, ZstdChunksThatDecodeShortOrClaimTooMuchAreSafe)
{
    const std::vector<float> values { 1.5f, 2.5f, 3.5f, 4.5f };
    const std::vector<char> head(reinterpret_cast<const char*>(values.data()),
        reinterpret_cast<const char*>(values.data()) + sizeof(float));
    const std::string path = pathFor("short.vqd");
    {
        FixtureWriter writer(path);
        writer.dataset("events/short", H5::PredType::IEEE_F32LE, H5::PredType::NATIVE_FLOAT, { 4 }, nullptr,
            Storage::zstd(3, 4));
        writer.rawChunk("events/short", { 0 }, runFilter(0, head));
        writer.dataset("events/streamed", H5::PredType::IEEE_F32LE, H5::PredType::NATIVE_FLOAT, { 4 },
            nullptr, Storage::zstd(3, 4));
        writer.rawChunk("events/streamed", { 0 }, streamedFrame(head));
    }
    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    testing::internal::CaptureStderr();
    EXPECT_TRUE(reader.getFeature("short").empty());
    EXPECT_TRUE(reader.getFeature("streamed").empty());
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_THAT(errors, testing::StartsWith("Error reading feature 'short': "));
    EXPECT_THAT(errors, testing::HasSubstr("\nError reading feature 'streamed': "));

    // Outside a read of the reader the chunk size is unknown: the decoded bytes are padded with
    // zeros to at least the size of the buffer handed in.
    std::size_t bufferSize = 64;
    void* buffer = H5allocate_memory(bufferSize, false);
    const std::vector<char> frame = runFilter(0, head);
    std::memcpy(buffer, frame.data(), frame.size());
    ASSERT_EQ(zstdFilter(H5Z_FLAG_REVERSE, 0, nullptr, frame.size(), &bufferSize, &buffer), head.size());
    ASSERT_GE(bufferSize, 64u);
    EXPECT_EQ(std::memcmp(buffer, head.data(), head.size()), 0);
    EXPECT_EQ(std::vector<char>(static_cast<char*>(buffer) + head.size(), static_cast<char*>(buffer) + 64),
        std::vector<char>(64 - head.size(), 0));
    H5free_memory(buffer);

    setReadMemoryLimit(1000);
    std::vector<char> claim(runFilter(0, sampleBytes(2000)));
    EXPECT_TRUE(runFilter(H5Z_FLAG_REVERSE, claim).empty()) << "2000 bytes claimed, 1000 allowed";
    EXPECT_TRUE(runFilter(H5Z_FLAG_REVERSE, streamedFrame(sampleBytes(300000))).empty());
    setReadMemoryLimit(0);
    EXPECT_EQ(runFilter(H5Z_FLAG_REVERSE, claim).size(), 2000u);
}

TEST_F(Hdf5Filters, SystemPluginFiltersReadThroughTheReader)
{
    registerHdf5Filters();
    const H5Z_filter_t lz4 = 32004;
    if (H5Zfilter_avail(lz4) <= 0)
        GTEST_SKIP() << "no LZ4 filter plugin installed";

    const std::vector<float> values = sampleColumn(50000);
    const std::string path = pathFor("lz4.vqd");
    FixtureWriter(path).column("deform", values, Storage::plugin(lz4, {}, 10000));
    EXPECT_EQ(filtersOf(path, "events/deform"), std::vector<H5Z_filter_t> { lz4 });

    VQDReader reader;
    ASSERT_TRUE(reader.open(path));
    EXPECT_THAT(
        reader.getFeature("deform"), ElementsAreArray(std::vector<double>(values.begin(), values.end())));
}

TEST_F(Hdf5Filters, PluginFolderIsPutFirstOnceAndOnlyIfItExists)
{
    const std::string folder = pathFor("plugins");
    EXPECT_FALSE(addHdf5PluginFolder(folder));
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(folder)));

    unsigned int before = 0;
    H5PLsize(&before);
    ASSERT_TRUE(addHdf5PluginFolder(folder + "/"));
    ASSERT_TRUE(addHdf5PluginFolder(folder));
    unsigned int after = 0;
    H5PLsize(&after);
    EXPECT_EQ(after, before + 1);
    char first[4096] = {};
    H5PLget(0, first, sizeof first);
    EXPECT_EQ(std::string(first), folder);
    H5PLremove(0);
}
