#include "io/VQDReader.h"
#include "support/FixtureWriter.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>

using namespace Tessaly;
using namespace Tessaly::Testing;

namespace {

constexpr std::size_t eventCount = 1000000;
constexpr std::size_t columnCount = 40;

std::string columnName(std::size_t column)
{
    return "feature_" + std::to_string(100 + column).substr(1);
}

// A file shaped like a large measurement: 40 float32 columns of one million events. Values are smooth
// with a little noise at a fixed resolution, so that deflate has something to find, as in real data.
void writeMeasurement(const std::string& path, const Storage& storage)
{
    H5::Exception::dontPrint();
    FixtureWriter writer(path);
    std::vector<float> values(eventCount);
    std::uint32_t noise = 12345;
    for (std::size_t column = 0; column < columnCount; ++column) {
        for (std::size_t i = 0; i < eventCount; ++i) {
            noise = noise * 1664525u + 1013904223u;
            const double smooth
                = 10.0 * column + 5.0 * std::sin(0.0001 * static_cast<double>(i) * (column + 1));
            values[i] = static_cast<float>(std::round((smooth + (noise >> 24) / 256.0) * 1000.0) / 1000.0);
        }
        writer.column(columnName(column), values, storage);
    }
}

// The files are written once per process, on first use, outside every timed region.
struct MeasurementFiles
{
    MeasurementFiles()
        : plain(folder.filePath("plain.vqd").toStdString())
        , deflated(folder.filePath("deflate.vqd").toStdString())
    {
        writeMeasurement(plain, Storage::contiguous());
        writeMeasurement(deflated, Storage::deflate(4, 100000));
    }

    QTemporaryDir folder;
    std::string plain;
    std::string deflated;
};

const MeasurementFiles& measurementFiles()
{
    static const MeasurementFiles files;
    return files;
}

void cacheAllFeatures(benchmark::State& state, bool deflated)
{
    const std::string& path = deflated ? measurementFiles().deflated : measurementFiles().plain;
    for (auto _ : state) {
        state.PauseTiming();
        auto reader = std::make_unique<VQDReader>();
        if (!reader->open(path)) {
            state.SkipWithError("cannot open the benchmark file");
            break;
        }
        state.ResumeTiming();

        reader->cacheAllFeatures();

        state.PauseTiming();
        benchmark::DoNotOptimize(reader->getFeature(columnName(columnCount - 1)).data());
        reader.reset(); // freeing 320 MB of columns is not part of the work measured
        state.ResumeTiming();
    }
    // Bytes of doubles produced.
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * 8 * eventCount * columnCount));
}

void getCachedFeature(benchmark::State& state)
{
    VQDReader reader;
    if (!reader.open(measurementFiles().plain)) {
        state.SkipWithError("cannot open the benchmark file");
        return;
    }
    const std::string name = columnName(7);
    reader.getFeature(name);
    for (auto _ : state)
        benchmark::DoNotOptimize(reader.getFeature(name).data());
}

} // namespace

BENCHMARK_CAPTURE(cacheAllFeatures, uncompressed, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(cacheAllFeatures, deflate, true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(getCachedFeature)->Unit(benchmark::kNanosecond);
