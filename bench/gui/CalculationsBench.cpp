// A Young's modulus job from the click on its button to the repainted plot: the job on the thread
// pool, the features handed to every list, and the refresh with the modulus as colour.
#include "DemoLookupTable.h"
#include "ExampleFiles.h"
#include "calc/EModulus.h"
#include "plot/ScatterPlot.h"
#include "ui/CalculationsDockWidget.h"
#include "ui/MainWindow.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QPushButton>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

void waitWhile(const std::function<bool()>& busy)
{
    while (busy())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
}

void emodulusJob(benchmark::State& state)
{
    QTemporaryDir tables;
    Tessaly::ExampleData::writeDemoTable(tables.filePath("LUT_LE_2D_FEM.txt").toStdString());
    Tessaly::MainWindow window;
    window.emodulus()->setSearchFolders({ tables.path() });
    window.resize(1400, 900);
    window.show();
    window.openDataset(Tessaly::Bench::exampleFeatureFile(static_cast<std::size_t>(state.range(0))));
    waitWhile([&window] { return window.isPreloadRunning(); });
    QPushButton* start = window.calcDock()->startButton(Tessaly::CalculationJob::Emodulus);
    auto* plot = window.findChild<Tessaly::ScatterPlot*>("scatterPlot");
    const auto run = [&] {
        start->click();
        waitWhile([&window] { return window.isCalculationRunning(); });
        plot->repaint();
        QCoreApplication::processEvents();
    };
    // The table's mesh is built once for the program's life: by the first job, outside the timing.
    run();
    auto* color = window.findChild<QComboBox*>("colorFeatureCombo");
    color->setCurrentIndex(color->findData(QStringLiteral("emodulus")));
    for (auto _ : state)
        run();
    state.counters["events"] = static_cast<double>(window.plottedX().size());
}

} // namespace

BENCHMARK(emodulusJob)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
