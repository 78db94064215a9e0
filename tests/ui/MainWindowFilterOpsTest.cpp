#include "MainWindowFixture.h"
#include "support/FixtureWriter.h"
#include "ui/FilterDockTexts.h"
#include "ui/FilterDockWidget.h"
#include "ui/FilterRuleWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>

using namespace Tessaly;
using Tessaly::Testing::FixtureWriter;
using Tessaly::Testing::MainWindowFixture;

namespace {

QPushButton* button(QWidget* parent, const QString& text)
{
    for (QPushButton* b : parent->findChildren<QPushButton*>()) {
        if (b->text() == text)
            return b;
    }
    return nullptr;
}

bool highlighted(const QPushButton* b)
{
    return b && b->styleSheet().contains(QStringLiteral("#a6d7d5"));
}

} // namespace

// Datasets of five events, area_um 10 to 50; the active one is the source of every operation.
class MainWindowFilterOps : public MainWindowFixture
{
protected:
    QString writeCells(const QString& name, bool withDeform = true,
        const std::vector<std::pair<std::string, std::string>>& onlineFilter = {})
    {
        const QString path = folder.filePath(name);
        FixtureWriter writer(path.toStdString());
        writer.column<double>("area_um", { 10, 20, 30, 40, 50 });
        if (withDeform)
            writer.column<double>("deform", { 0.01, 0.02, 0.03, 0.04, 0.05 });
        writer.stringAttribute("setup:module composition", "Vortiq")
            .stringAttribute("experiment:sample", name.toStdString());
        for (const auto& [key, value] : onlineFilter)
            writer.stringAttribute("online_filter:" + key, value);
        if (!onlineFilter.empty())
            writer.pointsAttribute("online_filter:area_um,deform polygon points",
                { { 15.f, 0.f }, { 45.f, 0.f }, { 45.f, 0.1f }, { 15.f, 0.1f } });
        writer.close();
        return path;
    }

    // Opens the files and makes the first one active.
    void open(const std::vector<QString>& paths)
    {
        makeWindow();
        for (const QString& path : paths)
            window->openDataset(path);
        ASSERT_TRUE(waitUntilIdle());
        select(0);
        dock = window->findChild<FilterDockWidget*>();
    }

    void select(int row) { window->findChild<QListWidget*>("datasetList")->setCurrentRow(row); }
    DatasetEntry* dataset(int row) { return window->datasets()[static_cast<std::size_t>(row)]; }
    std::size_t shown()
    {
        settleRefresh();
        return window->plottedX().size();
    }

    // A range rule on area_um added in the dock, narrowed to [low, high].
    void addAreaRule(double low, double high)
    {
        button(dock, FilterDockTexts::addRule)->click();
        auto* row = qobject_cast<FilterRuleWidget*>(dock->ruleRow(dock->ruleRowCount() - 1));
        row->findChild<QComboBox*>()->setCurrentIndex(row->findChild<QComboBox*>()->findData("area_um"));
        setBounds(dock->ruleRowCount() - 1, low, high);
    }

    void setBounds(int rowIndex, double low, double high)
    {
        const QList<QDoubleSpinBox*> spins = dock->ruleRow(rowIndex)->findChildren<QDoubleSpinBox*>();
        spins.at(0)->setValue(low);
        spins.at(1)->setValue(high);
        settleRefresh();
    }

    FilterDockWidget* dock = nullptr;
};

TEST_F(MainWindowFilterOps, ARuleAppliedToAllIsUpdatedWherePeersStillHaveIt)
{
    open({ writeCells("a.vqd"), writeCells("b.vqd"), writeCells("c.vqd") });
    addAreaRule(10, 30);
    EXPECT_EQ(shown(), 3u);
    button(dock->ruleRow(0), FilterDockTexts::applyToAll)->click();

    const std::string id = dataset(0)->filter.rules()[0].propagationId;
    EXPECT_TRUE(QRegularExpression("^\\{[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}\\}$")
                    .match(QString::fromStdString(id))
                    .hasMatch())
        << id;
    for (int row : { 1, 2 }) {
        ASSERT_EQ(dataset(row)->filter.ruleCount(), 1);
        EXPECT_EQ(dataset(row)->filter.rules()[0].propagationId, id);
        EXPECT_EQ(dataset(row)->filter.rules()[0].maxValue, 30.0);
    }
    EXPECT_FALSE(button(dock->ruleRow(0), FilterDockTexts::applyToAll)->isVisibleTo(dock));
    EXPECT_TRUE(button(dock->ruleRow(0), FilterDockTexts::updateInAll)->isVisibleTo(dock));

    // Applying again replaces the linked copy instead of adding a second one.
    button(dock->ruleRow(0), FilterDockTexts::updateInAll)->click();
    EXPECT_EQ(dataset(1)->filter.ruleCount(), 1);

    // C deletes its copy and keeps a rule of its own; B keeps its copy.
    dataset(2)->filter.clearRules();
    FilterRule own;
    own.featureName = "deform";
    own.minValue = 0.0;
    own.maxValue = 1.0;
    dataset(2)->filter.addRule(own);
    setBounds(0, 20, 40);
    EXPECT_TRUE(highlighted(button(dock->ruleRow(0), FilterDockTexts::updateInAll)));
    button(dock->ruleRow(0), FilterDockTexts::updateInAll)->click();
    EXPECT_FALSE(highlighted(button(dock->ruleRow(0), FilterDockTexts::updateInAll)));
    EXPECT_EQ(dataset(1)->filter.rules()[0].minValue, 20.0);
    EXPECT_EQ(dataset(1)->filter.rules()[0].maxValue, 40.0);
    ASSERT_EQ(dataset(2)->filter.ruleCount(), 1);
    EXPECT_EQ(dataset(2)->filter.rules()[0].featureName, "deform");

    // The plot of a peer follows its copy.
    select(1);
    EXPECT_EQ(shown(), 3u);
    EXPECT_EQ(window->plottedEvents(), (std::vector<int> { 1, 2, 3 }));
}

TEST_F(MainWindowFilterOps, CheckUncheckAndDeleteReachOnlyLinkedCopies)
{
    open({ writeCells("a.vqd"), writeCells("b.vqd"), writeCells("c.vqd") });
    addAreaRule(10, 20);
    addAreaRule(10, 40);
    button(dock->ruleRow(0), FilterDockTexts::applyToAll)->click();
    EXPECT_EQ(shown(), 2u);

    // Switching the rule off here lights the check button: the peers still have it on.
    dock->ruleRow(0)->findChild<QCheckBox*>()->setChecked(false);
    settleRefresh();
    EXPECT_EQ(shown(), 4u);
    QPushButton* check = button(dock->ruleRow(0), FilterDockTexts::uncheckInAll);
    ASSERT_NE(check, nullptr);
    EXPECT_TRUE(highlighted(check));
    check->click();
    EXPECT_FALSE(dataset(1)->filter.rules()[0].enabled);
    EXPECT_FALSE(dataset(2)->filter.rules()[0].enabled);
    EXPECT_FALSE(highlighted(check));

    window->onCheckRuleInAll(0);
    EXPECT_TRUE(dataset(0)->filter.rules()[0].enabled);
    EXPECT_TRUE(dock->ruleRow(0)->isRuleChecked());
    EXPECT_TRUE(dataset(2)->filter.rules()[0].enabled);
    EXPECT_EQ(shown(), 2u);

    // A local rule has no copies to reach.
    window->onUncheckRuleInAll(1);
    window->onDeleteRuleFromAll(1);
    EXPECT_TRUE(dataset(0)->filter.rules()[1].enabled);
    EXPECT_EQ(dataset(0)->filter.ruleCount(), 2);

    button(dock->ruleRow(0), FilterDockTexts::deleteFromAll)->click();
    for (int row : { 0, 1, 2 })
        EXPECT_EQ(dataset(row)->filter.ruleCount(), row == 0 ? 1 : 0) << row;
    EXPECT_EQ(dock->ruleRowCount(), 1);
    EXPECT_EQ(dataset(0)->filter.rules()[0].maxValue, 40.0);
    EXPECT_EQ(shown(), 4u);
}

TEST_F(MainWindowFilterOps, SwitchesAndTheWholeFilterGoToEveryPeer)
{
    open({ writeCells("a.vqd"), writeCells("b.vqd"), writeCells("c.vqd") });
    FilterRule own;
    own.featureName = "deform";
    own.maxValue = 0.5;
    dataset(1)->filter.addRule(own);
    dataset(1)->filter.addRule(own);
    addAreaRule(20, 30);

    auto* enabledBox = dock->findChild<QCheckBox*>("filteringEnabledCheckBox");
    auto* excludedBox = dock->findChild<QCheckBox*>("showExcludedCheckBox");
    auto* enabledForAll = dock->findChild<QPushButton*>("enabledForAllButton");
    auto* excludedForAll = dock->findChild<QPushButton*>("excludedForAllButton");
    excludedBox->setChecked(true);
    settleRefresh();
    EXPECT_EQ(window->plottedEvents(), (std::vector<int> { 0, 3, 4 }));
    EXPECT_TRUE(highlighted(excludedForAll));
    EXPECT_FALSE(highlighted(enabledForAll));
    excludedForAll->click();
    EXPECT_FALSE(highlighted(excludedForAll));
    EXPECT_EQ(dataset(2)->filter.combineMode(), 1);

    enabledBox->setChecked(false);

    settleRefresh();
    EXPECT_EQ(shown(), 5u);
    EXPECT_TRUE(highlighted(enabledForAll));
    EXPECT_EQ(enabledForAll->text(), "Disable in All Datasets");
    enabledForAll->click();
    EXPECT_FALSE(dataset(1)->filter.isEnabled());
    EXPECT_FALSE(dataset(2)->filter.isEnabled());
    enabledBox->setChecked(true);
    settleRefresh();

    window->onApplyFilterToAll();
    for (int row : { 1, 2 }) {
        const EventFilter& filter = dataset(row)->filter;
        EXPECT_TRUE(filter.isEnabled());
        EXPECT_EQ(filter.combineMode(), 1);
        ASSERT_EQ(filter.ruleCount(), 1) << row;
        EXPECT_EQ(filter.rules()[0].featureName, "area_um");
        EXPECT_EQ(filter.rules()[0].minValue, 20.0);
    }
    select(2);
    EXPECT_EQ(window->plottedEvents(), (std::vector<int> { 0, 3, 4 }));
}

TEST_F(MainWindowFilterOps, PeersWithoutTheFeatureAreNotCompared)
{
    open({ writeCells("a.vqd"), writeCells("b.vqd"), writeCells("noDeform.vqd", false) });
    button(dock, FilterDockTexts::addRule)->click();
    auto* row = qobject_cast<FilterRuleWidget*>(dock->ruleRow(0));
    row->findChild<QComboBox*>()->setCurrentIndex(row->findChild<QComboBox*>()->findData("deform"));
    window->onApplyRuleToAll(0);
    ASSERT_EQ(dataset(2)->filter.ruleCount(), 1);

    FilterRule changed = dataset(2)->filter.rules()[0];
    changed.minValue = 0.025;
    changed.enabled = false;
    dataset(2)->filter.setRule(0, changed);
    window->onFilterChanged();
    EXPECT_FALSE(highlighted(button(dock->ruleRow(0), FilterDockTexts::updateInAll)));
    EXPECT_FALSE(highlighted(button(dock->ruleRow(0), FilterDockTexts::checkInAll)));

    changed = dataset(1)->filter.rules()[0];
    changed.inverted = true;
    dataset(1)->filter.setRule(0, changed);
    window->onFilterChanged();
    EXPECT_TRUE(highlighted(button(dock->ruleRow(0), FilterDockTexts::updateInAll)));

    // The dataset that lacks the feature shows the rule as not available and keeps it unchanged.
    select(2);
    EXPECT_TRUE(qobject_cast<FilterRuleWidget*>(dock->ruleRow(0))->isNotAvailable());
    EXPECT_EQ(shown(), 5u);
    select(0);
    EXPECT_EQ(dataset(2)->filter.rules()[0].minValue, 0.025);
}

TEST_F(MainWindowFilterOps, SoftLimitsBecomeRules)
{
    const std::vector<std::pair<std::string, std::string>> limits = {
        { "area_um soft limit", "1" },
        { "area_um min", "15" },
        { "area_um max", "45" },
        { "deform soft limit", "1" },
        { "deform min", "0.02" },
        { "area_um,deform soft limit", "1" },
    };
    open({ writeCells("a.vqd", true, limits), writeCells("b.vqd", true, limits), writeCells("plain.vqd") });
    dataset(0)->filter.setEnabled(false);
    dock->setDataset(dataset(0));

    window->onImportMeasurementFilters(false);
    const EventFilter& filter = dataset(0)->filter;
    EXPECT_TRUE(filter.isEnabled());
    ASSERT_EQ(filter.ruleCount(), 2);
    EXPECT_EQ(filter.rules()[0].type, RangeRule);
    EXPECT_EQ(filter.rules()[0].minValue, 15.0);
    EXPECT_EQ(filter.rules()[0].maxValue, 45.0);
    EXPECT_EQ(filter.rules()[1].type, PolygonRule);
    EXPECT_EQ(filter.rules()[1].polygonVertices.size(), 4u);
    EXPECT_EQ(filter.rules()[1].scaleXMode, 0);
    EXPECT_EQ(dock->ruleRowCount(), 2);
    EXPECT_EQ(window->plottedEvents(), (std::vector<int> { 1, 2, 3 }));
    EXPECT_TRUE(messages.empty());

    // Importing again adds the rules again; into all datasets only those with limits gain any.
    window->onImportMeasurementFilters(true);
    EXPECT_EQ(dataset(0)->filter.ruleCount(), 4);
    EXPECT_EQ(dataset(1)->filter.ruleCount(), 2);
    EXPECT_EQ(dataset(2)->filter.ruleCount(), 0);
    EXPECT_EQ(dock->ruleRowCount(), 4);

    select(2);
    window->onImportMeasurementFilters(false);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].kind, MessageBoxes::Kind::Information);
    EXPECT_EQ(messages[0].title, "Import Measurement Filters");
    EXPECT_EQ(messages[0].text, "No features with soft limit enabled found.");
}

TEST_F(MainWindowFilterOps, BoundsChangedFasterThanTheRefreshAreShownByOneRefresh)
{
    open({ writeCells("a.vqd") });
    addAreaRule(10, 50);
    QSignalSpy refreshes(window.get(), &MainWindow::plotRefreshed);
    const QList<QDoubleSpinBox*> spins = dock->ruleRow(0)->findChildren<QDoubleSpinBox*>();
    for (const double high : { 45.0, 35.0, 25.0 })
        spins.at(1)->setValue(high);
    EXPECT_EQ(refreshes.count(), 0);
    EXPECT_EQ(shown(), 2u);
    EXPECT_EQ(refreshes.count(), 1);

    // A refresh that runs before the asked-for one has shown the latest bounds: the other is dropped.
    spins.at(0)->setValue(20);
    window->onFilterChanged();
    EXPECT_EQ(shown(), 1u);
    QCoreApplication::sendPostedEvents(window.get(), QEvent::MetaCall);
    EXPECT_EQ(refreshes.count(), 2);
}
