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

// The upper bound of a new range rule on area_um, added in the filter dock.
QDoubleSpinBox* addAreaRule(Tessaly::MainWindow& window)
{
    auto* dock = window.findChild<Tessaly::FilterDockWidget*>();
    for (QPushButton* button : dock->findChildren<QPushButton*>()) {
        if (button->text() == Tessaly::FilterDockTexts::addRule)
            button->click();
    }
    QWidget* row = dock->ruleRow(0);
    auto* combo = row->findChild<QComboBox*>();
    combo->setCurrentIndex(combo->findData(QStringLiteral("area_um")));
    return row->findChildren<QDoubleSpinBox*>().at(1);
}

void editRangeBound(benchmark::State& state)
{
    Tessaly::MainWindow window;
    // A peer, so that the peer marks are computed too.
    Tessaly::Bench::openExampleFiles(window, static_cast<std::size_t>(state.range(0)), 2);
    QDoubleSpinBox* maximum = addAreaRule(window);
    auto* plot = window.findChild<Tessaly::ScatterPlot*>("scatterPlot");
    bool wide = false;
    for (auto _ : state) {
        maximum->setValue(wide ? 120.0 : 80.0);
        wide = !wide;
        while (window.isRefreshQueued())
            QCoreApplication::processEvents();
        plot->repaint();
    }
    state.counters["shown"] = static_cast<double>(window.plottedX().size());
}

// Ten steps of a bound that arrive before the interface thread turns, as from a held arrow key or
// a spun wheel on a large dataset: the time until the plot shows the last one, and how many
// refreshes that took.
void stepBoundInBursts(benchmark::State& state)
{
    Tessaly::MainWindow window;
    Tessaly::Bench::openExampleFiles(window, static_cast<std::size_t>(state.range(0)), 1);
    QDoubleSpinBox* maximum = addAreaRule(window);
    maximum->setValue(200.0);
    QCoreApplication::processEvents();
    int refreshes = 0;
    QObject::connect(&window, &Tessaly::MainWindow::plotRefreshed, [&refreshes] { ++refreshes; });
    double high = 200.0;
    for (auto _ : state) {
        for (int step = 0; step < 10; ++step)
            maximum->setValue(high -= 1.0);
        while (window.isRefreshQueued())
            QCoreApplication::processEvents();
    }
    state.counters["refreshesPerBurst"]
        = static_cast<double>(refreshes) / static_cast<double>(state.iterations());
}

} // namespace

BENCHMARK(stepBoundInBursts)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

BENCHMARK(editRangeBound)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(20);
