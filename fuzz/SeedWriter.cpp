// Writes the fuzzer's seed corpus: one small measurement file for each layout the reader knows, so
// that mutations start from files that reach every part of the reader and not only the signature
// check. Usage: tessaly-fuzz-seeds <folder>
#include "support/FixtureWriter.h"

#include <H5Cpp.h>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>
#include <sys/stat.h>
#include <vector>

using namespace Tessaly::Testing;

namespace {

const H5::PredType& doubles = H5::PredType::NATIVE_DOUBLE;
const H5::PredType& floats = H5::PredType::NATIVE_FLOAT;
const H5::PredType& bytes = H5::PredType::NATIVE_UINT8;

std::vector<std::uint8_t> pixels(std::size_t count)
{
    std::vector<std::uint8_t> values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = static_cast<std::uint8_t>(i * 37);
    return values;
}

void instrumentMetadata(FixtureWriter& writer)
{
    writer.stringAttribute("setup:module composition", "Cell_Flow_2, Vortiq")
        .stringAttribute("experiment:sample", "seed")
        .stringAttribute("experiment:date", "2024-05-01", StringStorage::NullTerminated, 12)
        .stringAttribute("experiment:time", "12:30", StringStorage::NullPadded, 8)
        .stringAttribute("setup:medium", "CellCarrier", StringStorage::SpacePadded, 16)
        .floatAttribute("imaging:pixel size", 0.34, 4)
        .floatAttribute("setup:flow rate", 0.16)
        .intAttribute("imaging:frame rate", 2000, 4)
        .intAttribute("imaging:roi size x", 250, 2, false)
        .enumAttribute("online_filter:enabled", 1)
        .pointsAttribute(
            "online_filter:area_um,deform polygon points", { { 10, 0.01f }, { 20, 0.05f }, { 30, 0.02f } })
        .stringAttribute("version", "no section");
}

// Every column type of the format, one of each, three events.
void columns(const std::string& path, FileFormat format)
{
    FixtureWriter writer(path, format);
    writer.column<float>("deform", { 0.01f, 0.02f, 0.03f })
        .column<double>("area_um", { 10, 20, 30 })
        .column<std::int8_t>("i8", { -1, 0, 1 })
        .column<std::uint8_t>("u8", { 0, 1, 255 })
        .column<std::int16_t>("i16", { -32768, 0, 32767 })
        .column<std::uint16_t>("u16", { 0, 1, 65535 })
        .column<std::int32_t>("i32", { -5, 0, 5 })
        .column<std::uint32_t>("u32", { 0, 1, 7 })
        .column<std::int64_t>("i64", { -9, 0, 9 })
        .column<std::uint64_t>("u64", { 0, 1, ~std::uint64_t { 0 } })
        .integerColumn("i24", { -1, 0, 1 }, 3, true)
        .boolColumn("flag", { false, true, true });
    instrumentMetadata(writer);
}

void frames(const std::string& path, const Storage& storage)
{
    FixtureWriter writer(path);
    writer.column<float>("deform", { 0.1f, 0.2f })
        .imageStack("image", 2, 3, 4, pixels(24), storage)
        .imageStack("mask", 2, 3, 4, pixels(24), storage)
        .trace<std::int16_t>("fl1_raw", { { 1, 2, 3, 4 }, { -4, -3, -2, -1 } }, storage)
        .trace<float>("fl1_median", { { 1, 2, 3, 4 }, { 4, 3, 2, 1 } }, storage)
        .trace<float>("foo", { { 1 }, { 2 } })
        .group("events/trace/group_raw")
        .group("events/contour");
    instrumentMetadata(writer);
}

void bare(const std::string& path)
{
    FixtureWriter writer(path);
    instrumentMetadata(writer);
}

void links(const std::string& path)
{
    FixtureWriter writer(path);
    writer.column<float>("deform", { 1, 2 })
        .softLink("events/broken", "/nowhere")
        .softLink("events/group", "/events/trace")
        .softLink("events/alias", "/events/deform")
        .externalLink("events/elsewhere", "missing.vqd", "/events/deform")
        .trace<float>("fl1_raw", { { 1, 2 }, { 3, 4 } })
        .softLink("events/trace/fl2_raw", "/nowhere")
        .softLink("events/trace/fl3_raw", "/events/trace/fl1_raw");
    instrumentMetadata(writer);
}

void foreignStorage(const std::string& path)
{
    FixtureWriter writer(path);
    const std::vector<double> values { 1, 2 };
    writer.column<double>("area_um", values)
        .virtualDataset("events/deform", doubles, { 2 }, ".", "/events/deform")
        .virtualDataset("events/copy", doubles, { 2 }, ".", "/events/area_um")
        .externalDataset("events/raw", doubles, doubles, { 2 }, "raw.bin", nullptr)
        .virtualDataset("events/image", bytes, { 2, 2, 2 }, ".", "/events/image")
        .virtualDataset("events/trace/fl1_raw", floats, { 2, 2 }, ".", "/events/trace/fl1_raw");
    instrumentMetadata(writer);
}

void declaredSizes(const std::string& path)
{
    const hsize_t tera = hsize_t { 1 } << 40;
    FixtureWriter writer(path);
    writer.column<float>("area_um", { 1, 2 })
        .unwrittenDataset("events/huge", doubles, { tera }, { 4096 })
        .unwrittenDataset("events/image", bytes, { 2, 20000, 4 }, { 1, 20000, 4 })
        .unwrittenDataset("events/mask", bytes, { 2, 30, 40 }, { 1, 30, 40 })
        .unwrittenDataset("events/trace/fl1_raw", floats, { 2, tera }, { 1, 4096 });
    instrumentMetadata(writer);
}

void oddTypes(const std::string& path)
{
    FixtureWriter writer(path);
    writer.column<float>("deform", { 1, 2 });
    H5::CompType pair(2 * sizeof(float));
    pair.insertMember("x", 0, floats);
    pair.insertMember("y", sizeof(float), floats);
    const std::vector<float> values { 1, 2, 3, 4 };
    writer.dataset("events/compound", pair, pair, { 2 }, values.data());
    const H5::StrType text(H5::PredType::C_S1, 4);
    writer.dataset("events/text", text, text, { 2 }, "abcdefgh");
    writer.dataset("events/matrix", floats, floats, { 2, 2 }, values.data());
    writer.dataset("events/trace/fl1_raw", floats, floats, { 2, 2, 1 }, values.data());

    writer.attribute("setup:compound", pair, pair, {}, values.data());
    const H5::VarLenType sequence(H5::PredType::NATIVE_INT);
    int numbers[] = { 1, 2, 3 };
    hvl_t one { 3, numbers };
    writer.attribute("setup:sequence", sequence, sequence, {}, &one);
    writer.referenceAttribute("setup:reference", "/events/deform");
    const char* texts[] = { "a", "b" };
    const H5::StrType variable(H5::PredType::C_S1, H5T_VARIABLE);
    writer.attribute("setup:texts", variable, variable, { 2 }, texts);
    writer.stringAttribute("setup:bytes", "caf\xe9 \xff");
    instrumentMetadata(writer);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <folder>\n", argv[0]);
        return 2;
    }
    const std::string folder = argv[1];
    mkdir(folder.c_str(), 0755);
    H5::Exception::dontPrint();
    try {
        columns(folder + "/columns.vqd", FileFormat::Earliest);
        columns(folder + "/columns-latest.vqd", FileFormat::Latest);
        frames(folder + "/frames.vqd", Storage::contiguous());
        frames(folder + "/frames-deflate.vqd", Storage::deflate(4, 1));
        frames(folder + "/frames-zstd.vqd", Storage::zstd(3, 1));
        frames(folder + "/frames-chunked.vqd", Storage::chunked(1));
        bare(folder + "/bare.vqd");
        links(folder + "/links.vqd");
        foreignStorage(folder + "/foreign-storage.vqd");
        declaredSizes(folder + "/declared-sizes.vqd");
        oddTypes(folder + "/odd-types.vqd");
    } catch (const H5::Exception& e) {
        std::fprintf(stderr, "tessaly-fuzz-seeds: %s\n", e.getDetailMsg().c_str());
        return 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "tessaly-fuzz-seeds: %s\n", e.what());
        return 1;
    }
    return 0;
}
