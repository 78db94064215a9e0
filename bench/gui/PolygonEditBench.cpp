// Reshaping a polygon gate by dragging one of its vertices on realistic example data: the press
// that takes the vertex, each move that the plot must follow (a frame), and the release that
// filters the events anew and redraws the plot with its counts.
#include "ExampleFiles.h"
#include "core/DatasetEntry.h"
#include "plot/ScatterPlot.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>
#include <benchmark/benchmark.h>
#include <map>
#include <memory>
#include <qwt_scale_map.h>

namespace {

// A main window with one dataset, a polygon gate that keeps nearly all of its events (the most
// points to filter and draw again), and that gate under edit on the plot.
struct EditScene
{
    Tessaly::MainWindow window;
    Tessaly::ScatterPlot* plot = nullptr;
    QWidget* canvas = nullptr;

    explicit EditScene(std::size_t events)
    {
        Tessaly::Bench::openExampleFiles(window, events);
        QCoreApplication::processEvents();
        plot = window.findChild<Tessaly::ScatterPlot*>("scatterPlot");
        canvas = plot->canvas();
        Tessaly::FilterRule rule;
        rule.type = Tessaly::PolygonRule;
        rule.featureName = "area_um";
        rule.featureNameY = "deform";
        const QwtScaleMap x = plot->canvasMap(QwtPlot::xBottom);
        const QwtScaleMap y = plot->canvasMap(QwtPlot::yLeft);
        const double w = canvas->width();
        const double h = canvas->height();
        for (const auto& [fx, fy] : { std::pair { 0.05, 0.05 }, std::pair { 0.95, 0.05 },
                 std::pair { 0.95, 0.95 }, std::pair { 0.05, 0.95 } })
            rule.polygonVertices.emplace_back(x.invTransform(fx * w), y.invTransform(fy * h));
        window.datasets().front()->filter.addRule(rule);
        window.onFilterChanged();
        window.onPolygonEditRequested(0, true);
        QCoreApplication::processEvents();
    }

    QPoint vertexPixel(int index)
    {
        const auto& vertex
            = window.datasets().front()->filter.rules()[0].polygonVertices[static_cast<std::size_t>(index)];
        return QPointF(plot->canvasMap(QwtPlot::xBottom).transform(vertex.first),
            plot->canvasMap(QwtPlot::yLeft).transform(vertex.second))
            .toPoint();
    }

    void send(QEvent::Type type, const QPoint& pos, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, pos, canvas->mapToGlobal(pos), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(canvas, &event);
    }
    void press(const QPoint& pos) { send(QEvent::MouseButtonPress, pos, Qt::LeftButton, Qt::LeftButton); }
    void move(const QPoint& pos) { send(QEvent::MouseMove, pos, Qt::NoButton, Qt::LeftButton); }
    void release(const QPoint& pos) { send(QEvent::MouseButtonRelease, pos, Qt::LeftButton, Qt::NoButton); }
    // Paints what the events have asked for, as the event loop would before the next frame.
    void paint() { QCoreApplication::processEvents(); }
};

EditScene& sceneFor(std::size_t events)
{
    // One window per size for all cases: opening a million events takes longer than the cases.
    // The windows are left to the end of the process, which outlives the application object.
    static auto* scenes = new std::map<std::size_t, std::unique_ptr<EditScene>>;
    auto& scene = (*scenes)[events];
    if (!scene)
        scene = std::make_unique<EditScene>(events);
    return *scene;
}

// One frame of a drag: a move of the held vertex and the repaint that shows it.
void polygonDragFrame(benchmark::State& state)
{
    EditScene& scene = sceneFor(static_cast<std::size_t>(state.range(0)));
    const QPoint start = scene.vertexPixel(2);
    scene.press(start);
    scene.paint();
    int step = 0;
    for (auto _ : state) {
        step = (step + 1) % 40;
        scene.move(start + QPoint(step, step / 2));
        scene.paint();
    }
    scene.release(start);
    scene.paint();
}

// The press that takes a vertex: the edit curve moves onto its layer and the plot is drawn once
// without it.
void polygonDragPress(benchmark::State& state)
{
    EditScene& scene = sceneFor(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        const QPoint vertex = scene.vertexPixel(2);
        scene.press(vertex);
        scene.paint();
        state.PauseTiming();
        scene.release(vertex);
        scene.paint();
        state.ResumeTiming();
    }
}

// The release: the rule takes the new vertex, the events are filtered again, the plot, overlays,
// counts and statistics are refreshed and painted.
void polygonEditRefresh(benchmark::State& state)
{
    EditScene& scene = sceneFor(static_cast<std::size_t>(state.range(0)));
    int step = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const QPoint vertex = scene.vertexPixel(2);
        // Back and forth, so that the gate keeps its size over the iterations.
        const QPoint to = vertex + (step++ % 2 == 0 ? QPoint(8, 6) : QPoint(-8, -6));
        scene.press(vertex);
        scene.move(to);
        scene.paint();
        state.ResumeTiming();
        scene.release(to);
        scene.paint();
    }
    state.counters["shown"] = static_cast<double>(scene.window.plottedX().size());
}

} // namespace

BENCHMARK(polygonDragFrame)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(polygonDragPress)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5);
BENCHMARK(polygonEditRefresh)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5);
