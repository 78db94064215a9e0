#include "CalculationFiles.h"
#include "calc/FLRefinement.h"
#include "io/VQDReader.h"

#include <benchmark/benchmark.h>

using namespace Tessaly;

namespace {

// One refinement of a whole dataset: 20,000 events, three channels of 177 samples, default filters.
// Each run reads and filters 60,000 traces.
void refineDataset(benchmark::State& state)
{
    VQDReader reader;
    reader.open(Bench::exampleCalculationFile(20000, 177));
    const VQDMetadata metadata = reader.readMetadata();
    reader.cacheAllFeatures();
    FLRefinement refinement;
    const double cpuBefore = Bench::processCpuSeconds();
    for (auto _ : state) {
        if (!refinement.refine(&reader, metadata, FLRefinementParams {}))
            state.SkipWithError("refinement failed");
    }
    state.SetItemsProcessed(state.iterations() * 20000);
    state.counters["process_cpu_ms"] = benchmark::Counter(
        1000.0 * (Bench::processCpuSeconds() - cpuBefore) / static_cast<double>(state.iterations()));
}

} // namespace

BENCHMARK(refineDataset)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);
