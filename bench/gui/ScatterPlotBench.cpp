// The scatter plot: handing it a dataset's points and drawing them once, as after every change of
// features, filter or colour. Each iteration runs setData and renders the whole plot into an image
// the size of a typical main window's plot.
#include "../SyntheticEvents.h"
#include "calc/Density.h"
#include "plot/ScatterPlot.h"

#include <QImage>
#include <benchmark/benchmark.h>
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

} // namespace

BENCHMARK_CAPTURE(renderScatterPlot, plain, false)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(renderScatterPlot, coloured, true)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
