#include "calc/TraceFilters.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <vector>

using namespace Tessaly;

namespace {

// Traces of `samples` values like raw fluorescence traces of the instrument: a peak on a noisy baseline
// with a few spikes. Each trace has its own noise, and the benchmark cycles through many of them: the
// same trace over and over would let the branch predictor learn the filters' comparisons and flatter
// the figures by a factor of two to three.
std::vector<std::vector<float>> exampleTraces(std::size_t samples, std::size_t count)
{
    std::vector<std::vector<float>> traces(count, std::vector<float>(samples));
    std::uint32_t noise = 12345;
    for (std::vector<float>& trace : traces) {
        for (std::size_t i = 0; i < samples; ++i) {
            noise = noise * 1664525u + 1013904223u;
            const double x = (static_cast<double>(i) - 0.5 * samples) / 6.0;
            trace[i] = static_cast<float>(std::round(100.0 + 600.0 * std::exp(-0.5 * x * x) + (noise >> 27)));
            if ((noise >> 8) % 40 == 0)
                trace[i] += 800.0f;
        }
    }
    return traces;
}

void traceChain(benchmark::State& state, TraceProcessing processing)
{
    const std::vector<std::vector<float>> traces
        = exampleTraces(static_cast<std::size_t>(state.range(0)), 512);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(applyTraceProcessing(traces[next], processing).data());
        next = (next + 1) % traces.size();
    }
    state.SetItemsProcessed(state.iterations());
}

TraceProcessing everythingOn()
{
    TraceProcessing processing;
    processing.median = true;
    processing.rolling = true;
    return processing;
}

} // namespace

// Per trace; 160 samples is the example files' trace length.
BENCHMARK_CAPTURE(traceChain, defaults, TraceProcessing {})
    ->Arg(160)
    ->Arg(1000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(traceChain, everything_on, everythingOn())->Arg(160)->Unit(benchmark::kMicrosecond);
