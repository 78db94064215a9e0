#include "MainWindowFixture.h"
#include "plot/ScatterPlot.h"
#include "plot/TracePlot.h"
#include "support/FixtureWriter.h"

#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QTreeWidget>
#include <cmath>
#include <limits>
#include <qwt_plot_curve.h>

using namespace Tessaly;
using Tessaly::Testing::FixtureWriter;
using Tessaly::Testing::MainWindowFixture;

namespace {

constexpr double missing = std::numeric_limits<double>::quiet_NaN();

void choose(QComboBox* combo, const QString& key)
{
    const int index = combo->findData(key);
    ASSERT_GE(index, 0) << key.toStdString();
    combo->setCurrentIndex(index);
}

} // namespace

class MainWindowRefresh : public MainWindowFixture
{
protected:
    // A small instrument file with the given columns.
    QString writeColumns(
        const QString& name, const std::vector<std::pair<std::string, std::vector<double>>>& columns)
    {
        const QString path = folder.filePath(name);
        FixtureWriter writer(path.toStdString());
        for (const auto& [feature, values] : columns)
            writer.column<double>(feature, values);
        writer.stringAttribute("setup:module composition", "Vortiq")
            .stringAttribute("experiment:sample", "S")
            .close();
        return path;
    }

    QComboBox* combo(const char* name) { return window->findChild<QComboBox*>(name); }
    QString status() { return window->findChild<QLabel*>("statusLabel")->text(); }
    ScatterPlot* plot() { return window->findChild<ScatterPlot*>("scatterPlot"); }
};

TEST_F(MainWindowRefresh, NonFinitePointsLeaveThePlotAndTheShownCount)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeColumns("nan.vqd",
        { { "area_um", { 10, 20, missing, 40, std::numeric_limits<double>::infinity() } },
            { "deform", { 0.1, 0.2, 0.3, 0.4, 0.5 } } }));
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_EQ(status(), "Loaded: S (3/5 events shown (60.0% pass filter))");
    EXPECT_EQ(w.plottedEvents(), (std::vector<int> { 0, 1, 3 }));
    EXPECT_EQ(w.plottedX(), (std::vector<double> { 10, 20, 40 }));
    EXPECT_EQ(plot()->xValues(), w.plottedX());
    EXPECT_EQ(plot()->axisTitle(QwtPlot::xBottom).text(), "Area [µm²]");
    // Without fluorescence channels there is no trace plot.
    EXPECT_FALSE(w.findChild<TracePlot*>("tracePlot")->isVisibleTo(&w));
}

// Large enough that the points are checked in blocks: the survivors of each block keep their order
// and their events, with a filter in force and with a colour column of its own gaps.
TEST_F(MainWindowRefresh, NonFinitePointsOfALargeFileLeaveInOrder)
{
    const std::size_t n = 300000;
    std::vector<double> area(n), deform(n), bright(n);
    for (std::size_t i = 0; i < n; ++i) {
        area[i] = i % 7919 == 3 ? missing : 10.0 + static_cast<double>(i % 1000);
        deform[i] = i % 104729 == 5 ? std::numeric_limits<double>::infinity() : 0.01;
        bright[i] = i % 50021 == 11 ? missing : 100.0;
    }
    MainWindow& w = makeWindow();
    w.openDataset(
        writeColumns("gaps.vqd", { { "area_um", area }, { "deform", deform }, { "bright_avg", bright } }));
    ASSERT_TRUE(waitUntilIdle());
    w.datasets().front()->filter.addRule([] {
        FilterRule rule;
        rule.featureName = "area_um";
        rule.minValue = 500;
        rule.maxValue = 2000;
        return rule;
    }());
    combo("colorFeatureCombo")->setCurrentIndex(combo("colorFeatureCombo")->findData("bright_avg"));

    std::vector<int> expected;
    for (std::size_t i = 0; i < n; ++i) {
        if (area[i] >= 500 && std::isfinite(deform[i]) && std::isfinite(bright[i]))
            expected.push_back(static_cast<int>(i));
    }
    ASSERT_EQ(w.plottedEvents(), expected);
    ASSERT_EQ(w.plottedX().size(), expected.size());
    for (std::size_t k = 0; k < expected.size(); k += 997)
        EXPECT_EQ(w.plottedX()[k], area[static_cast<std::size_t>(expected[k])]) << k;
    EXPECT_EQ(w.plottedColor(), std::vector<double>(expected.size(), 100.0));
}

TEST_F(MainWindowRefresh, LogAxesWarnAboutPointsTheyCannotDraw)
{
    makeWindow();
    window->openDataset(writeColumns("log.vqd",
        { { "area_um", { -1, 0, 5, 6 } }, { "pos_x", { 0, 1, 2, 3 } },
            { "deform", { 0.1, 0.2, 0.3, 0.4 } } }));
    ASSERT_TRUE(waitUntilIdle());
    QComboBox* scale = combo("xScaleCombo");
    scale->setCurrentIndex(1);
    EXPECT_EQ(scale->itemText(1), "Log ⚠");
    EXPECT_EQ(scale->toolTip(),
        "X-axis scale mode: 2 points with value ≤ 0 not shown (cannot be drawn on a log axis)");
    EXPECT_FALSE(scale->styleSheet().isEmpty());
    // The points stay in the plot; they just can't be drawn.
    EXPECT_EQ(window->plottedX().size(), 4u);

    choose(combo("xFeatureCombo"), "pos_x");
    EXPECT_EQ(scale->toolTip(),
        "X-axis scale mode: 1 point with value ≤ 0 not shown (cannot be drawn on a log axis)");

    scale->setCurrentIndex(0);
    EXPECT_EQ(scale->itemText(1), "Log");
    EXPECT_EQ(scale->toolTip(), "X-axis scale mode");
    EXPECT_TRUE(scale->styleSheet().isEmpty());
}

TEST_F(MainWindowRefresh, ReturningToADatasetRestoresItsPlotSettings)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("a.vqd", "A"));
    w.openDataset(writeDataset("b.vqd", "B"));
    ASSERT_TRUE(waitUntilIdle());
    auto* list = w.findChild<QListWidget*>("datasetList");
    list->setCurrentRow(0);
    choose(combo("xFeatureCombo"), "size_x");
    choose(combo("colorFeatureCombo"), "__density_kde__");
    combo("yScaleCombo")->setCurrentIndex(2);
    combo("contourCombo")->setCurrentIndex(1);
    w.findChild<QSpinBox*>("innerContourSpinBox")->setValue(20);

    list->setCurrentRow(1);
    EXPECT_EQ(combo("xFeatureCombo")->currentData().toString(), "area_um");
    EXPECT_EQ(combo("yScaleCombo")->currentIndex(), 0);

    list->setCurrentRow(0);
    EXPECT_EQ(combo("xFeatureCombo")->currentData().toString(), "size_x");
    EXPECT_EQ(combo("colorFeatureCombo")->currentData().toString(), "__density_kde__");
    EXPECT_EQ(combo("yScaleCombo")->currentIndex(), 2);
    EXPECT_EQ(combo("contourCombo")->currentIndex(), 1);
    EXPECT_EQ(w.findChild<QSpinBox*>("innerContourSpinBox")->value(), 20);
    // Density colours every point and the contours are drawn.
    EXPECT_EQ(w.plottedColor().size(), w.plottedX().size());
    EXPECT_FALSE(plot()->contours().empty());
}

TEST_F(MainWindowRefresh, AFilteredOutEventLosesItsHighlightUntilTheNextRefresh)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("cells.vqd", "Cells", 60, true));
    ASSERT_TRUE(waitUntilIdle());
    DatasetEntry* entry = w.datasets().front();
    // "index" counts from 1: the rule keeps events 9 to 19.
    FilterRule rule;
    rule.featureName = "index";
    rule.minValue = 10;
    rule.maxValue = 20;
    entry->filter.addRule(rule);
    w.onFilterChanged();
    ASSERT_EQ(w.plottedEvents().size(), 11u);
    // The event shown before (0) dropped out: the first shown event is selected.
    auto* spin = w.findChild<QSpinBox*>("eventSpinBox");
    EXPECT_EQ(spin->value(), 9);
    EXPECT_TRUE(plot()->highlight()->isVisible());
    EXPECT_EQ(plot()->highlight()->sample(0).x(), w.plottedX()[0]);

    spin->setValue(3);
    EXPECT_EQ(entry->currentEventIndex, 3);
    EXPECT_FALSE(plot()->highlight()->isVisible());
    // The viewer still shows the event, and the table its values.
    auto* table = w.findChild<QTableWidget*>("eventTable");
    ASSERT_GT(table->rowCount(), 10);
    for (int row = 0; row < table->rowCount(); ++row) {
        if (table->item(row, 0)->data(Qt::UserRole).toString() == "index") {
            EXPECT_EQ(table->item(row, 1)->text(), "4");
        }
    }

    w.onFilterChanged();
    EXPECT_EQ(entry->currentEventIndex, 9);
    EXPECT_EQ(spin->value(), 9);
    EXPECT_TRUE(plot()->highlight()->isVisible());
}

TEST_F(MainWindowRefresh, EventsShowTheirTraces)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("cells.vqd", "Cells", 40, true));
    ASSERT_TRUE(waitUntilIdle());
    auto* traces = w.findChild<TracePlot*>("tracePlot");
    ASSERT_TRUE(traces->hasChannels());
    EXPECT_TRUE(traces->isVisibleTo(&w));
    w.findChild<QSpinBox*>("eventSpinBox")->setValue(5);
    const std::vector<float> expected = w.datasets().front()->reader->getTrace("fl1_median", 5);
    ASSERT_FALSE(traces->traceCurves().empty());
    const QwtPlotCurve* first = traces->traceCurves().front();
    ASSERT_EQ(first->dataSize(), expected.size());
    EXPECT_FLOAT_EQ(static_cast<float>(first->sample(10).y()), expected[10]);
}

TEST_F(MainWindowRefresh, OnlyAChangeOfAxesResetsTheZoom)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("a.vqd", "A"));
    ASSERT_TRUE(waitUntilIdle());
    plot()->setAxisScale(QwtPlot::xBottom, 0, 1);
    ASSERT_FALSE(plot()->axisAutoScale(QwtPlot::xBottom));
    choose(combo("colorFeatureCombo"), "deform");
    EXPECT_FALSE(plot()->axisAutoScale(QwtPlot::xBottom));
    choose(combo("xFeatureCombo"), "size_x");
    EXPECT_TRUE(plot()->axisAutoScale(QwtPlot::xBottom));
}

TEST_F(MainWindowRefresh, TheApplyButtonLightsUpWhenDatasetsDisagree)
{
    MainWindow& w = makeWindow();
    auto* button = w.findChild<QPushButton*>("applyPlotSettingsButton");
    w.openDataset(writeDataset("a.vqd", "A"));
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_FALSE(button->isEnabled());

    w.openDataset(writeDataset("b.vqd", "B"));
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_TRUE(button->isEnabled());
    EXPECT_TRUE(button->styleSheet().isEmpty());

    choose(combo("yFeatureCombo"), "circ");
    EXPECT_FALSE(button->styleSheet().isEmpty());
    button->click();
    EXPECT_TRUE(button->styleSheet().isEmpty());
    EXPECT_EQ(w.datasets()[0]->yFeatureName, "circ");
}

TEST_F(MainWindowRefresh, ADatasetWithoutEventsShowsAnEmptyPlot)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeColumns("empty.vqd", { { "area_um", {} }, { "deform", {} } }));
    ASSERT_TRUE(waitUntilIdle());
    auto* spin = w.findChild<QSpinBox*>("eventSpinBox");
    EXPECT_FALSE(spin->isEnabled());
    EXPECT_EQ(spin->value(), 0);
    // Empty columns read as missing data; the box names them, and the status tells of the dataset.
    ASSERT_FALSE(messages.empty());
    const VQDReader& reader = *w.datasets()[0]->reader;
    EXPECT_EQ(messages.back().text,
        "Failed to read feature data.\n" + QString::fromStdString(reader.featureLabel("area_um")) + "\n"
            + QString::fromStdString(reader.featureLabel("deform")));
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text().left(8), "Loaded: ");
    EXPECT_TRUE(plot()->xValues().empty());
}

TEST_F(MainWindowRefresh, MetadataIsShownBySectionWithTheRestUnderOther)
{
    MainWindow& w = makeWindow();
    const QString path = folder.filePath("meta.vqd");
    FixtureWriter(path.toStdString())
        .column<double>("deform", { 0.1 })
        .column<double>("area_um", { 50 })
        .stringAttribute("setup:module composition", "Vortiq")
        .floatAttribute("setup:flow rate", 0.06)
        .stringAttribute("experiment:sample", "M")
        .stringAttribute("export:date", "2026-11-22")
        .stringAttribute("vendor:note", "kept")
        .stringAttribute("plain", "no section")
        .close();
    w.openDataset(path);
    ASSERT_TRUE(waitUntilIdle());
    w.showMetadata();
    auto* tree = w.findChild<QTreeWidget*>("metadataTree");
    QStringList sections;
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        sections << tree->topLevelItem(i)->text(0);
    EXPECT_EQ(sections, (QStringList { "Experiment", "Setup", "Export", "Other" }));
    QTreeWidgetItem* setup = tree->topLevelItem(1);
    ASSERT_EQ(setup->childCount(), 2);
    EXPECT_EQ(setup->child(0)->text(0), "flow rate");
    EXPECT_EQ(setup->child(0)->text(1), "0.060000");
    QTreeWidgetItem* other = tree->topLevelItem(3);
    ASSERT_EQ(other->childCount(), 2);
    EXPECT_EQ(other->child(0)->text(0), "plain");
    EXPECT_EQ(other->child(1)->text(0), "vendor:note");
    EXPECT_EQ(tree->topLevelItem(0)->font(0).weight(), QFont::Bold);
}

TEST_F(MainWindowRefresh, GroupRulesApplyOnlyWhereTheGroupIsOn)
{
    MainWindow& w = makeWindow();
    w.openDataset(
        writeColumns("one.vqd", { { "area_um", { 10, 20, 30, 40 } }, { "deform", { 0.1, 0.2, 0.3, 0.4 } } }));
    w.openDataset(
        writeColumns("two.vqd", { { "area_um", { 10, 20, 30, 40 } }, { "deform", { 0.1, 0.2, 0.3, 0.4 } } }));
    ASSERT_TRUE(waitUntilIdle());
    DatasetEntry* one = w.datasets()[0];
    DatasetEntry* two = w.datasets()[1];
    FilterRule own;
    own.featureName = "area_um";
    own.minValue = 15;
    own.maxValue = 100;
    two->filter.addRule(own);

    const int group = w.addFilterGroup("");
    EXPECT_EQ(w.findFilterGroupById(group)->name, "Filter group 1");
    EXPECT_FALSE(w.isGroupEnabled(two, group));
    FilterRule shared;
    shared.featureName = "deform";
    shared.maxValue = 0.35;
    shared.propagationId = "p";
    w.addRuleToGroup(group, shared);
    EXPECT_TRUE(w.findFilterGroupById(group)->rules[0].propagationId.empty());

    w.setGroupEnabled(two->id, group, true);
    // The dataset's own rules come first, then the group's; its own switch and mode apply.
    const EventFilter effective = w.buildEffectiveFilter(two);
    ASSERT_EQ(effective.ruleCount(), 2);
    EXPECT_EQ(effective.rules()[0].featureName, "area_um");
    EXPECT_EQ(effective.rules()[1].featureName, "deform");
    EXPECT_EQ(w.buildEffectiveFilter(one).ruleCount(), 0);
    EXPECT_EQ(w.buildEffectiveFilter(nullptr).ruleCount(), 0);
    // The active dataset is the second: events 1 and 2 pass both rules.
    EXPECT_EQ(w.plottedEvents(), (std::vector<int> { 1, 2 }));
    EXPECT_EQ(status(), "Loaded: S (2/4 events shown (50.0% pass filter))");
}
