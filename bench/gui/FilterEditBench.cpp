// Editing a bound of a range rule in the filter dock, as a person does: the row stores the rules,
// and the main window refreshes the plot, the dock's counts, the peer marks and the statistics.
#include "ExampleFiles.h"
#include "plot/ScatterPlot.h"
#include "ui/FilterDockTexts.h"
#include "ui/FilterDockWidget.h"
#include "ui/MainWindow.h"
#include "ui/RuleRowWidget.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <benchmark/benchmark.h>

namespace {

void editRangeBound(benchmark::State& state)
{
    Tessaly::MainWindow window;
    window.resize(1400, 900);
    window.show();
    // A peer, so that the peer marks are computed too.
    window.openDataset(Tessaly::Bench::exampleFeatureFile(static_cast<std::size_t>(state.range(0))));
    window.openDataset(Tessaly::Bench::exampleFeatureFile(static_cast<std::size_t>(state.range(0)) + 1));
    while (window.isPreloadRunning())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    auto* dock = window.findChild<Tessaly::FilterDockWidget*>();
    for (QPushButton* button : dock->findChildren<QPushButton*>()) {
        if (button->text() == Tessaly::FilterDockTexts::addRule)
            button->click();
    }
    QWidget* row = dock->ruleRow(0);
    auto* combo = row->findChild<QComboBox*>();
    combo->setCurrentIndex(combo->findData(QStringLiteral("area_um")));
    QDoubleSpinBox* maximum = row->findChildren<QDoubleSpinBox*>().at(1);
    auto* plot = window.findChild<Tessaly::ScatterPlot*>("scatterPlot");
    bool wide = false;
    for (auto _ : state) {
        maximum->setValue(wide ? 120.0 : 80.0);
        wide = !wide;
        plot->repaint();
        QCoreApplication::processEvents();
    }
    state.counters["shown"] = static_cast<double>(window.plottedX().size());
}

} // namespace

BENCHMARK(editRangeBound)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(20);
