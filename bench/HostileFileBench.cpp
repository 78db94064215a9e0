// Files made to stall the reader: many root attributes, and a column that declares billions of events
// while storing none. Both must give their answer (the metadata, or a refusal) quickly.
#include "io/VQDReader.h"
#include "support/FixtureWriter.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <map>
#include <string>

using namespace Tessaly;
using namespace Tessaly::Testing;

namespace {

// One file per attribute count, written once per process outside the timed region.
const std::string& attributeFile(std::size_t count)
{
    static QTemporaryDir folder;
    static std::map<std::size_t, std::string> files;
    auto found = files.find(count);
    if (found != files.end())
        return found->second;
    H5::Exception::dontPrint();
    const std::string path = folder.filePath(QString("attributes-%1.vqd").arg(count)).toStdString();
    FixtureWriter writer(path);
    writer.column<float>("deform", { 0.1f, 0.2f }).stringAttribute("setup:module composition", "Vortiq");
    for (std::size_t i = 0; i < count; ++i)
        writer.floatAttribute("experiment:value " + std::to_string(i), static_cast<double>(i));
    writer.close();
    return files.emplace(count, path).first->second;
}

void readManyAttributes(benchmark::State& state)
{
    const std::size_t count = static_cast<std::size_t>(state.range(0));
    const std::string& path = attributeFile(count);
    VQDReader reader;
    if (!reader.open(path)) {
        state.SkipWithError("the file did not open");
        return;
    }
    for (auto _ : state) {
        const VQDMetadata metadata = reader.readMetadata();
        if (metadata.experiment.size() != count)
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

BENCHMARK(readManyAttributes)->Arg(100)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(refuseHugeDeclaredColumn)->Arg(31)->Unit(benchmark::kMillisecond)->Iterations(1);
