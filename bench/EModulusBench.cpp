#include "DemoLookupTable.h"
#include "SyntheticEvents.h"
#include "calc/EModulus.h"
#include "calc/EModulusMesh.h"
#include "io/VQDReader.h"
#include "support/FixtureWriter.h"

#include <H5Cpp.h>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Tessaly;

namespace {

// A table the size of a finite-element one: 130 areas by 100 moduli of the demonstration law.
std::vector<ExampleData::DemoTableRow> largeTable()
{
    return ExampleData::demoTableRows(130, 100);
}

void BM_EModulusMeshBuild(benchmark::State& state)
{
    std::vector<double> area, deform, modulus;
    for (const auto& row : largeTable()) {
        area.push_back(row.area);
        deform.push_back(row.deform);
        modulus.push_back(row.emodulus);
    }
    std::size_t triangles = 0;
    for (auto _ : state) {
        EModulusMesh mesh;
        benchmark::DoNotOptimize(buildEModulusMesh(area, deform, modulus, mesh));
        triangles = mesh.triangles.size();
    }
    state.counters["nodes"] = static_cast<double>(area.size());
    state.counters["triangles"] = static_cast<double>(triangles);
}

// compute() over a dataset of cells of two populations, the mesh already built: the lookup, the
// rescaling and the storing of the feature.
void BM_EModulusCompute(benchmark::State& state)
{
    H5::Exception::dontPrint();
    QTemporaryDir folder;
    ExampleData::writeDemoTable(
        (folder.path() + QStringLiteral("/LUT_LE_2D_FEM.txt")).toStdString(), largeTable());
    const auto count = static_cast<std::size_t>(state.range(0));
    const Bench::SyntheticEvents events = Bench::makeSyntheticEvents(count);
    const std::string path = (folder.path() + QStringLiteral("/events.vqd")).toStdString();
    Testing::FixtureWriter(path)
        .column<double>("area_um", events.area)
        .column<double>("deform", events.deform)
        .close();
    VQDReader reader;
    reader.open(path);
    reader.cacheAllFeatures();

    EModulus engine;
    engine.setSearchFolders({ folder.path() });
    engine.triangulate(0);
    EModulusParams params;
    params.flowRate = 0.06;
    for (auto _ : state)
        benchmark::DoNotOptimize(engine.compute(&reader, params));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_EModulusIsoelastics(benchmark::State& state)
{
    QTemporaryDir folder;
    ExampleData::writeDemoTable(
        (folder.path() + QStringLiteral("/LUT_LE_2D_FEM.txt")).toStdString(), largeTable());
    EModulus engine;
    engine.setSearchFolders({ folder.path() });
    engine.triangulate(0);
    for (auto _ : state)
        benchmark::DoNotOptimize(engine.isoelastics(EModulusParams()));
}

} // namespace

BENCHMARK(BM_EModulusMeshBuild)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EModulusCompute)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EModulusIsoelastics)->Unit(benchmark::kMillisecond);
