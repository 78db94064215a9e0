// Files made to stall the reader: many root attributes, and a column that declares billions of events
// while storing none. Both must give their answer (the metadata, or a refusal) quickly.
#include "io/VQDReader.h"
#include "support/FixtureWriter.h"

#include <QTemporaryDir>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <map>
#include <string>
#include <utility>

using namespace Tessaly;
using namespace Tessaly::Testing;

namespace {

// One file per attribute count and format, written once per process outside the timed region. In
// the oldest format the attributes stand in the object header, in the newest in dense storage.
const std::string& attributeFile(std::size_t count, FileFormat format)
{
    static QTemporaryDir folder;
    static std::map<std::pair<std::size_t, FileFormat>, std::string> files;
    auto found = files.find({ count, format });
    if (found != files.end())
        return found->second;
    H5::Exception::dontPrint();
    const std::string path = folder
                                 .filePath(QString("attributes-%1-%2.vqd")
                                               .arg(count)
                                               .arg(format == FileFormat::Latest ? "latest" : "earliest"))
                                 .toStdString();
    FixtureWriter writer(path, format);
    writer.column<float>("deform", { 0.1f, 0.2f }).stringAttribute("setup:module composition", "Vortiq");
    for (std::size_t i = 0; i < count; ++i)
        writer.floatAttribute("experiment:value " + std::to_string(i), static_cast<double>(i));
    writer.close();
    return files.emplace(std::make_pair(count, format), path).first->second;
}

void readManyAttributes(benchmark::State& state)
{
    const std::size_t count = static_cast<std::size_t>(state.range(0));
    const FileFormat format = state.range(1) != 0 ? FileFormat::Latest : FileFormat::Earliest;
    const std::string& path = attributeFile(count, format);
    // With the instrument's own attribute; a header is read up to its bound.
    const std::size_t expected
        = format == FileFormat::Latest ? count + 1 : std::min<std::size_t>(count + 1, 4096);
    VQDReader reader;
    if (!reader.open(path)) {
        state.SkipWithError("the file did not open");
        return;
    }
    for (auto _ : state) {
        const VQDMetadata metadata = reader.readMetadata();
        if (metadata.allAttributes.size() != expected)
            state.SkipWithError("attributes were lost");
        benchmark::DoNotOptimize(metadata);
    }
}

// 2^N one-byte events, all fill value: at 2^31 the column would take 16 GiB as doubles.
void refuseHugeDeclaredColumn(benchmark::State& state)
{
    const int power = static_cast<int>(state.range(0));
    static QTemporaryDir folder;
    H5::Exception::dontPrint();
    const std::string path = folder.filePath(QString("huge-%1.vqd").arg(power)).toStdString();
    FixtureWriter(path)
        .unwrittenDataset(
            "events/area_um", H5::PredType::NATIVE_UINT8, { hsize_t { 1 } << power }, { 1 << 20 })
        .stringAttribute("setup:module composition", "Vortiq")
        .close();
    VQDReader reader;
    if (!reader.open(path)) {
        state.SkipWithError("the file did not open");
        return;
    }
    for (auto _ : state) {
        if (!reader.getFeature("area_um").empty())
            state.SkipWithError("the column was read");
    }
}

} // namespace

BENCHMARK(readManyAttributes)
    ->Args({ 100, 0 })
    ->Args({ 20000, 0 })
    ->Args({ 100, 1 })
    ->Args({ 20000, 1 })
    ->Unit(benchmark::kMillisecond);
BENCHMARK(refuseHugeDeclaredColumn)->Arg(31)->Unit(benchmark::kMillisecond)->Iterations(1);
