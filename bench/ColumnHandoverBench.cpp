// Taking in the columns that the file check decoded: 40 columns of one million events, read from a
// hand-over in memory into a reader's cache, as the preload does after each probe.
#include "io/ColumnCheck.h"
#include "io/ColumnHandover.h"
#include "io/VQDReader.h"
#include "support/FixtureWriter.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <benchmark/benchmark.h>
#include <memory>
#include <string>

using namespace Tessaly;
using namespace Tessaly::Testing;

namespace {

constexpr std::size_t eventCount = 1000000;
constexpr std::size_t columnCount = 40;

struct Handover
{
    Handover()
        : output(ColumnCheck::handoverFolder() + QStringLiteral("/tessaly-bench-XXXXXX"))
    {
        H5::Exception::dontPrint();
        path = folder.filePath("plain.vqd").toStdString();
        {
            FixtureWriter writer(path);
            std::vector<double> values(eventCount);
            for (std::size_t column = 0; column < columnCount; ++column) {
                for (std::size_t i = 0; i < eventCount; ++i)
                    values[i] = static_cast<double>(column * eventCount + i) * 0.001;
                writer.column("feature_" + std::to_string(100 + column), values);
            }
        }
        VQDReader reader;
        reader.open(path);
        output.open();
        ColumnHandover::writeStart(output);
        for (const std::string& name : reader.featureNames())
            ColumnHandover::writeColumn(output, name, *reader.readFeatureUncached(name));
        output.close();
    }

    QTemporaryDir folder;
    std::string path;
    QTemporaryFile output;
};

void adoptHandover(benchmark::State& state)
{
    static const Handover handover;
    for (auto _ : state) {
        state.PauseTiming();
        auto reader = std::make_unique<VQDReader>();
        reader->open(handover.path);
        state.ResumeTiming();

        const int adopted = ColumnHandover::adoptFile(handover.output.fileName(), *reader);

        state.PauseTiming();
        if (adopted != static_cast<int>(columnCount))
            state.SkipWithError("the hand-over was not taken");
        reader.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * 8 * eventCount * columnCount));
}

} // namespace

BENCHMARK(adoptHandover)->Unit(benchmark::kMillisecond)->UseRealTime();
