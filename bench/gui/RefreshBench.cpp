// The main window's whole refresh: filter with three range rules, density colour, two contour
// lines, the plot's data and repaint, and the statistics, on realistic example data.
#include "ExampleFiles.h"
#include "core/DatasetEntry.h"
#include "plot/ScatterPlot.h"
#include "ui/MainWindow.h"

#include <QComboBox>
#include <QCoreApplication>
#include <benchmark/benchmark.h>

namespace {

Tessaly::FilterRule range(const char* feature, double low, double high)
{
    Tessaly::FilterRule rule;
    rule.featureName = feature;
    rule.minValue = low;
    rule.maxValue = high;
    return rule;
}

void fullRefresh(benchmark::State& state)
{
    Tessaly::MainWindow window;
    Tessaly::Bench::openExampleFiles(window, static_cast<std::size_t>(state.range(0)));
    Tessaly::DatasetEntry* entry = window.datasets().front();
    entry->filter.addRule(range("area_um", 20, 300));
    entry->filter.addRule(range("deform", 0.005, 0.2));
    entry->filter.addRule(range("bright_avg", 50, 150));
    auto* color = window.findChild<QComboBox*>("colorFeatureCombo");
    color->setCurrentIndex(color->findData(QStringLiteral("__density_kde__")));
    window.findChild<QComboBox*>("contourCombo")->setCurrentIndex(1);
    auto* plot = window.findChild<Tessaly::ScatterPlot*>("scatterPlot");
    for (auto _ : state) {
        window.onFilterChanged();
        plot->repaint();
        QCoreApplication::processEvents();
    }
    state.counters["shown"] = static_cast<double>(window.plottedX().size());
}

} // namespace

BENCHMARK(fullRefresh)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5);
