// Sessions of ten datasets: writing the file, and loading it until every dataset is ready, beside
// the opening of the same ten files without a session, which the loading includes.
#include "ExampleEvents.h"
#include "ExampleFileWriter.h"
#include "core/DatasetEntry.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

constexpr int datasetCount = 10;
constexpr std::size_t eventsPerDataset = 20000;

// Ten example files and a session of them with a rule per dataset and two groups.
struct SessionFiles
{
    SessionFiles()
    {
        for (int i = 0; i < datasetCount; ++i) {
            const QString path = dir.filePath(QStringLiteral("data/run_%1.vqd").arg(i));
            QDir().mkpath(dir.filePath("data"));
            Tessaly::ExampleData::ExampleSettings settings;
            settings.eventCount = eventsPerDataset;
            settings.seed = static_cast<std::uint64_t>(100 + i);
            Tessaly::ExampleData::WriteOptions options;
            options.images = options.traces = false;
            Tessaly::ExampleData::writeExampleFile(
                path.toStdString(), settings, Tessaly::ExampleData::generateEvents(settings), options);
            paths << path;
        }
        session = dir.filePath("ten.TSY");
    }
    QTemporaryDir dir;
    QStringList paths;
    QString session;
};

SessionFiles& files()
{
    static SessionFiles instance;
    return instance;
}

void waitUntilReady(Tessaly::MainWindow& window)
{
    const auto ready = [&window] {
        if (window.isPreloadRunning() || window.isSessionLoading())
            return false;
        for (const Tessaly::DatasetEntry* entry : window.datasets())
            if (!entry->featuresLoaded)
                return false;
        return true;
    };
    while (!ready())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
}

void openAll(Tessaly::MainWindow& window)
{
    for (const QString& path : files().paths)
        window.openDataset(path);
    waitUntilReady(window);
}

void prepareSession(Tessaly::MainWindow& window)
{
    openAll(window);
    const int group = window.addFilterGroup("Small");
    Tessaly::FilterRule rule;
    rule.featureName = "area_um";
    rule.minValue = 10;
    rule.maxValue = 100;
    window.addRuleToGroup(group, rule);
    window.addFilterGroup("Other");
    for (Tessaly::DatasetEntry* entry : window.datasets()) {
        rule.featureName = "deform";
        rule.maxValue = 0.1;
        entry->filter.addRule(rule);
        window.setGroupEnabled(entry->id, group, true);
    }
}

void openTenFiles(benchmark::State& state)
{
    files();
    for (auto _ : state) {
        Tessaly::MainWindow window;
        QElapsedTimer clock;
        clock.start();
        openAll(window);
        state.SetIterationTime(clock.nsecsElapsed() / 1e9);
        if (window.datasets().size() != datasetCount)
            state.SkipWithError("the datasets did not load");
    }
}

void saveTenDatasetSession(benchmark::State& state)
{
    Tessaly::MainWindow window;
    prepareSession(window);
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        if (!window.saveSessionTo(files().session))
            state.SkipWithError("the session was not written");
        state.SetIterationTime(clock.nsecsElapsed() / 1e9);
    }
}

void loadTenDatasetSession(benchmark::State& state)
{
    {
        Tessaly::MainWindow window;
        prepareSession(window);
        window.saveSessionTo(files().session);
    }
    for (auto _ : state) {
        Tessaly::MainWindow window;
        QElapsedTimer clock;
        clock.start();
        window.loadSessionFrom(files().session);
        waitUntilReady(window);
        state.SetIterationTime(clock.nsecsElapsed() / 1e9);
        if (window.datasets().size() != datasetCount)
            state.SkipWithError("the session did not load");
    }
}

} // namespace

BENCHMARK(openTenFiles)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);
BENCHMARK(saveTenDatasetSession)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);
BENCHMARK(loadTenDatasetSession)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);
