#include "ExampleEvents.h"
#include "FrameRenderer.h"
#include "io/VQDReader.h"
#include "support/FixtureWriter.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <map>
#include <random>
#include <string>

using namespace Tessaly;
using namespace Tessaly::Testing;
namespace Example = Tessaly::ExampleData;

namespace {

constexpr std::size_t eventCount = 2000;
constexpr int frameWidth = 250;
constexpr int frameHeight = 80;

// One file per layout of 2,000 events with 80 x 250 frames, masks and an int16 trace, drawn by the
// example renderer (noisy frames compress as real ones do). Frames are chunked by 1 or by 16 events,
// stored plain or deflated. Written once per process, on first use, outside every timed region.
struct EventFiles
{
    EventFiles()
    {
        H5::Exception::dontPrint();
        Example::ExampleSettings settings;
        settings.eventCount = eventCount;
        settings.frameWidth = frameWidth;
        settings.frameHeight = frameHeight;
        const Example::ExampleEvents events = Example::generateEvents(settings);
        const Example::FrameRenderer renderer(settings);
        std::mt19937_64 rng(1);
        const std::size_t pixels = static_cast<std::size_t>(frameWidth) * frameHeight;
        std::vector<std::uint8_t> images(eventCount * pixels);
        std::vector<std::uint8_t> masks(eventCount * pixels);
        std::vector<std::vector<std::int16_t>> traces(eventCount);
        for (std::size_t i = 0; i < eventCount; ++i) {
            renderer.render(events.cells[i], rng, images.data() + i * pixels, masks.data() + i * pixels);
            std::vector<std::int16_t> channels[3];
            renderer.renderTraces(events.cells[i], rng, channels);
            traces[i] = channels[0];
        }
        for (const auto& [name, storage] : layouts()) {
            const std::string path = folder.filePath(QString::fromStdString(name + ".vqd")).toStdString();
            FixtureWriter(path)
                .column<double>("deform", events.columns.at("deform"))
                .imageStack("image", eventCount, frameHeight, frameWidth, images, storage)
                .imageStack("mask", eventCount, frameHeight, frameWidth, masks, storage)
                .trace<std::int16_t>("fl1_raw", traces, storage);
            paths[name] = path;
        }
    }

    static std::map<std::string, Storage> layouts()
    {
        return { { "plain16", Storage::chunked(16) }, { "deflate16", Storage::deflate(4, 16) },
            { "plain1", Storage::chunked(1) }, { "deflate1", Storage::deflate(4, 1) } };
    }

    QTemporaryDir folder;
    std::map<std::string, std::string> paths;
};

const EventFiles& eventFiles()
{
    static const EventFiles files;
    return files;
}

bool openLayout(benchmark::State& state, VQDReader& reader, const std::string& layout)
{
    if (!reader.open(eventFiles().paths.at(layout)) || !reader.hasImage() || !reader.hasMask()) {
        state.SkipWithError("cannot open the benchmark file");
        return false;
    }
    return true;
}

// What the main window does for a clicked event: its image and its mask, one hyperslab each, the
// dataset opened anew for each. Events are visited in a scattered order, as clicks on a plot come.
void readImageAndMask(benchmark::State& state, const std::string& layout)
{
    VQDReader reader;
    if (!openLayout(state, reader, layout))
        return;
    std::size_t index = 0;
    for (auto _ : state) {
        index = (index + 7919) % eventCount;
        int width = 0;
        int height = 0;
        const std::vector<std::uint8_t> image = reader.getImage(index, &width, &height);
        const std::vector<std::uint8_t> mask = reader.getMask(index, &width, &height);
        benchmark::DoNotOptimize(image.data());
        benchmark::DoNotOptimize(mask.data());
        if (image.size() != static_cast<std::size_t>(frameWidth) * frameHeight
            || mask.size() != image.size()) {
            state.SkipWithError("unexpected frame size");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations());
}

// One filtered trace of a scattered event through the default filter chain (the trace plot's request).
void readFilteredTrace(benchmark::State& state, const std::string& layout)
{
    VQDReader reader;
    if (!openLayout(state, reader, layout))
        return;
    reader.addTraceAlias("fl1_median_rf", "fl1_raw");
    std::size_t index = 0;
    for (auto _ : state) {
        index = (index + 7919) % eventCount;
        benchmark::DoNotOptimize(reader.getTrace("fl1_median_rf", index).data());
    }
    state.SetItemsProcessed(state.iterations());
}

} // namespace

BENCHMARK_CAPTURE(readImageAndMask, uncompressed_chunk16, std::string("plain16"))
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(readImageAndMask, deflate_chunk16, std::string("deflate16"))
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(readImageAndMask, uncompressed_chunk1, std::string("plain1"))
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(readImageAndMask, deflate_chunk1, std::string("deflate1"))
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(readFilteredTrace, deflate_chunk1, std::string("deflate1"))
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime();
