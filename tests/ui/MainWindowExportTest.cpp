#include "MainWindowFixture.h"
#include "io/VQDReader.h"
#include "support/FileSizeLimit.h"
#include "ui/ExportDialog.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QMenuBar>
#include <QProgressDialog>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <unistd.h>

using namespace Tessaly;
using Tessaly::Testing::FileSizeLimit;
using Tessaly::Testing::MainWindowFixture;

namespace {

QByteArray sha256(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(&file);
    return hash.result();
}

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

int lineCount(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : -1;
}

FilterRule deformBelow(double limit)
{
    FilterRule rule;
    rule.featureName = "deform";
    rule.minValue = 0.0;
    rule.maxValue = limit;
    return rule;
}

class MainWindowExport : public MainWindowFixture
{
protected:
    // One loaded dataset, a.vqd, in a folder of its own.
    DatasetEntry* openOne(const QString& name = QStringLiteral("data/a.vqd"), bool withImages = false)
    {
        if (!window)
            makeWindow();
        window->openDataset(writeDataset(name, QStringLiteral("Sample"), 120, withImages));
        EXPECT_TRUE(waitUntilIdle());
        return window->datasets().empty() ? nullptr : window->datasets().back();
    }

    static ExportConfig allFeatures(const DatasetEntry& entry)
    {
        ExportConfig config;
        for (const std::string& name : entry.reader->featureNames())
            if (name != "image" && name != "mask")
                config.features.append(QString::fromStdString(name));
        return config;
    }

    // Answers the next export dialog: `configure` sets it up, then it is accepted or cancelled.
    void answerDialog(std::function<void(ExportDialog&)> configure, bool accept = true)
    {
        QTimer::singleShot(0, [configure, accept] {
            QTRY_VERIFY(qobject_cast<ExportDialog*>(QApplication::activeModalWidget()) != nullptr);
            auto* dialog = qobject_cast<ExportDialog*>(QApplication::activeModalWidget());
            configure(*dialog);
            if (accept)
                dialog->accept();
            else
                dialog->reject();
        });
    }
};

} // namespace

TEST_F(MainWindowExport, AFilteredExportReadsBackWithTheEventsThatPassAndLeavesTheSourceAlone)
{
    DatasetEntry* entry = openOne();
    ASSERT_NE(entry, nullptr);
    const QByteArray before = sha256(QString::fromStdString(entry->filePath));
    entry->filter.addRule(deformBelow(0.02));
    const std::vector<double>& deform = entry->reader->getFeature("deform");
    std::vector<double> passing;
    for (double value : deform)
        if (value >= 0.0 && value <= 0.02)
            passing.push_back(value);
    ASSERT_FALSE(passing.empty());
    ASSERT_LT(passing.size(), deform.size());

    ASSERT_TRUE(window->exportDataset(entry, allFeatures(*entry)));
    const QString exported = folder.filePath(QStringLiteral("data/TSYexport_a.vqd"));
    VQDReader reader;
    ASSERT_TRUE(reader.open(exported.toStdString()));
    EXPECT_EQ(reader.eventCount(), passing.size());
    EXPECT_EQ(reader.getFeature("deform"), passing);
    const VQDMetadata metadata = reader.readMetadata();
    EXPECT_EQ(metadata.offline_filter.at("deform max"), "0.020000");
    EXPECT_EQ(metadata.export_.at("event count"), std::to_string(passing.size()));
    EXPECT_EQ(sha256(QString::fromStdString(entry->filePath)), before);
    EXPECT_TRUE(messages.empty());

    // A second export takes the next free name; a renamed dataset records its name.
    entry->displayName = QStringLiteral("Renamed");
    ASSERT_TRUE(window->exportDataset(entry, allFeatures(*entry)));
    ASSERT_TRUE(reader.open(folder.filePath(QStringLiteral("data/TSYexport_a_2.vqd")).toStdString()));
    EXPECT_EQ(reader.readMetadata().export_.at("changed sample name"), "Renamed");
    EXPECT_EQ(filesIn(folder.filePath(QStringLiteral("data"))),
        QStringList({ "TSYexport_a.vqd", "TSYexport_a_2.vqd", "a.vqd" }));
    EXPECT_EQ(sha256(QString::fromStdString(entry->filePath)), before);
}

TEST_F(MainWindowExport, TablesAndVideosGoBesideTheFileOrIntoTheChosenFolder)
{
    DatasetEntry* entry = openOne(QStringLiteral("data/a.vqd"), true);
    ASSERT_NE(entry, nullptr);
    // Disabled, the filter exports every event; so does an enabled one without rules.
    entry->filter.addRule(deformBelow(0.0));
    entry->filter.setEnabled(false);

    ExportConfig table;
    table.tsv = true;
    table.features = QStringList { "deform", "no_such_feature", "area_um" };
    ASSERT_TRUE(window->exportDataset(entry, table));
    // Title, date, count, one line per attribute and "#"; the labels; 120 events.
    const QString tsv = folder.filePath(QStringLiteral("data/TSYexport_a.tsv"));
    EXPECT_EQ(lineCount(tsv), 4 + static_cast<int>(entry->metadata.allAttributes.size()) + 1 + 120);

    QTemporaryDir elsewhere;
    ExportConfig video;
    video.avi = true;
    video.customDirectory = true;
    video.directory = elsewhere.path();
    ASSERT_TRUE(window->exportDataset(entry, video));
    EXPECT_EQ(filesIn(elsewhere.path()), QStringList({ "TSYexport_a.avi" }));
    EXPECT_GT(QFileInfo(elsewhere.filePath(QStringLiteral("TSYexport_a.avi"))).size(), 0);
    EXPECT_TRUE(messages.empty());
}

TEST_F(MainWindowExport, NoEventsOrNoImagesAreToldAndWriteNothing)
{
    DatasetEntry* entry = openOne();
    ASSERT_NE(entry, nullptr);
    entry->displayName = QStringLiteral("Empty");
    FilterRule nothing = deformBelow(0.5);
    nothing.minValue = 1.0; // above the maximum: nothing passes
    entry->filter.addRule(nothing);
    EXPECT_FALSE(window->exportDataset(entry, allFeatures(*entry)));
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Export");
    EXPECT_EQ(messages[0].text, "No events pass the filter for: Empty");

    entry->filter.clearRules();
    messages.clear();
    ExportConfig video;
    video.avi = true;
    EXPECT_FALSE(window->exportDataset(entry, video));
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].text, "No images available in: Empty");
    EXPECT_EQ(filesIn(folder.filePath(QStringLiteral("data"))), QStringList({ "a.vqd" }));
}

TEST_F(MainWindowExport, AnUnwritableOrFullTargetGivesAnExportErrorAndNoFile)
{
    DatasetEntry* entry = openOne();
    ASSERT_NE(entry, nullptr);
    // A folder without write permission; the super-user writes anywhere, but not into /proc.
    QTemporaryDir readOnly;
    QFile::setPermissions(readOnly.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    const QString target = geteuid() == 0 ? QStringLiteral("/proc") : readOnly.path();
    for (const bool tsv : { false, true }) {
        messages.clear();
        ExportConfig config = allFeatures(*entry);
        config.tsv = tsv;
        config.customDirectory = true;
        config.directory = target;
        EXPECT_FALSE(window->exportDataset(entry, config));
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].kind, MessageBoxes::Kind::Critical);
        EXPECT_EQ(messages[0].title, "Export Error");
        EXPECT_TRUE(messages[0].text.startsWith("Failed to create: " + target + "/TSYexport_a."))
            << messages[0].text.toStdString();
    }
    QFile::setPermissions(
        readOnly.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    EXPECT_TRUE(filesIn(readOnly.path()).isEmpty());

    // A disk that fills up halfway: the file is created, then writing fails. (Measurement files on a
    // full disk are covered by the writer's own test: the limit that simulates it here would bind
    // the library's closing writes as well.)
    QTemporaryDir full;
    for (const bool tsv : { true }) {
        messages.clear();
        ExportConfig config = allFeatures(*entry);
        config.tsv = tsv;
        config.customDirectory = true;
        config.directory = full.path();
        {
            FileSizeLimit limit(4096);
            EXPECT_FALSE(window->exportDataset(entry, config));
        }
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].title, "Export Error");
        EXPECT_TRUE(messages[0].text.startsWith("Failed to write: ")) << messages[0].text.toStdString();
        EXPECT_TRUE(filesIn(full.path()).isEmpty()) << filesIn(full.path()).join(' ').toStdString();
    }
}

TEST_F(MainWindowExport, TheMenuExportsAllDatasetsAndAFailureDoesntStopTheOthers)
{
    DatasetEntry* first = openOne(QStringLiteral("one/a.vqd"));
    DatasetEntry* second = openOne(QStringLiteral("two/b.vqd"));
    ASSERT_NE(second, nullptr);
    FilterRule nothing = deformBelow(0.5);
    nothing.minValue = 1.0;
    first->filter.addRule(nothing);

    QAction* action = nullptr;
    for (QAction* candidate : window->menuBar()->findChildren<QAction*>())
        if (candidate->text() == "Export &Data...")
            action = candidate;
    ASSERT_NE(action, nullptr);
    EXPECT_TRUE(action->isEnabled());

    answerDialog([](ExportDialog& dialog) {
        QRadioButton* all = nullptr;
        for (QRadioButton* radio : dialog.findChildren<QRadioButton*>())
            if (radio->text() == "All datasets (2)")
                all = radio;
        ASSERT_TRUE(all && all->isEnabled());
        all->setChecked(true);
        for (QRadioButton* radio : dialog.findChildren<QRadioButton*>())
            if (radio->text() == ".tsv (Tab-separated)")
                radio->setChecked(true);
    });
    action->trigger();

    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0].text, "No events pass the filter for: " + first->displayName);
    EXPECT_EQ(messages[1].kind, MessageBoxes::Kind::Information);
    EXPECT_EQ(messages[1].text, "Exported 1 dataset(s) successfully.");
    EXPECT_EQ(filesIn(folder.filePath(QStringLiteral("one"))), QStringList({ "a.vqd" }));
    EXPECT_EQ(filesIn(folder.filePath(QStringLiteral("two"))), QStringList({ "TSYexport_b.tsv", "b.vqd" }));

    // The next dialog opens as the last one closed.
    answerDialog(
        [](ExportDialog& dialog) {
            const ExportConfig config = dialog.config();
            EXPECT_TRUE(config.tsv);
            EXPECT_TRUE(config.allDatasets);
        },
        false);
    action->trigger();
}

TEST_F(MainWindowExport, CancellingTheBatchStopsBeforeTheNextDataset)
{
    openOne(QStringLiteral("one/a.vqd"));
    openOne(QStringLiteral("two/b.vqd"));
    answerDialog([](ExportDialog& dialog) {
        for (QRadioButton* radio : dialog.findChildren<QRadioButton*>())
            if (radio->text().startsWith("All datasets"))
                radio->setChecked(true);
    });
    // The progress dialog lets events through as it shows; the user cancels it at once.
    QTimer canceller;
    QObject::connect(&canceller, &QTimer::timeout, [] {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* progress = qobject_cast<QProgressDialog*>(widget); progress && progress->isVisible())
                progress->cancel();
    });
    canceller.start(0);
    window->exportData();
    canceller.stop();

    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(filesIn(folder.filePath(QStringLiteral("one"))), QStringList({ "a.vqd" }));
    EXPECT_EQ(filesIn(folder.filePath(QStringLiteral("two"))), QStringList({ "b.vqd" }));
}

TEST_F(MainWindowExport, WithoutALoadedDatasetThereIsNoDialog)
{
    makeWindow();
    window->exportData();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Export");
    EXPECT_EQ(messages[0].text, "No loaded dataset available for export.");
}
