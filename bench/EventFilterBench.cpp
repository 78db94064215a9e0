#include "SyntheticEvents.h"
#include "core/EventFilter.h"

#include <benchmark/benchmark.h>
#include <cmath>

using namespace Tessaly;

namespace {

// Three ranges and a 20-vertex ellipse on area and deformation around the larger population.
EventFilter typicalFilter(int polygonScaleMode)
{
    EventFilter filter;
    const auto range = [](const char* feature, double lo, double hi) {
        FilterRule rule;
        rule.featureName = feature;
        rule.minValue = lo;
        rule.maxValue = hi;
        return rule;
    };
    filter.addRule(range("area_um", 20.0, 200.0));
    filter.addRule(range("deform", 0.0, 0.1));
    filter.addRule(range("bright_avg", 80.0, 170.0));
    FilterRule polygon;
    polygon.type = PolygonRule;
    polygon.featureName = "area_um";
    polygon.featureNameY = "deform";
    polygon.scaleXMode = polygonScaleMode;
    polygon.scaleYMode = polygonScaleMode;
    for (int k = 0; k < 20; ++k) {
        const double angle = 2.0 * 3.14159265358979323846 * k / 20.0;
        polygon.polygonVertices.emplace_back(80.0 + 45.0 * std::cos(angle), 0.065 + 0.03 * std::sin(angle));
    }
    filter.addRule(polygon);
    return filter;
}

void evaluateFilter(benchmark::State& state, int polygonScaleMode)
{
    const std::size_t count = static_cast<std::size_t>(state.range(0));
    const Bench::SyntheticEvents events = Bench::makeSyntheticEvents(count);
    const FeatureColumns columns { { "area_um", &events.area }, { "deform", &events.deform },
        { "bright_avg", &events.brightness } };
    const EventFilter filter = typicalFilter(polygonScaleMode);
    std::size_t passed = 0;
    for (auto _ : state) {
        const std::vector<std::int32_t> indices = filter.evaluate(columns, count);
        passed = indices.size();
        benchmark::DoNotOptimize(indices.data());
    }
    state.counters["passed"] = static_cast<double>(passed);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_EvaluateRangesAndPolygon(benchmark::State& state)
{
    evaluateFilter(state, 0);
}

void BM_EvaluateRangesAndLogPolygon(benchmark::State& state)
{
    evaluateFilter(state, 1);
}

} // namespace

BENCHMARK(BM_EvaluateRangesAndPolygon)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EvaluateRangesAndLogPolygon)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
