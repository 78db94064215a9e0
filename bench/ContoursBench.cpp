#include "SyntheticEvents.h"
#include "calc/Contours.h"
#include "core/ScaleModes.h"

#include <benchmark/benchmark.h>

using namespace Tessaly;

namespace {

// The overlay at its default fractions on the plotted (finite) points of area against deformation.
void contoursOf(benchmark::State& state, int scaleMode)
{
    const Bench::SyntheticEvents events
        = Bench::makeSyntheticEvents(static_cast<std::size_t>(state.range(0)));
    std::vector<double> x;
    std::vector<double> y;
    Bench::finitePairs(events.area, events.deform, x, y);
    std::size_t lines = 0;
    for (auto _ : state) {
        const std::vector<ContourLevel> levels = computeContours(x, y, { 0.1, 0.67 }, scaleMode, scaleMode);
        lines = levels[0].polylines.size() + levels[1].polylines.size();
        benchmark::DoNotOptimize(levels.data());
    }
    state.counters["lines"] = static_cast<double>(lines);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_ContoursTwoFractions(benchmark::State& state)
{
    contoursOf(state, LinearScale);
}

void BM_ContoursTwoFractionsLogAxes(benchmark::State& state)
{
    contoursOf(state, LogScale);
}

} // namespace

BENCHMARK(BM_ContoursTwoFractions)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ContoursTwoFractionsLogAxes)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
