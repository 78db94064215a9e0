#include "MainWindowFixture.h"
#include "core/FilterRule.h"
#include "io/VQDReader.h"
#include "ui/FileDialogs.h"
#include "ui/SessionTexts.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QListWidget>
#include <QTest>

using namespace Tessaly;
using Tessaly::Testing::MainWindowFixture;

namespace {

class MainWindowSession : public MainWindowFixture
{
protected:
    void SetUp() override
    {
        MainWindowFixture::SetUp();
        FileDialogs::setInterceptor(
            [this](FileDialogs::Kind, const QString& caption, const QString&, const QString&) {
                dialogCaptions << caption;
                return fileChoices.isEmpty() ? QString() : fileChoices.takeFirst();
            });
    }
    void TearDown() override
    {
        FileDialogs::setInterceptor({});
        MainWindowFixture::TearDown();
    }

    // Opens the files in turn and waits for their preloads.
    void openAll(const QStringList& paths)
    {
        for (const QString& path : paths)
            window->openDataset(path);
        ASSERT_TRUE(waitUntilIdle());
    }

    bool waitForSession()
    {
        return QTest::qWaitFor(
                   [this] { return !window->isSessionLoading() && !window->isPreloadRunning(); }, 30000)
            && waitUntilIdle();
    }

    // Loads with every question answered `reply`, and waits until the session is applied.
    void load(const QString& path, QMessageBox::StandardButton reply = QMessageBox::Yes)
    {
        answer = reply;
        window->loadSessionFrom(path);
        ASSERT_TRUE(waitForSession());
    }

    QStringList names() const
    {
        QStringList result;
        for (const DatasetEntry* entry : window->datasets())
            result << entry->displayName;
        return result;
    }

    QString status() const { return window->findChild<QLabel*>("statusLabel")->text(); }

    QStringList fileChoices;
    QStringList dialogCaptions;
};

FilterRule rangeRule(const std::string& feature, double low, double high)
{
    FilterRule rule;
    rule.featureName = feature;
    rule.minValue = low;
    rule.maxValue = high;
    return rule;
}

TEST_F(MainWindowSession, AMovedSessionBringsBackDatasetsFiltersGroupsAndPlotSettings)
{
    MainWindow& w = makeWindow();
    const QString alpha = writeDataset("project/data/a.vqd", "Alpha");
    const QString beta = writeDataset("project/data/b.vqd", "Beta", 80);
    // A duplicate of Alpha between Alpha and Beta: duplicates are made last on loading, yet they
    // must come back in their place.
    openAll({ alpha });
    w.duplicateDataset();
    w.datasets()[1]->displayName = "Alpha again";
    openAll({ beta });
    ASSERT_EQ(names(), QStringList({ "Alpha", "Alpha again", "Beta" }));

    DatasetEntry* a = w.datasets()[0];
    a->filter.addRule(rangeRule("deform", 0.0, 0.05));
    a->filter.setCombineMode(ShowExcludedEvents);
    a->xFeatureName = "area_um";
    a->yFeatureName = "deform";
    a->scaleYMode = 2;
    a->contourFraction1 = 0.35;
    const int gate = w.addFilterGroup("Gate");
    w.addRuleToGroup(gate, rangeRule("area_um", 20, 200));
    w.setGroupEnabled(a->id, gate, true);
    w.addFilterGroup("Unused");
    for (QAction* action : w.findChildren<QAction*>()) {
        if (action->text() == "Plasma")
            action->trigger();
    }
    ASSERT_EQ(w.colorMapIndex(), 3);
    // Beta is active: its settings live in the controls until they are saved.
    ASSERT_EQ(w.activeDatasetId(), w.datasets()[2]->id);
    w.findChild<QComboBox*>("xScaleCombo")->setCurrentIndex(1);

    ASSERT_TRUE(w.saveSessionTo(folder.filePath("project/view.TSY")));
    EXPECT_EQ(status(), "Session saved: view.TSY");
    ASSERT_TRUE(QDir(folder.path()).rename("project", "moved"));

    w.clearSession();
    ASSERT_TRUE(w.datasets().empty());
    for (QAction* action : w.findChildren<QAction*>()) {
        if (action->text() == "Viridis")
            action->trigger();
    }
    messages.clear();
    load(folder.filePath("moved/view.TSY"));
    EXPECT_EQ(w.colorMapIndex(), 3);

    EXPECT_TRUE(messages.empty()) << messages.front().title.toStdString();
    ASSERT_EQ(names(), QStringList({ "Alpha", "Alpha again", "Beta" }));
    EXPECT_EQ(status(), "Session loaded: 3 dataset(s)");
    const std::vector<DatasetEntry*>& restored = w.datasets();
    EXPECT_EQ(restored[0]->filePath, folder.filePath("moved/data/a.vqd").toStdString());
    EXPECT_EQ(restored[1]->reader, restored[0]->reader);
    EXPECT_TRUE(restored[1]->featuresLoaded);
    EXPECT_EQ(restored[2]->filePath, folder.filePath("moved/data/b.vqd").toStdString());
    // The list shows the names, and the active dataset is shown with its own settings.
    auto* list = w.findChild<QListWidget*>("datasetList");
    ASSERT_EQ(list->count(), 3);
    EXPECT_TRUE(list->item(1)->text().contains("Alpha again"));
    EXPECT_EQ(list->currentRow(), 2);
    EXPECT_EQ(w.activeDatasetId(), restored[2]->id);
    EXPECT_EQ(w.findChild<QComboBox*>("xScaleCombo")->currentIndex(), 1);

    ASSERT_EQ(restored[0]->filter.ruleCount(), 1);
    EXPECT_EQ(restored[0]->filter.rules()[0].featureName, "deform");
    EXPECT_EQ(restored[0]->filter.combineMode(), ShowExcludedEvents);
    EXPECT_EQ(restored[0]->xFeatureName, "area_um");
    EXPECT_EQ(restored[0]->scaleYMode, 2);
    EXPECT_DOUBLE_EQ(restored[0]->contourFraction1, 0.35);
    EXPECT_EQ(restored[1]->filter.ruleCount(), 0);
    EXPECT_TRUE(w.isGroupEnabled(restored[0], gate));
    EXPECT_FALSE(w.isGroupEnabled(restored[1], gate));

    ASSERT_EQ(w.filterGroups().size(), 2u);
    EXPECT_EQ(w.filterGroups()[0]->id, gate);
    EXPECT_EQ(w.filterGroups()[0]->name, "Gate");
    ASSERT_EQ(w.filterGroups()[0]->rules.size(), 1u);
    EXPECT_EQ(w.filterGroups()[0]->rules[0].featureName, "area_um");
    // The group's rule counts for Alpha: its effective filter holds its own rule and the group's.
    EXPECT_EQ(w.buildEffectiveFilter(restored[0]).ruleCount(), 2);
    // New groups never take a restored id.
    EXPECT_GT(w.addFilterGroup("New"), w.filterGroups()[1]->id);
}

TEST_F(MainWindowSession, AFileThatChangedSinceSavingIsQuestioned)
{
    MainWindow& w = makeWindow();
    const QString path = writeDataset("a.vqd", "Alpha");
    openAll({ path });
    const QString session = folder.filePath("s.TSY");
    ASSERT_TRUE(w.saveSessionTo(session));
    const qint64 size = QFileInfo(path).size();
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write("x", 1);
    }

    messages.clear();
    load(session, QMessageBox::No);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Dataset Changed");
    EXPECT_EQ(messages[0].text,
        QString("Dataset \"Alpha\" may have changed since the session was saved.\n\nExpected: 120 events, %1 "
                "bytes\nFound: 120 events, %2 bytes\n\nContinue loading this dataset?")
            .arg(size)
            .arg(size + 1));
    EXPECT_TRUE(w.datasets().empty());
    EXPECT_EQ(status(), "Session loaded: 0 dataset(s)");

    messages.clear();
    load(session, QMessageBox::Yes);
    EXPECT_EQ(names(), QStringList({ "Alpha" }));
}

TEST_F(MainWindowSession, AComputedFeatureMakesTheFileLookChanged)
{
    MainWindow& w = makeWindow();
    openAll({ writeDataset("a.vqd", "Alpha") });
    w.datasets()[0]->reader->setFeature("deform_odd", std::vector<double>(120, 1.0));
    const QString session = folder.filePath("s.TSY");
    ASSERT_TRUE(w.saveSessionTo(session));
    messages.clear();
    load(session, QMessageBox::Yes);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Dataset Changed");
    EXPECT_EQ(names(), QStringList({ "Alpha" }));
}

TEST_F(MainWindowSession, AMissingFileCanBeLocatedOrSkippedWithItsDuplicates)
{
    MainWindow& w = makeWindow();
    const QString alpha = writeDataset("a.vqd", "Alpha");
    openAll({ alpha, writeDataset("b.vqd", "Beta") });
    w.findChild<QListWidget*>("datasetList")->setCurrentRow(0);
    w.duplicateDataset();
    const QString session = folder.filePath("s.TSY");
    ASSERT_TRUE(w.saveSessionTo(session));
    ASSERT_TRUE(QDir(folder.path()).mkdir("elsewhere"));
    ASSERT_TRUE(QFile::rename(alpha, folder.filePath("elsewhere/a.vqd")));

    // Skipped: one question, and the copy of the skipped file goes without a word.
    messages.clear();
    load(session, QMessageBox::No);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Dataset Not Found");
    EXPECT_EQ(messages[0].text,
        "Cannot find dataset:\n" + alpha
            + "\n\nDisplay name: Alpha\n\nWould you like to locate it manually?");
    EXPECT_EQ(names(), QStringList({ "Beta" }));

    // Located by hand: the file and its copy come back from the new place.
    messages.clear();
    fileChoices = QStringList { folder.filePath("elsewhere/a.vqd") };
    dialogCaptions.clear();
    load(session, QMessageBox::Yes);
    EXPECT_EQ(dialogCaptions, QStringList({ "Locate: Alpha" }));
    EXPECT_EQ(names(), QStringList({ "Alpha", "Beta", "Alpha (copy)" }));
    EXPECT_EQ(w.datasets()[2]->filePath, folder.filePath("elsewhere/a.vqd").toStdString());

    // A cancelled search skips the file too.
    fileChoices.clear();
    load(session, QMessageBox::Yes);
    EXPECT_EQ(names(), QStringList({ "Beta" }));
}

TEST_F(MainWindowSession, ABrokenSessionIsRefusedAndTheCurrentOneKept)
{
    MainWindow& w = makeWindow();
    openAll({ writeDataset("a.vqd", "Alpha") });
    const QString good = folder.filePath("good.TSY");
    ASSERT_TRUE(w.saveSessionTo(good));
    QFile goodFile(good);
    ASSERT_TRUE(goodFile.open(QIODevice::ReadOnly));
    const QByteArray full = goodFile.readAll();

    const struct
    {
        QByteArray content;
        QString text; // the start of the message
    } cases[] = {
        { full.left(full.size() / 2), "Invalid session file: " },
        { "PK\x03\x04 not json", "Invalid session file: " },
        { "", "Invalid session file: " },
        { R"({"datasets": []})", "Unrecognized session file format." },
        { R"({"version": 0, "datasets": []})", "Unrecognized session file format." },
        { "[]", "Unrecognized session file format." },
    };
    for (const auto& c : cases) {
        const QString path = writeTextFile("broken.TSY", c.content);
        messages.clear();
        w.loadSessionFrom(path);
        ASSERT_EQ(messages.size(), 1u) << c.content.toStdString();
        EXPECT_EQ(messages[0].kind, MessageBoxes::Kind::Critical);
        EXPECT_EQ(messages[0].title, "Error");
        EXPECT_TRUE(messages[0].text.startsWith(c.text)) << messages[0].text.toStdString();
        EXPECT_FALSE(w.isSessionLoading());
        EXPECT_EQ(names(), QStringList({ "Alpha" })) << c.content.toStdString();
    }
    messages.clear();
    const QString missing = folder.filePath("missing.TSY");
    w.loadSessionFrom(missing);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].text, "Failed to read session file: " + missing);
    EXPECT_EQ(names(), QStringList({ "Alpha" }));
}

TEST_F(MainWindowSession, ANewerSessionWarnsAndStillLoads)
{
    MainWindow& w = makeWindow();
    openAll({ writeDataset("a.vqd", "Alpha") });
    const QString session = folder.filePath("s.TSY");
    ASSERT_TRUE(w.saveSessionTo(session));
    QFile file(session);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QJsonObject root = QJsonDocument::fromJson(file.readAll()).object();
    file.close();
    root.insert("version", 2);
    // Indices out of range fall back to the first dataset and the first colour map.
    root.insert("mainWindow", QJsonObject { { "activeDatasetIndex", 5 }, { "colorMapIndex", 17 } });
    openAll({ writeDataset("b.vqd", "Beta") });
    for (QAction* action : w.findChildren<QAction*>()) {
        if (action->text() == "Jet")
            action->trigger();
    }
    const QString newer = writeTextFile("newer.TSY", QJsonDocument(root).toJson());

    messages.clear();
    load(newer);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].kind, MessageBoxes::Kind::Warning);
    EXPECT_EQ(messages[0].title, "Warning");
    EXPECT_EQ(messages[0].text, SessionTexts::newerVersionText);
    EXPECT_EQ(names(), QStringList({ "Alpha" }));
    EXPECT_EQ(w.activeDatasetId(), w.datasets()[0]->id);
    EXPECT_EQ(w.colorMapIndex(), 0);
}

TEST_F(MainWindowSession, SavingNamesTheFileAndReportsFailure)
{
    MainWindow& w = makeWindow();
    w.saveSession();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].kind, MessageBoxes::Kind::Information);
    EXPECT_EQ(messages[0].text, "No datasets loaded to save.");
    EXPECT_TRUE(dialogCaptions.isEmpty());

    openAll({ writeDataset("a.vqd", "Alpha") });
    const struct
    {
        QString chosen;
        QString written;
    } names[] = {
        { folder.filePath("plain"), folder.filePath("plain.TSY") },
        { folder.filePath("lower.tsy"), folder.filePath("lower.tsy") },
        { folder.filePath("dots.v2"), folder.filePath("dots.v2.TSY") },
    };
    for (const auto& n : names) {
        fileChoices = QStringList { n.chosen };
        w.saveSession();
        EXPECT_TRUE(QFileInfo(n.written).isFile()) << n.written.toStdString();
    }
    EXPECT_EQ(dialogCaptions.last(), "Save Session");

    messages.clear();
    const QString unwritable = folder.filePath("no/such/folder/s.TSY");
    EXPECT_FALSE(w.saveSessionTo(unwritable));
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].kind, MessageBoxes::Kind::Critical);
    EXPECT_EQ(messages[0].text, "Failed to write session file: " + unwritable);
    EXPECT_FALSE(QFileInfo::exists(unwritable));
}

TEST_F(MainWindowSession, LoadingOverDatasetsAsksFirst)
{
    MainWindow& w = makeWindow();
    openAll({ writeDataset("a.vqd", "Alpha") });
    answer = QMessageBox::No;
    w.loadSession();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Load Session");
    EXPECT_TRUE(dialogCaptions.isEmpty());
    EXPECT_EQ(names(), QStringList({ "Alpha" }));

    // Agreed, but the file dialog is cancelled: nothing changes either.
    answer = QMessageBox::Yes;
    w.loadSession();
    EXPECT_EQ(dialogCaptions, QStringList({ "Load Session" }));
    EXPECT_EQ(names(), QStringList({ "Alpha" }));
}

} // namespace
