#include "MainWindowFixture.h"
#include "core/PolygonRuleId.h"
#include "plot/ScatterPlot.h"
#include "support/FixtureWriter.h"
#include "ui/FilterDockWidget.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QMouseEvent>
#include <QTest>
#include <cmath>
#include <qwt_plot_shapeitem.h>
#include <qwt_scale_map.h>

using namespace Tessaly;
using Tessaly::Testing::FixtureWriter;
using Tessaly::Testing::MainWindowFixture;

namespace {

QPolygonF polygonOf(std::initializer_list<QPointF> points)
{
    return QPolygonF(QVector<QPointF>(points));
}

QPolygon pixelPolygonOf(std::initializer_list<QPoint> points)
{
    return QPolygon(QVector<QPoint>(points));
}

struct Columns
{
    std::vector<double> x;
    std::vector<double> y;
};

// A grid of events, evenly spaced in the space of the given scale modes, so that a polygon's edges
// pass close to many of them and a polygon straight in the wrong space takes a different set.
Columns gridEvents(int scaleX, int scaleY)
{
    Columns columns;
    for (int i = 0; i < 40; ++i) {
        for (int j = 0; j < 40; ++j) {
            const double u = (i + 0.37) / 40.0;
            const double v = (j + 0.61) / 40.0;
            // Log: 1 to 10^4. Pseudo-log: -10^4 to 10^4 through the linear part. Linear: 0 to 100.
            columns.x.push_back(scaleX == 1 ? std::pow(10.0, 4.0 * u) : 100.0 * u);
            const double t = 5.0 * v - 2.5;
            columns.y.push_back(scaleY == 2
                    ? (std::abs(t) <= 0.5 ? t / 0.005 : std::copysign(std::pow(10.0, std::abs(t) + 1.5), t))
                    : v);
        }
    }
    return columns;
}

} // namespace

class MainWindowPolygons : public MainWindowFixture
{
protected:
    void open(const Columns& columns, const QString& name = QStringLiteral("grid.vqd"))
    {
        const QString path = folder.filePath(name);
        FixtureWriter(path.toStdString())
            .column<double>("area_um", columns.x)
            .column<double>("deform", columns.y)
            .column<double>("bright_avg", columns.x)
            .stringAttribute("setup:module composition", "Vortiq")
            .stringAttribute("experiment:sample", "S")
            .close();
        if (!window) {
            makeWindow();
            window->resize(1400, 900);
            window->show();
            ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        }
        window->openDataset(path);
        ASSERT_TRUE(waitUntilIdle());
        data = columns;
    }

    ScatterPlot* plot() { return window->findChild<ScatterPlot*>("scatterPlot"); }
    QWidget* canvas() { return plot()->canvas(); }
    FilterDockWidget* dock() { return window->findChild<FilterDockWidget*>(); }
    QComboBox* combo(const char* name) { return window->findChild<QComboBox*>(name); }
    QString status() { return window->findChild<QLabel*>("statusLabel")->text(); }

    void mouse(QEvent::Type type, const QPoint& pos, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, pos, canvas()->mapToGlobal(pos), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(canvas(), &event);
    }
    void click(const QPoint& pos)
    {
        mouse(QEvent::MouseButtonPress, pos, Qt::LeftButton, Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, pos, Qt::LeftButton, Qt::NoButton);
    }
    void doubleClick(const QPoint& pos)
    {
        click(pos);
        mouse(QEvent::MouseButtonDblClick, pos, Qt::LeftButton, Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, pos, Qt::LeftButton, Qt::NoButton);
    }
    void dragVertex(const QPoint& from, const QPoint& to)
    {
        mouse(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
        mouse(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
    }

    // Pixels as fractions of the canvas.
    QPoint at(double fx, double fy)
    {
        return QPoint(static_cast<int>(fx * canvas()->width()), static_cast<int>(fy * canvas()->height()));
    }

    // Clicks the vertices and closes the polygon with a double click on the last; the axes as they
    // were while drawing are kept to find what the polygon encloses on the screen.
    void drawPolygon(const QPolygon& pixels)
    {
        xMap = plot()->canvasMap(QwtPlot::xBottom);
        yMap = plot()->canvasMap(QwtPlot::yLeft);
        for (int i = 0; i + 1 < pixels.size(); ++i)
            click(pixels[i]);
        doubleClick(pixels.last());
    }

    // The events whose points lay inside the polygon on the canvas while it was drawn.
    std::vector<int> eventsInside(const QPolygonF& pixels) const
    {
        std::vector<int> inside;
        for (std::size_t i = 0; i < data.x.size(); ++i) {
            const QPointF p(xMap.transform(data.x[i]), yMap.transform(data.y[i]));
            if (pixels.containsPoint(p, Qt::OddEvenFill))
                inside.push_back(static_cast<int>(i));
        }
        return inside;
    }

    Columns data;
    QwtScaleMap xMap;
    QwtScaleMap yMap;
};

TEST_F(MainWindowPolygons, APolygonOnLogAndPseudoLogAxesKeepsExactlyTheEventsItEnclosesOnScreen)
{
    open(gridEvents(1, 2));
    combo("xScaleCombo")->setCurrentIndex(1);
    combo("yScaleCombo")->setCurrentIndex(2);
    QApplication::processEvents();

    window->onPolygonDrawRequested();
    ASSERT_TRUE(plot()->isDrawing());
    const QPolygon pixels
        = pixelPolygonOf({ at(0.13, 0.21), at(0.81, 0.09), at(0.62, 0.53), at(0.93, 0.88), at(0.21, 0.77) });
    drawPolygon(pixels);

    DatasetEntry* entry = window->datasets().front();
    ASSERT_EQ(entry->filter.ruleCount(), 1);
    const FilterRule& rule = entry->filter.rules()[0];
    EXPECT_EQ(rule.type, PolygonRule);
    EXPECT_EQ(rule.featureName, "area_um");
    EXPECT_EQ(rule.featureNameY, "deform");
    EXPECT_EQ(rule.scaleXMode, 1);
    EXPECT_EQ(rule.scaleYMode, 2);
    EXPECT_TRUE(rule.enabled);
    ASSERT_EQ(rule.polygonVertices.size(), 5u);

    const std::vector<int> expected = eventsInside(QPolygonF(pixels));
    ASSERT_GT(expected.size(), 100u);
    ASSERT_LT(expected.size(), 1500u);
    EXPECT_EQ(window->plottedEvents(), expected);

    // The same vertices taken as straight in data units select other events: the modes matter.
    FilterRule linear = rule;
    linear.scaleXMode = linear.scaleYMode = 0;
    EventFilter other;
    other.addRule(linear);
    const std::vector<std::int32_t> linearEvents
        = other.evaluate({ { "area_um", &data.x }, { "deform", &data.y } }, data.x.size());
    EXPECT_NE(std::vector<int>(linearEvents.begin(), linearEvents.end()), expected);
}

TEST_F(MainWindowPolygons, DrawingAddsAnOwnRuleAndTheCountsFollow)
{
    open(gridEvents(0, 0));
    EXPECT_EQ(status(), "Loaded: S (1600 events)");
    window->onPolygonDrawRequested();
    dock()->setPolygonDrawChecked(true);
    const QPolygon pixels = pixelPolygonOf({ at(0.2, 0.2), at(0.6, 0.2), at(0.6, 0.6), at(0.2, 0.6) });
    drawPolygon(pixels);
    EXPECT_FALSE(dock()->isPolygonDrawChecked());
    ASSERT_EQ(window->datasets().front()->filter.ruleCount(), 1);
    const std::vector<int> expected = eventsInside(QPolygonF(pixels));
    EXPECT_EQ(window->plottedEvents(), expected);
    const QString shown = QString::number(expected.size());
    EXPECT_TRUE(status().startsWith(QStringLiteral("Loaded: S (%1/1600 events shown").arg(shown)))
        << status().toStdString();
    // The new rule is drawn as an overlay with its index as id.
    ASSERT_EQ(plot()->polygonOverlays().count(0), 1u);
    EXPECT_TRUE(plot()->polygonOverlays().at(0)->isVisible());

    // Esc while drawing unchecks the dock's button and adds nothing.
    window->onPolygonDrawRequested();
    dock()->setPolygonDrawChecked(true);
    click(at(0.5, 0.5));
    QTest::keyClick(canvas(), Qt::Key_Escape);
    EXPECT_FALSE(dock()->isPolygonDrawChecked());
    EXPECT_EQ(window->datasets().front()->filter.ruleCount(), 1);
}

TEST_F(MainWindowPolygons, EditingMovesTheRuleAndEscapeKeepsTheLastReportedShape)
{
    open(gridEvents(0, 0));
    window->onPolygonDrawRequested();
    const QPolygon pixels = pixelPolygonOf({ at(0.2, 0.2), at(0.6, 0.2), at(0.6, 0.6), at(0.2, 0.6) });
    drawPolygon(pixels);
    DatasetEntry* entry = window->datasets().front();
    const auto before = window->plottedEvents();

    window->onPolygonEditRequested(0, true);
    ASSERT_TRUE(plot()->isEditing());
    EXPECT_EQ(plot()->editId(), 0);
    // The edit curve stands in for the overlay.
    EXPECT_TRUE(plot()->polygonOverlays().count(0) == 0 || !plot()->polygonOverlays().at(0)->isVisible());

    // The axes follow the filtered points; the vertex is found where it is drawn now.
    const auto pixelOf = [this](const PlanePoint& vertex) {
        return QPointF(plot()->canvasMap(QwtPlot::xBottom).transform(vertex.first),
            plot()->canvasMap(QwtPlot::yLeft).transform(vertex.second))
            .toPoint();
    };
    const QPoint corner = pixelOf(entry->filter.rules()[0].polygonVertices[2]);
    const QPoint target = corner + QPoint(60, 40);
    xMap = plot()->canvasMap(QwtPlot::xBottom);
    yMap = plot()->canvasMap(QwtPlot::yLeft);
    dragVertex(corner, target);
    const FilterRule& moved = entry->filter.rules()[0];
    EXPECT_NEAR(moved.polygonVertices[2].first, xMap.invTransform(target.x()), 1e-9);
    EXPECT_NEAR(moved.polygonVertices[2].second, yMap.invTransform(target.y()), 1e-9);
    EXPECT_EQ(moved.scaleXMode, 0);
    EXPECT_GT(window->plottedEvents().size(), before.size());
    QPolygonF now;
    for (const PlanePoint& vertex : moved.polygonVertices)
        now << QPointF(xMap.transform(vertex.first), yMap.transform(vertex.second));
    EXPECT_EQ(window->plottedEvents(), eventsInside(now));
    EXPECT_TRUE(plot()->isEditing());
    const std::vector<PlanePoint> reported = moved.polygonVertices;
    const auto reportedEvents = window->plottedEvents();

    // A second drag cut short by Esc: the edit ends with the first drag's shape standing.
    const QPoint other = pixelOf(moved.polygonVertices[0]);
    mouse(QEvent::MouseButtonPress, other, Qt::LeftButton, Qt::LeftButton);
    mouse(QEvent::MouseMove, other + QPoint(-50, -50), Qt::NoButton, Qt::LeftButton);
    QTest::keyClick(canvas(), Qt::Key_Escape);
    EXPECT_FALSE(plot()->isEditing());
    EXPECT_FALSE(dock()->isPolygonEditChecked(0));
    EXPECT_EQ(entry->filter.rules()[0].polygonVertices, reported);
    EXPECT_EQ(window->plottedEvents(), reportedEvents);
    ASSERT_EQ(plot()->polygonOverlays().count(0), 1u);
    EXPECT_TRUE(plot()->polygonOverlays().at(0)->isVisible());
}

TEST_F(MainWindowPolygons, APolygonIsEditedOnlyOnItsOwnAxesAndOnItsOwnDataset)
{
    open(gridEvents(0, 0));
    window->onPolygonDrawRequested();
    drawPolygon(pixelPolygonOf({ at(0.2, 0.2), at(0.6, 0.2), at(0.6, 0.6) }));
    ASSERT_EQ(window->datasets().front()->filter.ruleCount(), 1);

    // Other axes: the request is refused and its toggle goes back off.
    QComboBox* x = combo("xFeatureCombo");
    x->setCurrentIndex(x->findData(QStringLiteral("bright_avg")));
    dock()->setPolygonEditChecked(0, true);
    window->onPolygonEditRequested(0, true);
    EXPECT_FALSE(plot()->isEditing());
    EXPECT_FALSE(dock()->isPolygonEditChecked(0));
    // An index past the list names no polygon to edit.
    window->onPolygonEditRequested(3, true);
    EXPECT_FALSE(plot()->isEditing());

    // Changing the axes during an edit ends it.
    x->setCurrentIndex(x->findData(QStringLiteral("area_um")));
    window->onPolygonEditRequested(0, true);
    ASSERT_TRUE(plot()->isEditing());
    dock()->setPolygonEditChecked(0, true);
    x->setCurrentIndex(x->findData(QStringLiteral("bright_avg")));
    EXPECT_FALSE(plot()->isEditing());
    EXPECT_FALSE(dock()->isPolygonEditChecked(0));

    // So does switching to another dataset, whose rule 0 is not the one being edited.
    x->setCurrentIndex(x->findData(QStringLiteral("area_um")));
    window->onPolygonEditRequested(0, true);
    ASSERT_TRUE(plot()->isEditing());
    open(gridEvents(0, 0), QStringLiteral("second.vqd"));
    window->onDatasetSelected(1);
    EXPECT_FALSE(plot()->isEditing());
    // A late report for the old dataset's rule changes nothing on the new one.
    window->onPolygonEdited(0, polygonOf({ QPointF(1, 1), QPointF(2, 1), QPointF(2, 2) }));
    EXPECT_EQ(window->datasets()[1]->filter.ruleCount(), 0);
}

TEST_F(MainWindowPolygons, AGroupPolygonIsDrawnIntoTheGroupAndEditedThroughItsCodedId)
{
    open(gridEvents(0, 0));
    DatasetEntry* entry = window->datasets().front();
    window->addFilterGroup("");
    const int group = window->addFilterGroup("");
    ASSERT_EQ(group, 1);
    window->setGroupEnabled(entry->id, group, true);

    window->onAddPolygonToGroupRequested(group);
    EXPECT_TRUE(dock()->isPolygonDrawChecked());
    ASSERT_TRUE(plot()->isDrawing());
    const QPolygon pixels = pixelPolygonOf({ at(0.3, 0.3), at(0.7, 0.3), at(0.5, 0.7) });
    drawPolygon(pixels);
    EXPECT_FALSE(dock()->isPolygonDrawChecked());
    EXPECT_EQ(entry->filter.ruleCount(), 0);
    const FilterGroup* target = window->findFilterGroupById(group);
    ASSERT_EQ(target->rules.size(), 1u);
    EXPECT_TRUE(window->findFilterGroupById(0)->rules.empty());
    EXPECT_EQ(window->plottedEvents(), eventsInside(QPolygonF(pixels)));
    ASSERT_EQ(plot()->polygonOverlays().count(1010000), 1u);

    // The next drawing from the dock's own button goes to the dataset again.
    window->onPolygonDrawRequested();
    drawPolygon(pixelPolygonOf({ at(0.1, 0.1), at(0.9, 0.1), at(0.9, 0.9), at(0.1, 0.9) }));
    EXPECT_EQ(entry->filter.ruleCount(), 1);
    EXPECT_EQ(target->rules.size(), 1u);

    window->onGroupPolygonEditRequested(group, 0, true);
    ASSERT_TRUE(plot()->isEditing());
    EXPECT_EQ(plot()->editId(), groupRuleId(group, 0));
    const auto& overlays = plot()->polygonOverlays();
    EXPECT_TRUE(
        overlays.count(groupRuleId(group, 0)) == 0 || !overlays.at(groupRuleId(group, 0))->isVisible());
    const PlanePoint apex = target->rules[0].polygonVertices[2];
    const QPoint from = QPointF(plot()->canvasMap(QwtPlot::xBottom).transform(apex.first),
        plot()->canvasMap(QwtPlot::yLeft).transform(apex.second))
                            .toPoint();
    const QPoint to = from + QPoint(0, 50);
    const double expectedY = plot()->canvasMap(QwtPlot::yLeft).invTransform(to.y());
    dragVertex(from, to);
    EXPECT_NEAR(target->rules[0].polygonVertices[2].second, expectedY, 1e-9);
    EXPECT_EQ(entry->filter.rules()[0].polygonVertices.size(), 4u);

    window->onGroupPolygonEditRequested(group, 0, false);
    EXPECT_FALSE(plot()->isEditing());
    ASSERT_EQ(overlays.count(groupRuleId(group, 0)), 1u);
    EXPECT_TRUE(overlays.at(groupRuleId(group, 0))->isVisible());
    // Ids of missing groups or rules change nothing.
    window->onPolygonEdited(groupRuleId(7, 0), polygonOf({ QPointF(1, 1), QPointF(2, 1), QPointF(2, 2) }));
    window->onPolygonEdited(
        groupRuleId(group, 5), polygonOf({ QPointF(1, 1), QPointF(2, 1), QPointF(2, 2) }));
    EXPECT_EQ(target->rules.size(), 1u);
}

TEST_F(MainWindowPolygons, AnEditEndsWhenItsRuleIsChangedOrMovedElsewhere)
{
    open(gridEvents(0, 0));
    DatasetEntry* entry = window->datasets().front();
    window->onPolygonDrawRequested();
    drawPolygon(pixelPolygonOf({ at(0.1, 0.1), at(0.5, 0.1), at(0.3, 0.5) }));
    window->onPolygonDrawRequested();
    drawPolygon(pixelPolygonOf({ at(0.4, 0.4), at(0.9, 0.4), at(0.7, 0.9) }));
    ASSERT_EQ(entry->filter.ruleCount(), 2);

    // Removing the first rule moves the edited second one to index 0, where the edit's id points
    // at nothing now.
    window->onPolygonEditRequested(0, true);
    ASSERT_TRUE(plot()->isEditing());
    window->onPolygonEditRequested(1, true);
    ASSERT_EQ(plot()->editId(), 1);
    const std::vector<PlanePoint> second = entry->filter.rules()[1].polygonVertices;
    entry->filter.removeRule(0);
    window->onFilterChanged();
    EXPECT_FALSE(plot()->isEditing());

    // With a rule before it again, index 0 is another polygon on the same axes: the edit of index
    // 1 must not go on as an edit of that one.
    FilterRule first = entry->filter.rules()[0];
    first.polygonVertices = { { 1, 0.1 }, { 50, 0.1 }, { 25, 0.5 } };
    const FilterRule edited = entry->filter.rules()[0];
    entry->filter.addRule(edited);
    entry->filter.setRule(0, first);
    window->onFilterChanged();
    window->onPolygonEditRequested(1, true);
    ASSERT_TRUE(plot()->isEditing());
    entry->filter.removeRule(0);
    entry->filter.addRule(first);
    window->onFilterChanged();
    EXPECT_FALSE(plot()->isEditing());
    EXPECT_EQ(entry->filter.rules()[0].polygonVertices, second);
}
