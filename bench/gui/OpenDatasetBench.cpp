// Opening a measurement file in the main window: the time until its row shows (openDataset
// returns) and until the background preload has cached every column.
#include "ExampleFiles.h"
#include "core/DatasetEntry.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <benchmark/benchmark.h>

namespace {

void openUntilLoaded(benchmark::State& state)
{
    const QString path = Tessaly::Bench::exampleFeatureFile(static_cast<std::size_t>(state.range(0)));
    double rowShownMs = 0;
    for (auto _ : state) {
        Tessaly::MainWindow window;
        QElapsedTimer clock;
        clock.start();
        window.openDataset(path);
        rowShownMs += clock.nsecsElapsed() / 1e6;
        while (window.isPreloadRunning())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        state.SetIterationTime(clock.nsecsElapsed() / 1e9);
        if (window.datasets().empty() || !window.datasets().front()->featuresLoaded)
            state.SkipWithError("the dataset did not load");
    }
    state.counters["rowShown_ms"] = rowShownMs / static_cast<double>(state.iterations());
}

} // namespace

BENCHMARK(openUntilLoaded)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(3);
