// Opening a measurement file in the main window: the time the interface thread is held by
// openDataset (the file check runs in its own process), and until the background preload has cached
// every column.
#include "ExampleFiles.h"
#include "core/DatasetEntry.h"
#include "io/FileProbe.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

void openUntilLoaded(benchmark::State& state)
{
    const QString path = Tessaly::Bench::exampleFeatureFile(static_cast<std::size_t>(state.range(0)));
    double interfaceBlockedMs = 0;
    for (auto _ : state) {
        Tessaly::MainWindow window;
        QElapsedTimer clock;
        clock.start();
        window.openDataset(path);
        interfaceBlockedMs += clock.nsecsElapsed() / 1e6;
        while (window.isPreloadRunning() || window.isCheckingFile())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        state.SetIterationTime(clock.nsecsElapsed() / 1e9);
        if (window.datasets().empty() || !window.datasets().front()->featuresLoaded)
            state.SkipWithError("the dataset did not load");
    }
    state.counters["interfaceBlocked_ms"] = interfaceBlockedMs / static_cast<double>(state.iterations());
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

} // namespace

BENCHMARK(openWithHangingProbe)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(2);

BENCHMARK(openUntilLoaded)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(3);
