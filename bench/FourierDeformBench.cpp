#include "CalculationFiles.h"
#include "calc/FourierDeform.h"
#include "io/VQDReader.h"

#include <benchmark/benchmark.h>
#include <cmath>

using namespace Tessaly;

namespace {

// Fourier deformation of a whole dataset: 20,000 masks of 80 x 250 pixels read from the file, on the
// global thread pool.
void fourierDataset(benchmark::State& state)
{
    VQDReader reader;
    reader.open(Bench::exampleCalculationFile(20000, 177));
    FourierDeform fourier;
    const double cpuBefore = Bench::processCpuSeconds();
    for (auto _ : state) {
        if (!fourier.compute(&reader))
            state.SkipWithError("no masks");
    }
    state.SetItemsProcessed(state.iterations() * 20000);
    state.counters["process_cpu_ms"] = benchmark::Counter(
        1000.0 * (Bench::processCpuSeconds() - cpuBefore) / static_cast<double>(state.iterations()));
}

// One cell's analysis alone, from a typical outline.
void analyzeOneContour(benchmark::State& state)
{
    std::vector<cv::Point> outline;
    for (int i = 0; i < 180; ++i) {
        const double t = i * 2 * 3.141592653589793 / 180;
        outline.emplace_back(static_cast<int>(std::lround(125 + 30 * std::cos(t) + 3 * std::cos(3 * t))),
            static_cast<int>(std::lround(40 + 18 * std::sin(t))));
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(FourierDeform::analyzeContour(outline, 11, true).deformFc);
}

} // namespace

BENCHMARK(fourierDataset)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);
BENCHMARK(analyzeOneContour)->Unit(benchmark::kMicrosecond);
