#include "calc/FLCompensation.h"
#include "io/VQDReader.h"
#include "support/FixtureWriter.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdint>

using namespace Tessaly;
using namespace Tessaly::Testing;

namespace {

constexpr std::size_t eventCount = 1000000;

// Compensation of one million events in three channels whose peak heights are already cached, as
// after the preload.
void compensateMillion(benchmark::State& state)
{
    QTemporaryDir dir;
    const std::string path = dir.filePath(QStringLiteral("heights.vqd")).toStdString();
    {
        H5::Exception::dontPrint();
        FixtureWriter writer(path);
        std::vector<double> values(eventCount);
        std::uint32_t noise = 12345;
        for (int channel = 1; channel <= 3; ++channel) {
            for (double& value : values) {
                noise = noise * 1664525u + 1013904223u;
                value = 100.0 * channel + (noise >> 20);
            }
            writer.column("fl" + std::to_string(channel) + "_max", values);
        }
    }
    VQDReader reader;
    reader.open(path);
    reader.cacheAllFeatures();
    const SquareMatrix spillover = { { 1.0, 0.12, 0.01 }, { 0.08, 1.0, 0.15 }, { 0.0, 0.05, 1.0 } };
    FLCompensation compensation;
    for (auto _ : state) {
        if (!compensation.compensate(&reader, { 1, 2, 3 }, spillover))
            state.SkipWithError("compensation failed");
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(eventCount));
}

} // namespace

BENCHMARK(compensateMillion)->Unit(benchmark::kMillisecond)->UseRealTime();
