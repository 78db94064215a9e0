// The scatter plot: handing it a dataset's points and drawing them once, as after every change of
// features, filter or colour (renderScatterPlot: setData and a render of the whole plot into an
// image the size of a typical main window's plot), and drawing it again with the same data, as on
// a resize or an expose (paintScatterPlot: the render alone).
#include "../SyntheticEvents.h"
#include "calc/Density.h"
#include "plot/ScatterPlot.h"

#include <QImage>
#include <benchmark/benchmark.h>
#include <ctime>
#include <map>
#include <qwt_plot_renderer.h>

namespace {

struct PlotPoints
{
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> density;
};

// Area against deformation of two cell populations, coloured by their kernel density as the
// program does by default. Made once per size, outside the timing.
const PlotPoints& pointsFor(std::size_t count)
{
    static std::map<std::size_t, PlotPoints> cache;
    PlotPoints& points = cache[count];
    if (points.x.empty()) {
        const Tessaly::Bench::SyntheticEvents events = Tessaly::Bench::makeSyntheticEvents(count);
        Tessaly::Bench::finitePairs(events.area, events.deform, points.x, points.y);
        points.density = Tessaly::computeDensity(points.x, points.y, Tessaly::KernelDensity);
    }
    return points;
}

void renderScatterPlot(benchmark::State& state, bool coloured)
{
    const PlotPoints& points = pointsFor(static_cast<std::size_t>(state.range(0)));
    const std::vector<double> noColours;
    Tessaly::ScatterPlot plot;
    plot.resize(860, 600);
    QImage image(860, 600, QImage::Format_RGB32);
    QwtPlotRenderer renderer;
    for (auto _ : state) {
        plot.setData(
            points.x, points.y, "Area", "Deformation", coloured ? points.density : noColours, "Density");
        renderer.renderTo(&plot, image);
        benchmark::DoNotOptimize(image.constBits());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * points.x.size()));
}

// The plot's paint alone: the data is set once, outside the timing, and every iteration renders
// the whole plot again.
void paintScatterPlot(benchmark::State& state, bool coloured)
{
    const PlotPoints& points = pointsFor(static_cast<std::size_t>(state.range(0)));
    Tessaly::ScatterPlot plot;
    plot.resize(860, 600);
    plot.setData(points.x, points.y, "Area", "Deformation", coloured ? points.density : std::vector<double>(),
        "Density");
    QImage image(860, 600, QImage::Format_RGB32);
    QwtPlotRenderer renderer;
    // The processor time of all threads, the pool's included: on a machine shared with other work
    // it shows the work done where the wall time shows mostly the waiting.
    const std::clock_t start = std::clock();
    for (auto _ : state) {
        renderer.renderTo(&plot, image);
        benchmark::DoNotOptimize(image.constBits());
    }
    state.counters["cpu_ms_all_threads"]
        = benchmark::Counter(1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC
            / static_cast<double>(state.iterations()));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * points.x.size()));
}

} // namespace

// 1000 points show what the rest of the plot (axes, grid, title) costs.
BENCHMARK_CAPTURE(paintScatterPlot, plain, false)
    ->Arg(1000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(paintScatterPlot, coloured, true)
    ->Arg(1000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(renderScatterPlot, plain, false)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(renderScatterPlot, coloured, true)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
