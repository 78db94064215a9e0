#include "SyntheticEvents.h"
#include "calc/Density.h"

#include <benchmark/benchmark.h>

using namespace Tessaly;

namespace {

// Density colouring of the area-deformation plot; NaN events are part of the input, as in the plot.
void densityOf(benchmark::State& state, int method)
{
    const Bench::SyntheticEvents events
        = Bench::makeSyntheticEvents(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        const std::vector<double> density = computeDensity(events.area, events.deform, method);
        benchmark::DoNotOptimize(density.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_KernelDensity(benchmark::State& state)
{
    densityOf(state, KernelDensity);
}

void BM_HistogramDensity(benchmark::State& state)
{
    densityOf(state, HistogramDensity);
}

void BM_NearestNeighbourDensity(benchmark::State& state)
{
    densityOf(state, NearestNeighbourDensity);
}

void BM_OptimalGridSize(benchmark::State& state)
{
    const Bench::SyntheticEvents events
        = Bench::makeSyntheticEvents(static_cast<std::size_t>(state.range(0)));
    std::vector<double> x;
    std::vector<double> y;
    Bench::finitePairs(events.area, events.deform, x, y);
    int size = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(size = optimalGridSize(x, y));
    state.counters["grid"] = size;
}

} // namespace

BENCHMARK(BM_KernelDensity)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HistogramDensity)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NearestNeighbourDensity)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OptimalGridSize)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
