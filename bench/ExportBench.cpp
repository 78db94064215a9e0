#include "io/TsvWriter.h"
#include "io/VQDReader.h"
#include "io/VQDWriter.h"
#include "support/FixtureWriter.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <numeric>
#include <string>

using namespace Tessaly;
using namespace Tessaly::Testing;

namespace {

constexpr std::size_t exportEvents = 1000000;
constexpr std::size_t exportColumns = 40;

// One million events of 40 features, as after loading: a small file for the reader to stand on and
// the columns in its cache, measured values widened from float32 as the instrument stores them, and
// a few counting columns of whole numbers.
struct ExportSource
{
    ExportSource()
    {
        H5::Exception::dontPrint();
        const std::string path = folder.filePath("source.vqd").toStdString();
        FixtureWriter(path).column<double>("index", std::vector<double>(exportEvents, 0.0)).close();
        reader.open(path);
        std::uint32_t noise = 12345;
        for (std::size_t column = 0; column < exportColumns; ++column) {
            std::vector<double> values(exportEvents);
            for (std::size_t i = 0; i < exportEvents; ++i) {
                noise = noise * 1664525u + 1013904223u;
                values[i] = column % 10 == 9
                    ? static_cast<double>(noise >> 20)
                    : static_cast<double>(static_cast<float>(10.0 * column + (noise >> 8) / 65536.0));
            }
            const std::string name = "feature_" + std::to_string(100 + column).substr(1);
            reader.setFeature(name, std::move(values));
            features.push_back(name);
        }
        events.resize(exportEvents);
        std::iota(events.begin(), events.end(), 0);
    }

    QTemporaryDir folder;
    VQDReader reader;
    std::vector<std::string> features;
    std::vector<std::int32_t> events;
};

ExportSource& exportSource()
{
    static ExportSource source;
    return source;
}

void exportTsvTo(benchmark::State& state, const std::string& path)
{
    ExportSource& source = exportSource();
    const VQDMetadata metadata;
    const TsvExport table { source.features, source.events, {} };
    // The CPU column counts the calling thread alone; this counter adds the formatting threads.
    const std::clock_t start = std::clock();
    for (auto _ : state)
        benchmark::DoNotOptimize(writeTsv(path, source.reader, metadata, table));
    state.counters["all_threads_cpu_s"] = benchmark::Counter(
        static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / static_cast<double>(state.iterations()));
}

void BM_ExportTsv(benchmark::State& state)
{
    exportTsvTo(state, exportSource().folder.filePath("export.tsv").toStdString());
}
BENCHMARK(BM_ExportTsv)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// The same table to the null device: the formatting alone, without the file system's share.
void BM_ExportTsvFormatting(benchmark::State& state)
{
    exportTsvTo(state, "/dev/null");
}
BENCHMARK(BM_ExportTsvFormatting)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

void BM_ExportVqd(benchmark::State& state)
{
    ExportSource& source = exportSource();
    const std::string path = source.folder.filePath("export.vqd").toStdString();
    for (auto _ : state) {
        VQDWriter writer;
        writer.create(path);
        writer.copyAttributes(VQDMetadata());
        writer.writeExportAttributes(source.events.size(), "");
        writer.writeScalars(source.features, source.events, source.reader);
        benchmark::DoNotOptimize(writer.close());
    }
}
BENCHMARK(BM_ExportVqd)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

} // namespace
