// Opening a measurement file in the main window: the time the interface thread is held by
// openDataset (the file check runs in its own process), until the plot is drawn, and until the
// background preload has cached every column. TESSALY_BENCH_FILE names a file of one's own to open
// the same way, as the case openUserFile.
#include "ExampleFiles.h"
#include "core/DatasetEntry.h"
#include "io/FileProbe.h"
#include "plot/ScatterPlot.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

// One opening of `path` per iteration in a new window on screen. The iteration's time is the time
// until the plot has been drawn with the file's points; the counters give the interface thread's
// wait in openDataset and the time until the preload ended, as means over the iterations.
void openAndMeasure(benchmark::State& state, const QString& path)
{
    double interfaceBlockedMs = 0;
    double plotDrawnMs = 0;
    double loadedMs = 0;
    for (auto _ : state) {
        Tessaly::MainWindow window;
        window.resize(1400, 900);
        window.show();
        auto* plot = window.findChild<Tessaly::ScatterPlot*>("scatterPlot");
        QElapsedTimer clock;
        clock.start();
        window.openDataset(path);
        interfaceBlockedMs += clock.nsecsElapsed() / 1e6;
        qint64 drawnNs = -1;
        while (window.isPreloadRunning() || window.isCheckingFile() || drawnNs < 0) {
            if (drawnNs < 0 && !plot->xValues().empty()) {
                plot->repaint();
                drawnNs = clock.nsecsElapsed();
            }
            if (!window.isPreloadRunning() && !window.isCheckingFile() && drawnNs < 0)
                break;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        }
        const qint64 loadedNs = clock.nsecsElapsed();
        if (window.datasets().empty() || !window.datasets().front()->featuresLoaded || drawnNs < 0) {
            state.SkipWithError("the dataset did not load and plot");
            break;
        }
        state.SetIterationTime(drawnNs / 1e9);
        plotDrawnMs += drawnNs / 1e6;
        loadedMs += loadedNs / 1e6;
    }
    const auto iterations = static_cast<double>(std::max<benchmark::IterationCount>(state.iterations(), 1));
    state.counters["interfaceBlocked_ms"] = interfaceBlockedMs / iterations;
    state.counters["plotDrawn_ms"] = plotDrawnMs / iterations;
    state.counters["loaded_ms"] = loadedMs / iterations;
}

// Example files of scalar features only (42 columns of doubles): uncompressed, and deflate.
void openUntilLoaded(benchmark::State& state)
{
    openAndMeasure(state,
        Tessaly::Bench::exampleFeatureFile(static_cast<std::size_t>(state.range(0)),
            static_cast<Tessaly::ExampleData::Compression>(state.range(1))));
}

void openUserFile(benchmark::State& state)
{
    const QString path = qEnvironmentVariable("TESSALY_BENCH_FILE");
    if (!QFile::exists(path)) {
        state.SkipWithError("TESSALY_BENCH_FILE names no file");
        return;
    }
    openAndMeasure(state, path);
}

// A probe that hangs until its time limit (3 s here): how long the interface thread is held by
// openDataset, and how long until the refusal arrives.
void openWithHangingProbe(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString probe = dir.filePath("hanging-probe.sh");
    {
        QFile file(probe);
        file.open(QIODevice::WriteOnly);
        file.write("#!/bin/sh\nexec sleep 60\n");
    }
    QFile::setPermissions(probe, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QString path = Tessaly::Bench::exampleFeatureFile(1000);
    Tessaly::FileProbe::setProgram(probe);
    Tessaly::FileProbe::setTimeLimit(3000);
    double blockedMs = 0;
    for (auto _ : state) {
        Tessaly::MainWindow window;
        QElapsedTimer clock;
        clock.start();
        window.openDataset(path);
        blockedMs += clock.nsecsElapsed() / 1e6;
        while (window.isCheckingFile())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        state.SetIterationTime(clock.nsecsElapsed() / 1e9);
    }
    Tessaly::FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    Tessaly::FileProbe::setTimeLimit(15000);
    state.counters["interfaceBlocked_ms"] = blockedMs / static_cast<double>(state.iterations());
}

// The user's file is opened only when one is named, so that a plain run has no failing case.
const bool userFileRegistered = [] {
    if (!qEnvironmentVariableIsEmpty("TESSALY_BENCH_FILE"))
        benchmark::RegisterBenchmark("openUserFile", openUserFile)
            ->Unit(benchmark::kMillisecond)
            ->UseManualTime()
            ->Iterations(3);
    return true;
}();

} // namespace

BENCHMARK(openWithHangingProbe)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(2);

// Arguments: events, compression (0 none, 1 deflate).
BENCHMARK(openUntilLoaded)
    ->Args({ 100000, 0 })
    ->Args({ 1000000, 0 })
    ->Args({ 1000000, 1 })
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(3);
