#include "MainWindowFixture.h"
#include "io/FilterRuleJson.h"
#include "support/FixtureWriter.h"
#include "ui/FilterDockTexts.h"
#include "ui/FilterDockWidget.h"
#include "ui/FilterGroupWidget.h"
#include "ui/RuleRowWidget.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

using namespace Tessaly;
using Tessaly::Testing::FixtureWriter;
using Tessaly::Testing::MainWindowFixture;

namespace {

FilterRule areaRule(double low, double high)
{
    FilterRule rule;
    rule.featureName = "area_um";
    rule.minValue = low;
    rule.maxValue = high;
    return rule;
}

} // namespace

class MainWindowFilterGroups : public MainWindowFixture
{
protected:
    void SetUp() override
    {
        MainWindowFixture::SetUp();
        makeWindow();
        for (const char* name : { "a.vqd", "b.vqd" }) {
            const QString path = folder.filePath(name);
            FixtureWriter(path.toStdString())
                .column<double>("area_um", { 10, 20, 30, 40, 50 })
                .column<double>("deform", { 0.01, 0.02, 0.03, 0.04, 0.05 })
                .stringAttribute("setup:module composition", "Vortiq")
                .close();
            window->openDataset(path);
        }
        ASSERT_TRUE(waitUntilIdle());
        window->findChild<QListWidget*>("datasetList")->setCurrentRow(0);
        dock = window->findChild<FilterDockWidget*>();
    }

    DatasetEntry* dataset(int row) { return window->datasets()[static_cast<std::size_t>(row)]; }
    std::size_t shown()
    {
        settleRefresh();
        return window->plottedX().size();
    }
    QString status() const { return window->findChild<QLabel*>("statusLabel")->text(); }

    // Writes `text` to a file of the test folder and imports it.
    int importText(const QByteArray& text)
    {
        const QString path = folder.filePath("groups.tsyfg");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
        file.close();
        return window->importFilterGroups(path);
    }

    FilterDockWidget* dock = nullptr;
};

TEST_F(MainWindowFilterGroups, AGroupCountsWhereItIsOnAndGoesAtOnce)
{
    dock->findChildren<QPushButton*>("addGroupButton").first()->click();
    ASSERT_EQ(window->filterGroups().size(), 1u);
    const int id = window->filterGroups()[0]->id;
    FilterGroupWidget* widget = dock->groupWidget(id);
    ASSERT_NE(widget, nullptr);
    EXPECT_EQ(widget->findChild<QLineEdit*>()->text(), "Filter group 1");

    // A rule added in the group starts over the whole range of the first feature.
    for (QPushButton* b : widget->findChildren<QPushButton*>()) {
        if (b->text() == FilterDockTexts::addRule)
            b->click();
    }
    ASSERT_EQ(window->findFilterGroupById(id)->rules.size(), 1u);
    EXPECT_EQ(window->findFilterGroupById(id)->rules[0].featureName, "area_um");
    EXPECT_EQ(window->findFilterGroupById(id)->rules[0].minValue, 10.0);
    EXPECT_EQ(window->findFilterGroupById(id)->rules[0].maxValue, 50.0);

    // Group rules never carry a propagation id, however they arrive.
    FilterRule linked = areaRule(20, 40);
    linked.propagationId = "{1}";
    window->updateRuleInGroup(id, 0, linked);
    window->addRuleToGroup(id, linked);
    for (const FilterRule& rule : window->findFilterGroupById(id)->rules)
        EXPECT_TRUE(rule.propagationId.empty());
    EXPECT_EQ(shown(), 5u);

    dock->groupWidget(id)->findChild<QCheckBox*>(QString(), Qt::FindDirectChildrenOnly)->setChecked(true);
    EXPECT_TRUE(window->isGroupEnabled(dataset(0), id));
    EXPECT_FALSE(window->isGroupEnabled(dataset(1), id));
    EXPECT_EQ(shown(), 3u);

    window->setGroupEnabledInAll(id, true);
    EXPECT_TRUE(window->isGroupEnabled(dataset(1), id));

    window->removeFilterGroup(id);
    EXPECT_TRUE(window->filterGroups().empty());
    EXPECT_FALSE(dataset(0)->groupEnabled.contains(id));
    EXPECT_FALSE(dataset(1)->groupEnabled.contains(id));
    EXPECT_EQ(shown(), 5u);
    EXPECT_EQ(dock->groupWidget(id), nullptr);
    // Ids only rise.
    EXPECT_EQ(window->addFilterGroup(""), id + 1);
}

TEST_F(MainWindowFilterGroups, AGroupRuleEditedInItsRowKeepsTheRow)
{
    const int id = window->addFilterGroup("Size");
    window->addRuleToGroup(id, areaRule(10, 50));
    window->setGroupEnabled(dataset(0)->id, id, true);
    FilterGroupWidget* widget = dock->groupWidget(id);
    QWidget* row = widget->findChildren<RuleRowWidget*>().first();
    row->findChildren<QDoubleSpinBox*>().at(0)->setValue(35);
    EXPECT_EQ(window->findFilterGroupById(id)->rules[0].minValue, 35.0);
    EXPECT_EQ(shown(), 2u);
    EXPECT_EQ(dock->groupWidget(id), widget);
    EXPECT_EQ(widget->findChildren<RuleRowWidget*>().first(), row);

    window->renameFilterGroup(id, "Large cells");
    EXPECT_EQ(widget->findChild<QLineEdit*>()->text(), "Large cells");
    window->removeRuleFromGroup(id, 0);
    EXPECT_TRUE(window->findFilterGroupById(id)->rules.empty());
    EXPECT_EQ(shown(), 5u);
}

TEST_F(MainWindowFilterGroups, ExportedGroupsComeBackAsNewGroups)
{
    FilterRule gate;
    gate.type = PolygonRule;
    gate.featureName = "area_um";
    gate.featureNameY = "deform";
    gate.polygonVertices = { { 15, 0 }, { 35, 0 }, { 35, 1 } };
    gate.scaleXMode = 1;
    gate.scaleYMode = 2;
    gate.inverted = true;
    gate.enabled = false;
    const int first = window->addFilterGroup("Gate");
    window->addRuleToGroup(first, gate);
    window->addRuleToGroup(first, areaRule(20, 30));
    const int second = window->addFilterGroup("Other");
    window->setGroupEnabled(dataset(0)->id, first, true);

    const QString path = folder.filePath("out.tsyfg");
    // A group removed after it was chosen is left out.
    ASSERT_TRUE(window->exportFilterGroups(path, { first, 99, second }));
    EXPECT_EQ(status(), "Exported 2 filter group(s).");

    EXPECT_EQ(window->importFilterGroups(path), 2);
    EXPECT_EQ(status(), "Imported 2 filter group(s).");
    ASSERT_EQ(window->filterGroups().size(), 4u);
    const FilterGroup* copy = window->filterGroups()[2];
    EXPECT_EQ(copy->name, "Gate");
    EXPECT_GT(copy->id, second);
    ASSERT_EQ(copy->rules.size(), 2u);
    const FilterRule& read = copy->rules[0];
    EXPECT_EQ(read.type, PolygonRule);
    EXPECT_EQ(read.polygonVertices, gate.polygonVertices);
    EXPECT_EQ(read.scaleXMode, 1);
    EXPECT_EQ(read.scaleYMode, 2);
    EXPECT_TRUE(read.inverted);
    EXPECT_FALSE(read.enabled);
    EXPECT_EQ(copy->rules[1].maxValue, 30.0);
    // Imported groups start off everywhere, even where the original is on.
    EXPECT_FALSE(window->isGroupEnabled(dataset(0), copy->id));
    EXPECT_NE(dock->groupWidget(copy->id), nullptr);
    EXPECT_TRUE(messages.empty());
}

TEST_F(MainWindowFilterGroups, OddFilesImportWhatTheyHold)
{
    EXPECT_EQ(importText(R"({"formatVersion": 99, "groups": [
        {"name": "", "rules": [{"type": "Range", "featureName": "area_um", "minValue": 15, "maxValue": 35,
                                "polygonVertices": [[1, 2], [3], [4, 5, 6]], "unknown": true,
                                "propagationId": "{x}"}]},
        {"rules": [{"type": "Polygon", "featureName": "area_um", "featureNameY": "deform",
                    "polygonVertices": [[0, 0], [25, 0], "bad", [25, 1]], "scaleXMode": "log"}]}]})"),
        2);
    ASSERT_EQ(window->filterGroups().size(), 2u);
    EXPECT_EQ(window->filterGroups()[0]->name, "Imported group");
    EXPECT_EQ(window->filterGroups()[1]->name, "Imported group");
    const FilterRule& range = window->filterGroups()[0]->rules[0];
    EXPECT_EQ(range.type, RangeRule);
    EXPECT_EQ(range.polygonVertices, (std::vector<PlanePoint> { { 1, 2 }, { 4, 5 } }));
    EXPECT_TRUE(range.propagationId.empty());
    EXPECT_EQ(window->filterGroups()[1]->rules[0].polygonVertices.size(), 3u);
    EXPECT_EQ(window->filterGroups()[1]->rules[0].scaleXMode, 0);
    window->setGroupEnabled(dataset(0)->id, window->filterGroups()[0]->id, true);
    EXPECT_EQ(window->plottedEvents(), (std::vector<int> { 1, 2 }));
}

TEST_F(MainWindowFilterGroups, BrokenFilesAreRefusedWithAMessageAndNothingImported)
{
    window->addFilterGroup("Kept");
    const QByteArray valid
        = R"({"formatVersion": 1, "groups": [{"name": "G", "rules": [{"type": "Range"}]}]})";
    const struct
    {
        QByteArray text;
        MessageBoxes::Kind kind;
        const char* prefix;
    } cases[] = {
        { valid.left(valid.size() - 9), MessageBoxes::Kind::Critical,
            "File is not a valid filter-groups JSON: " },
        { "", MessageBoxes::Kind::Critical, "File is not a valid filter-groups JSON: " },
        { "[{\"name\": \"G\"}]", MessageBoxes::Kind::Critical, "File is not a valid filter-groups JSON: " },
        { R"({"groups": []})", MessageBoxes::Kind::Information, "The file contains no filter groups." },
        { R"({"groups": "G"})", MessageBoxes::Kind::Information, "The file contains no filter groups." },
    };
    for (const auto& c : cases) {
        messages.clear();
        EXPECT_EQ(importText(c.text), 0) << c.text.toStdString();
        ASSERT_EQ(messages.size(), 1u) << c.text.toStdString();
        EXPECT_EQ(messages[0].kind, c.kind);
        EXPECT_EQ(messages[0].title, "Import Filter Groups");
        EXPECT_TRUE(messages[0].text.startsWith(c.prefix)) << messages[0].text.toStdString();
        // The parser's reason follows the prefix.
        if (c.kind == MessageBoxes::Kind::Critical) {
            EXPECT_GT(messages[0].text.size(), QString(c.prefix).size());
        }
    }
    EXPECT_EQ(window->filterGroups().size(), 1u);

    messages.clear();
    const QString missing = folder.filePath("missing.tsyfg");
    EXPECT_EQ(window->importFilterGroups(missing), 0);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].text, "Failed to read file:\n" + missing);

    messages.clear();
    const QString unwritable = folder.filePath("no/such/folder/out.tsyfg");
    EXPECT_FALSE(window->exportFilterGroups(unwritable, { window->filterGroups()[0]->id }));
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].kind, MessageBoxes::Kind::Critical);
    EXPECT_EQ(messages[0].title, "Export Filter Groups");
    EXPECT_EQ(messages[0].text, "Failed to open file for writing:\n" + unwritable);
    EXPECT_FALSE(QFile::exists(unwritable));
}
