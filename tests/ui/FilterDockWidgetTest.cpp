#include "ui/FilterDockWidget.h"

#include "core/DatasetEntry.h"
#include "support/FixtureWriter.h"
#include "ui/FilterDockTexts.h"
#include "ui/FilterGroupWidget.h"
#include "ui/FilterRuleWidget.h"
#include "ui/PolygonRuleWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>
#include <limits>

using namespace Tessaly;
using Tessaly::Testing::FixtureWriter;

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

FilterRule range(const std::string& feature, double low, double high)
{
    FilterRule rule;
    rule.featureName = feature;
    rule.minValue = low;
    rule.maxValue = high;
    return rule;
}

FilterRule polygon(const std::string& x, const std::string& y)
{
    FilterRule rule;
    rule.type = PolygonRule;
    rule.featureName = x;
    rule.featureNameY = y;
    rule.polygonVertices = { { 1.5, 0.01 }, { 30.25, 0.02 }, { 12.0, 0.2 } };
    rule.scaleXMode = 1;
    rule.scaleYMode = 2;
    return rule;
}

QPushButton* button(QWidget* parent, const QString& text)
{
    for (QPushButton* b : parent->findChildren<QPushButton*>()) {
        if (b->text() == text)
            return b;
    }
    return nullptr;
}

// Buttons that a row shows, in layout order, when its dock is shown.
QStringList visibleButtons(QWidget* row)
{
    QStringList texts;
    for (const QString& text : { FilterDockTexts::applyToAll, FilterDockTexts::updateInAll,
             FilterDockTexts::checkInAll, FilterDockTexts::uncheckInAll, FilterDockTexts::deleteFromAll }) {
        QPushButton* b = button(row, text);
        if (b && b->isVisibleTo(row) && b->parentWidget()->isVisibleTo(row))
            texts << text;
    }
    return texts;
}

} // namespace

// A dataset of a few columns: area_um 10..50, deform with a NaN, a constant, one with no finite
// value, and an image column that isn't scalar.
class FilterDock : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const std::string path = folder.filePath("cells.vqd").toStdString();
        FixtureWriter(path)
            .column<double>("area_um", { 30, 10, 50, 20, 40 })
            .column<double>("deform", { 0.02, nan, 0.05, 0.01, 0.04 })
            .column<double>("temp", { 22.5, 22.5, 22.5, 22.5, 22.5 })
            .column<double>("userdef1", { nan, nan, nan, nan, nan })
            .stringAttribute("setup:module composition", "Vortiq")
            .close();
        entry.id = 1;
        entry.reader = std::make_shared<VQDReader>();
        ASSERT_TRUE(entry.reader->open(path));
        entry.reader->cacheAllFeatures();
        entry.featuresLoaded = true;
    }

    FilterRuleWidget* rangeRow(int index) { return qobject_cast<FilterRuleWidget*>(dock.ruleRow(index)); }
    QComboBox* comboOf(QWidget* row) { return row->findChild<QComboBox*>(); }
    QList<QDoubleSpinBox*> spinsOf(QWidget* row) { return row->findChildren<QDoubleSpinBox*>(); }

    QTemporaryDir folder;
    DatasetEntry entry;
    FilterDockWidget dock;
};

TEST_F(FilterDock, WithoutPeersTheAllDatasetsActionsAreOff)
{
    auto* box = dock.findChild<QGroupBox*>();
    auto* counts = dock.findChild<QLabel*>("filterCountsLabel");
    EXPECT_FALSE(box->isEnabled());
    EXPECT_EQ(counts->text(), "No dataset selected");

    entry.filter.addRule(range("area_um", 10, 30));
    dock.setDataset(&entry);
    dock.setDatasetCount(1);
    EXPECT_TRUE(box->isEnabled());
    auto* enabledForAll = dock.findChild<QPushButton*>("enabledForAllButton");
    auto* excludedForAll = dock.findChild<QPushButton*>("excludedForAllButton");
    EXPECT_FALSE(enabledForAll->isEnabled());
    EXPECT_FALSE(excludedForAll->isEnabled());
    EXPECT_FALSE(button(dock.ruleRow(0), "Apply to All")->isEnabled());

    dock.setDatasetCount(2);
    EXPECT_TRUE(enabledForAll->isEnabled());
    EXPECT_TRUE(excludedForAll->isEnabled());
    EXPECT_TRUE(button(dock.ruleRow(0), "Apply to All")->isEnabled());

    dock.setDataset(nullptr);
    EXPECT_FALSE(box->isEnabled());
    EXPECT_EQ(dock.ruleRowCount(), 0);
    EXPECT_EQ(counts->text(), "No dataset selected");
}

TEST_F(FilterDock, EventCountsInTheDocksOwnWords)
{
    auto* counts = dock.findChild<QLabel*>("filterCountsLabel");
    const struct
    {
        qulonglong shown, total;
        const char* text;
    } cases[] = {
        { 0, 0, "No events" },
        { 5, 10, "5 / 10 events shown (50.0%)" },
        { 1, 3, "1 / 3 events shown (33.3%)" },
        { 0, 7, "0 / 7 events shown (0.0%)" },
        { 12, 12, "12 events (no filter active)" },
    };
    for (const auto& c : cases) {
        dock.setEventCounts(c.shown, c.total);
        EXPECT_EQ(counts->text(), c.text);
    }
}

TEST_F(FilterDock, SwitchesChangeTheDatasetAndNameTheirPeerAction)
{
    dock.setDataset(&entry);
    dock.setDatasetCount(3);
    QSignalSpy changed(&dock, &FilterDockWidget::filterChanged);
    QSignalSpy enabledForAll(&dock, &FilterDockWidget::enabledChangedForAll);
    QSignalSpy modeForAll(&dock, &FilterDockWidget::combineModeChangedForAll);
    auto* enabledBox = dock.findChild<QCheckBox*>("filteringEnabledCheckBox");
    auto* excludedBox = dock.findChild<QCheckBox*>("showExcludedCheckBox");
    auto* enabledButton = dock.findChild<QPushButton*>("enabledForAllButton");
    auto* excludedButton = dock.findChild<QPushButton*>("excludedForAllButton");
    EXPECT_EQ(enabledButton->text(), "Enable in All Datasets");
    EXPECT_EQ(excludedButton->text(), "Hide Excluded in All Datasets");

    enabledBox->setChecked(false);
    EXPECT_FALSE(entry.filter.isEnabled());
    EXPECT_EQ(enabledButton->text(), "Disable in All Datasets");
    excludedBox->setChecked(true);
    EXPECT_EQ(entry.filter.combineMode(), ShowExcludedEvents);
    EXPECT_EQ(excludedButton->text(), "Show Excluded in All Datasets");
    EXPECT_EQ(changed.count(), 2);

    enabledButton->click();
    excludedButton->click();
    ASSERT_EQ(enabledForAll.count(), 1);
    EXPECT_EQ(enabledForAll.at(0).at(0).toBool(), false);
    ASSERT_EQ(modeForAll.count(), 1);
    EXPECT_EQ(modeForAll.at(0).at(0).toInt(), 1);

    // Showing another dataset sets the boxes without a signal.
    DatasetEntry other;
    other.reader = entry.reader;
    dock.setDataset(&other);
    EXPECT_TRUE(enabledBox->isChecked());
    EXPECT_FALSE(excludedBox->isChecked());
    EXPECT_EQ(changed.count(), 2);
    EXPECT_TRUE(other.filter.isEnabled());
}

TEST_F(FilterDock, ANewRuleSpansItsFeaturesFiniteRange)
{
    dock.setDataset(&entry);
    QSignalSpy changed(&dock, &FilterDockWidget::filterChanged);
    button(&dock, "+ Rule")->click();
    ASSERT_EQ(entry.filter.ruleCount(), 1);
    EXPECT_EQ(changed.count(), 1);
    // The first scalar feature by name, with its exact extremes.
    const FilterRule& rule = entry.filter.rules()[0];
    EXPECT_EQ(rule.type, RangeRule);
    EXPECT_EQ(rule.featureName, "area_um");
    EXPECT_EQ(rule.minValue, 10.0);
    EXPECT_EQ(rule.maxValue, 50.0);
    EXPECT_TRUE(rule.enabled);
    EXPECT_TRUE(rule.propagationId.empty());
    // The image-free file lists only its scalar columns.
    EXPECT_EQ(comboOf(dock.ruleRow(0))->count(), 4);

    const struct
    {
        const char* feature;
        double low, high;
        int decimals;
        double step;
    } cases[] = {
        { "deform", 0.01, 0.05, 6, 0.0004 }, // NaN left out
        { "temp", 22.5, 22.5, 6, 0.01 }, // constant
        { "area_um", 10, 50, 2, 0.4 },
    };
    QComboBox* combo = comboOf(dock.ruleRow(0));
    for (const auto& c : cases) {
        combo->setCurrentIndex(combo->findData(c.feature));
        const FilterRule& chosen = entry.filter.rules()[0];
        EXPECT_EQ(chosen.featureName, c.feature);
        EXPECT_EQ(chosen.minValue, c.low) << c.feature;
        EXPECT_EQ(chosen.maxValue, c.high) << c.feature;
        for (QDoubleSpinBox* spin : spinsOf(dock.ruleRow(0))) {
            EXPECT_EQ(spin->decimals(), c.decimals) << c.feature;
            EXPECT_DOUBLE_EQ(spin->singleStep(), c.step) << c.feature;
        }
    }

    // A feature without any finite value keeps the bounds it had.
    combo->setCurrentIndex(combo->findData("userdef1"));
    EXPECT_EQ(entry.filter.rules()[0].featureName, "userdef1");
    EXPECT_EQ(entry.filter.rules()[0].minValue, 10.0);
}

TEST_F(FilterDock, ARuleOnAMissingFeatureIsKeptAsItCame)
{
    FilterRule missing = range("fl3_max", 1.234567891, 987654.3210987);
    missing.inverted = true;
    missing.enabled = false;
    missing.propagationId = "{0f0e0d0c-0b0a-0908-0706-050403020100}";
    entry.filter.addRule(missing);
    // Shown with fewer decimals than it has; showing it must not round it.
    entry.filter.addRule(range("area_um", 12.3456789, 45.6789123));
    dock.setDataset(&entry);

    FilterRuleWidget* row = rangeRow(0);
    ASSERT_TRUE(row->isNotAvailable());
    QComboBox* combo = comboOf(row);
    EXPECT_EQ(combo->currentText(), "fl3_max (n/a)");
    for (QDoubleSpinBox* spin : spinsOf(row))
        EXPECT_FALSE(spin->isEnabled());

    // Any change stores all rows; the two rules come back exactly as they were.
    button(&dock, "+ Rule")->click();
    ASSERT_EQ(entry.filter.ruleCount(), 3);
    const FilterRule& kept = entry.filter.rules()[0];
    EXPECT_EQ(kept.featureName, "fl3_max");
    EXPECT_EQ(kept.minValue, 1.234567891);
    EXPECT_EQ(kept.maxValue, 987654.3210987);
    EXPECT_TRUE(kept.inverted);
    EXPECT_FALSE(kept.enabled);
    EXPECT_EQ(kept.propagationId, missing.propagationId);
    EXPECT_EQ(entry.filter.rules()[1].minValue, 12.3456789);
    EXPECT_EQ(entry.filter.rules()[1].maxValue, 45.6789123);

    // Choosing a feature that exists ends the state for good.
    combo->setCurrentIndex(combo->findData("deform"));
    EXPECT_FALSE(row->isNotAvailable());
    EXPECT_EQ(combo->findText("fl3_max (n/a)"), -1);
    EXPECT_EQ(combo->count(), 4);
    EXPECT_EQ(entry.filter.rules()[0].featureName, "deform");
    EXPECT_EQ(entry.filter.rules()[0].minValue, 0.01);
    for (QDoubleSpinBox* spin : spinsOf(row))
        EXPECT_TRUE(spin->isEnabled());
}

TEST_F(FilterDock, RowsAreTheRulesInOrderAndGoWithTheirSeparator)
{
    entry.filter.addRule(range("area_um", 10, 20));
    entry.filter.addRule(polygon("area_um", "deform"));
    entry.filter.addRule(range("deform", 0, 0.1));
    dock.setDataset(&entry);
    ASSERT_EQ(dock.ruleRowCount(), 3);
    EXPECT_NE(qobject_cast<PolygonRuleWidget*>(dock.ruleRow(1)), nullptr);
    const auto separators = [this] {
        int count = 0;
        for (QFrame* frame : dock.findChildren<QFrame*>()) {
            if (frame->frameShape() == QFrame::HLine && frame->parentWidget() && frame->isVisibleTo(&dock))
                ++count;
        }
        return count;
    };
    EXPECT_EQ(separators(), 2);

    QSignalSpy changed(&dock, &FilterDockWidget::filterChanged);
    dock.ruleRow(1)->findChild<QToolButton*>()->click();
    EXPECT_EQ(changed.count(), 1);
    ASSERT_EQ(entry.filter.ruleCount(), 2);
    EXPECT_EQ(entry.filter.rules()[0].featureName, "area_um");
    EXPECT_EQ(entry.filter.rules()[1].featureName, "deform");
    EXPECT_EQ(separators(), 1);
    dock.ruleRow(0)->findChild<QToolButton*>()->click();
    EXPECT_EQ(separators(), 0);
    EXPECT_EQ(entry.filter.rules()[0].featureName, "deform");

    // Requests name the row as it is now.
    QSignalSpy apply(&dock, &FilterDockWidget::applyRuleToAll);
    dock.setDatasetCount(2);
    button(dock.ruleRow(0), "Apply to All")->click();
    ASSERT_EQ(apply.count(), 1);
    EXPECT_EQ(apply.at(0).at(0).toInt(), 0);
}

TEST_F(FilterDock, PeerButtonsFollowThePropagationIdAndTheCheckBox)
{
    FilterRule linked = range("area_um", 10, 20);
    linked.propagationId = "{a}";
    entry.filter.addRule(range("area_um", 10, 20));
    entry.filter.addRule(linked);
    dock.setDataset(&entry);
    dock.setDatasetCount(2);
    EXPECT_EQ(visibleButtons(dock.ruleRow(0)), QStringList { "Apply to All" });
    EXPECT_EQ(visibleButtons(dock.ruleRow(1)),
        (QStringList { "Update in All", "Check in All", "Delete from All" }));

    QSignalSpy check(&dock, &FilterDockWidget::checkRuleInAll);
    QSignalSpy uncheck(&dock, &FilterDockWidget::uncheckRuleInAll);
    button(dock.ruleRow(1), "Check in All")->click();
    dock.ruleRow(1)->findChild<QCheckBox*>()->setChecked(false);
    EXPECT_FALSE(entry.filter.rules()[1].enabled);
    EXPECT_EQ(visibleButtons(dock.ruleRow(1)),
        (QStringList { "Update in All", "Uncheck in All", "Delete from All" }));
    button(dock.ruleRow(1), "Uncheck in All")->click();
    EXPECT_EQ(check.count(), 1);
    ASSERT_EQ(uncheck.count(), 1);
    EXPECT_EQ(uncheck.at(0).at(0).toInt(), 1);

    dock.setRulePropagationId(0, "{b}");
    EXPECT_EQ(visibleButtons(dock.ruleRow(0)).first(), "Update in All");

    dock.setRuleHighlights(1, true, false);
    EXPECT_TRUE(button(dock.ruleRow(1), "Update in All")->styleSheet().contains("#a6d7d5"));
    EXPECT_FALSE(button(dock.ruleRow(1), "Uncheck in All")->styleSheet().contains("#a6d7d5"));
    dock.setRuleHighlights(1, false, true);
    EXPECT_EQ(button(dock.ruleRow(1), "Update in All")->styleSheet(), FilterDockTexts::normalButtonSheet);
    EXPECT_TRUE(button(dock.ruleRow(1), "Uncheck in All")->styleSheet().contains("#a6d7d5"));
}

TEST_F(FilterDock, APolygonRowKeepsWhatItDoesNotShow)
{
    FilterRule gate = polygon("area_um", "deform");
    gate.propagationId = "{p}";
    entry.filter.addRule(gate);
    entry.filter.addRule(polygon("area_um", "fl1_max"));
    dock.setDataset(&entry);
    auto* row = qobject_cast<PolygonRuleWidget*>(dock.ruleRow(0));
    ASSERT_NE(row, nullptr);
    QStringList labels;
    for (QLabel* label : row->findChildren<QLabel*>())
        labels << label->text();
    EXPECT_TRUE(labels.contains("(3 pts)"));
    EXPECT_TRUE(labels.contains(QString::fromStdString(entry.reader->featureLabel("area_um")) + " vs "
        + QString::fromStdString(entry.reader->featureLabel("deform"))));
    auto* missing = qobject_cast<PolygonRuleWidget*>(dock.ruleRow(1));
    EXPECT_TRUE(missing->isNotAvailable());
    bool marked = false;
    for (QLabel* label : missing->findChildren<QLabel*>())
        marked = marked || label->text().endsWith(" (n/a)");
    EXPECT_TRUE(marked);

    QSignalSpy edit(&dock, &FilterDockWidget::polygonEditRequested);
    button(row, "Edit")->click();
    ASSERT_EQ(edit.count(), 1);
    EXPECT_EQ(edit.at(0).at(0).toInt(), 0);
    EXPECT_TRUE(edit.at(0).at(1).toBool());
    dock.setPolygonEditChecked(0, false);
    EXPECT_FALSE(row->isEditChecked());
    EXPECT_EQ(edit.count(), 1);

    row->findChild<QCheckBox*>(QString(), Qt::FindDirectChildrenOnly)->setChecked(false);
    const FilterRule& stored = entry.filter.rules()[0];
    EXPECT_FALSE(stored.enabled);
    EXPECT_EQ(stored.polygonVertices, gate.polygonVertices);
    EXPECT_EQ(stored.scaleXMode, 1);
    EXPECT_EQ(stored.scaleYMode, 2);
    EXPECT_EQ(stored.propagationId, "{p}");
    EXPECT_EQ(stored.featureNameY, "deform");
    EXPECT_EQ(entry.filter.rules()[1].featureNameY, "fl1_max");
}

TEST_F(FilterDock, GroupWidgetsSpeakForTheirGroup)
{
    FilterGroup group;
    group.id = 4;
    group.name = "Singlets";
    group.rules = { range("area_um", 10, 20), polygon("area_um", "deform") };
    entry.groupEnabled.insert(4, true);
    dock.setDataset(&entry);
    dock.setDatasetCount(2);
    dock.setFilterGroups({ &group }, entry.reader.get());
    FilterGroupWidget* widget = dock.groupWidget(4);
    ASSERT_NE(widget, nullptr);
    auto* name = widget->findChild<QLineEdit*>();
    EXPECT_EQ(name->text(), "Singlets");
    auto* enabled = widget->findChild<QCheckBox*>(QString(), Qt::FindDirectChildrenOnly);
    EXPECT_TRUE(enabled->isChecked());
    EXPECT_NE(button(widget, "Check in All Datasets"), nullptr);
    // Group rows offer nothing for other datasets.
    for (RuleRowWidget* row : widget->findChildren<RuleRowWidget*>())
        EXPECT_TRUE(visibleButtons(row).isEmpty());

    QSignalSpy toggled(&dock, &FilterDockWidget::groupEnableChanged);
    QSignalSpy propagate(&dock, &FilterDockWidget::groupEnablePropagateRequested);
    QSignalSpy ruleChanged(&dock, &FilterDockWidget::groupRuleChanged);
    QSignalSpy removed(&dock, &FilterDockWidget::groupRuleRemoved);
    QSignalSpy renamed(&dock, &FilterDockWidget::renameFilterGroupRequested);
    enabled->setChecked(false);
    button(widget, "Uncheck in All Datasets")->click();
    ASSERT_EQ(toggled.count(), 1);
    EXPECT_EQ(toggled.at(0), (QList<QVariant> { 4, false }));
    ASSERT_EQ(propagate.count(), 1);
    EXPECT_EQ(propagate.at(0), (QList<QVariant> { 4, false }));

    auto* firstRow = widget->findChildren<FilterRuleWidget*>().first();
    firstRow->findChildren<QDoubleSpinBox*>().at(1)->setValue(15);
    ASSERT_EQ(ruleChanged.count(), 1);
    EXPECT_EQ(ruleChanged.at(0).at(0).toInt(), 4);
    EXPECT_EQ(ruleChanged.at(0).at(1).toInt(), 0);
    EXPECT_EQ(ruleChanged.at(0).at(2).value<FilterRule>().maxValue, 15.0);
    widget->findChildren<PolygonRuleWidget*>().first()->findChild<QToolButton*>()->click();
    ASSERT_EQ(removed.count(), 1);
    EXPECT_EQ(removed.at(0), (QList<QVariant> { 4, 1 }));

    name->setText("Doublets");
    name->setModified(true);
    emit name->editingFinished();
    ASSERT_EQ(renamed.count(), 1);
    EXPECT_EQ(renamed.at(0).at(1).toString(), "Doublets");

    // The same groups again update the widget in place; a text that matches is left alone.
    name->setText("Sing");
    name->setCursorPosition(2);
    group.rules[0].maxValue = 18;
    dock.setFilterGroups({ &group }, entry.reader.get());
    EXPECT_EQ(dock.groupWidget(4), widget);
    EXPECT_EQ(name->text(), "Singlets");
    EXPECT_TRUE(enabled->isChecked());
    EXPECT_EQ(firstRow->rule().maxValue, 18.0);
    name->setCursorPosition(3);
    dock.setFilterGroups({ &group }, entry.reader.get());
    EXPECT_EQ(name->cursorPosition(), 3);

    // Another shape gives new widgets; the old ones go once control is back in the event loop.
    group.rules.pop_back();
    dock.setFilterGroups({ &group }, entry.reader.get());
    EXPECT_NE(dock.groupWidget(4), nullptr);
    dock.setFilterGroups({}, entry.reader.get());
    EXPECT_EQ(dock.groupWidget(4), nullptr);
}
