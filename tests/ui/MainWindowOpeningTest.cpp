#include "MainWindowFixture.h"
#include "core/DatasetEntry.h"
#include "io/FileProbe.h"
#include "io/Hdf5Mutex.h"
#include "io/VQDReader.h"
#include "plot/ScatterPlot.h"
#include "support/FixtureWriter.h"
#include "support/MessageCapture.h"
#include "support/StandInProgram.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QListWidget>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <mutex>
#include <random>

using namespace Tessaly;
using Tessaly::Testing::MainWindowFixture;
using Tessaly::Testing::MessageCapture;

using MainWindowOpening = MainWindowFixture;

TEST_F(MainWindowOpening, PathsSortFolderByFolderIgnoringCase)
{
    MainWindow& w = makeWindow();
    const QString root = folder.path();
    writeDataset("B/z.VQD", "z");
    writeDataset("a-b/y.vqd", "y");
    writeDataset("a/x.vqd", "x");
    writeDataset("a/sub/w.vqd", "w");
    writeTextFile("a/notes.txt");
    drop({ QUrl::fromLocalFile(root) });
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_TRUE(messages.empty());
    const std::vector<std::string> expected
        = { (root + "/a/sub/w.vqd").toStdString(), (root + "/a/x.vqd").toStdString(),
              (root + "/a-b/y.vqd").toStdString(), (root + "/B/z.VQD").toStdString() };
    ASSERT_EQ(datasetPaths(), expected);
    // The last file opened is the current row at the end, and the list shows every dataset.
    auto* list = w.findChild<QListWidget*>("datasetList");
    EXPECT_EQ(list->count(), 4);
    EXPECT_EQ(list->currentRow(), 3);
    EXPECT_EQ(w.activeDatasetId(), w.datasets().back()->id);
}

TEST_F(MainWindowOpening, DropsWithoutMeasurementFilesAreRefusedOnce)
{
    makeWindow();
    const QString text = writeTextFile("readme.txt");
    drop({ QUrl::fromLocalFile(text) });
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Invalid File");
    EXPECT_EQ(messages[0].text, "Please drop .vqd file(s) or folders containing them.");

    // Beside a measurement file the text file is passed over without a word.
    messages.clear();
    drop({ QUrl::fromLocalFile(text), QUrl::fromLocalFile(writeDataset("CAPS.VQD")) });
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(window->datasets().size(), 1u);
}

TEST_F(MainWindowOpening, UnreadableAndForeignFilesAreTurnedAway)
{
    MainWindow& w = makeWindow();
    const QString broken = writeTextFile("broken.vqd", "not HDF5 at all");
    w.openDataset(broken);
    ASSERT_TRUE(waitUntilIdle());
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].kind, MessageBoxes::Kind::Critical);
    EXPECT_EQ(messages[0].title, "Error");
    EXPECT_EQ(messages[0].text, "Failed to open: " + broken + "\nThis is not an HDF5 file.");

    // Two foreign files: one warning for the whole run.
    messages.clear();
    drop(
        { QUrl::fromLocalFile(writeForeignFile("f1.vqd")), QUrl::fromLocalFile(writeForeignFile("f2.vqd")) });
    w.openDataset(writeForeignFile("f3.vqd"));
    ASSERT_TRUE(waitUntilIdle());
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Unsupported Data");
    EXPECT_EQ(messages[0].text,
        "The data does not seem to originate from a ORVANE INSTRUMENTS Vortiq.\n"
        "Tessaly is not designed to handle this data.");
    EXPECT_TRUE(w.datasets().empty());

    // The ids of refused files are spent.
    w.openDataset(writeDataset("good.vqd"));
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_GT(w.datasets().front()->id, 0);
}

TEST_F(MainWindowOpening, FoldersEmptyFilesAndRandomBytesGiveTheErrorBox)
{
    MainWindow& w = makeWindow();
    const QString directory = folder.filePath("hostile/folder.vqd");
    ASSERT_TRUE(QDir().mkpath(directory));
    const QString empty = writeTextFile("hostile/empty.vqd", QByteArray());
    QByteArray noise(64 * 1024, '\0');
    std::mt19937 random(11);
    for (char& c : noise)
        c = static_cast<char>(random());
    const QString noisy = writeTextFile("hostile/noise.vqd", noise);

    const QString notHdf5 = QStringLiteral("\nThis is not an HDF5 file.");
    const auto expectErrors = [this](const QStringList& texts) {
        ASSERT_TRUE(waitUntilIdle());
        ASSERT_EQ(messages.size(), static_cast<std::size_t>(texts.size()));
        for (int i = 0; i < texts.size(); ++i) {
            EXPECT_EQ(messages[i].kind, MessageBoxes::Kind::Critical);
            EXPECT_EQ(messages[i].title, "Error");
            EXPECT_EQ(messages[i].text, "Failed to open: " + texts[i]);
        }
        messages.clear();
    };

    // Each refusal lets the next file in line go ahead.
    for (const QString& path : { directory, empty, noisy })
        w.openDataset(path);
    expectErrors(
        { directory + "\nThe file cannot be read: it is a folder.", empty + notHdf5, noisy + notHdf5 });

    // Dropped, in path order. A dropped folder is searched for files: a folder inside it is not one,
    // whatever its name.
    drop({ QUrl::fromLocalFile(noisy), QUrl::fromLocalFile(empty) });
    expectErrors({ empty + notHdf5, noisy + notHdf5 });
    drop({ QUrl::fromLocalFile(folder.filePath("hostile")) });
    expectErrors({ empty + notHdf5, noisy + notHdf5 });

    EXPECT_TRUE(w.datasets().empty());
    EXPECT_FALSE(w.isPreloadRunning());
    // The window goes on as before.
    w.openDataset(writeDataset("good.vqd"));
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_EQ(w.datasets().size(), 1u);
    EXPECT_TRUE(messages.empty());
}

// The preload reads on the thread pool while the interface thread reads other datasets and opens
// more: every one of these reads goes through the library lock, and none may see another's state.
TEST_F(MainWindowOpening, OtherDatasetsStayReadableWhileOnePreloads)
{
    MainWindow& w = makeWindow();
    const QString first = writeDataset("first.vqd", "First", 300);
    w.openDataset(first);
    ASSERT_TRUE(waitUntilIdle());
    const std::vector<double> deform = w.datasets()[0]->reader->getFeature("deform");
    ASSERT_EQ(deform.size(), 300u);
    const QString second = writeDataset("second.vqd", "Second", 60000);
    const QString third = writeDataset("third.vqd", "Third", 200);

    w.openDataset(second);
    w.openDataset(third);
    auto* list = w.findChild<QListWidget*>("datasetList");
    QElapsedTimer clock;
    clock.start();
    while ((w.isPreloadRunning() || w.datasets().size() < 3) && clock.elapsed() < 30000) {
        list->setCurrentRow(0);
        EXPECT_EQ(w.datasets()[0]->reader->getFeature("deform"), deform);
        VQDReader separate;
        ASSERT_TRUE(separate.open(first.toStdString()));
        separate.readMetadata();
        separate.cacheAllFeatures();
        EXPECT_EQ(separate.getFeature("deform"), deform);
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(waitUntilIdle());
    ASSERT_EQ(w.datasets().size(), 3u);
    EXPECT_EQ(w.datasets()[1]->reader->getFeature("deform").size(), 60000u);
    EXPECT_EQ(w.datasets()[2]->reader->getFeature("deform").size(), 200u);
    EXPECT_TRUE(messages.empty());
}

TEST_F(MainWindowOpening, NameComesFromTheMetadataOrTheFile)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("named.vqd", "Control <A>"));
    const QString unnamed = writeDataset("unnamed.vqd", "");
    const QString renamed = folder.filePath("renamed.vqd");
    Tessaly::Testing::FixtureWriter(renamed.toStdString())
        .column<double>("deform", { 0.1 })
        .stringAttribute("setup:module composition", "Vortiq")
        .stringAttribute("experiment:sample", "Original")
        .stringAttribute("export:changed sample name", "Renamed")
        .close();
    w.openDataset(unnamed);
    w.openDataset(renamed);
    ASSERT_TRUE(waitUntilIdle());
    ASSERT_EQ(w.datasets().size(), 3u);
    EXPECT_EQ(w.datasets()[0]->displayName, "Control <A>");
    EXPECT_EQ(w.datasets()[1]->displayName, "unnamed.vqd");
    EXPECT_EQ(w.datasets()[2]->displayName, "Renamed");
    // The active dataset is shown once loaded.
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text(), "Loaded: Renamed (1 events)");
}

TEST_F(MainWindowOpening, AFileIsOpenedOnceAndArrivalsDuringAPreloadWait)
{
    MainWindow& w = makeWindow();
    const QString first = writeDataset("first.vqd", "First");
    const QString second = writeDataset("second.vqd", "Second");
    {
        // Holding the library lock keeps the preload from finishing.
        std::lock_guard<std::recursive_mutex> hold(hdf5Mutex());
        w.openDataset(first);
        EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text(), "Checking: first.vqd...");
        ASSERT_TRUE(QTest::qWaitFor([&w] { return w.isPreloadRunning(); }, 20000));
        EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text(), "Loading: First...");
        w.openDataset(second);
        w.openDataset(first);
        EXPECT_EQ(w.datasets().size(), 1u);
    }
    ASSERT_TRUE(waitUntilIdle());
    ASSERT_EQ(w.datasets().size(), 2u);
    EXPECT_EQ(w.datasets()[1]->displayName, "Second");

    // Opening a loaded file again only selects its row.
    w.openDataset(first);
    EXPECT_EQ(w.datasets().size(), 2u);
    EXPECT_EQ(w.activeDatasetId(), w.datasets()[0]->id);
    EXPECT_EQ(w.findChild<QListWidget*>("datasetList")->currentRow(), 0);
}

TEST_F(MainWindowOpening, TheLoadingRowCannotBeRemovedOthersCan)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("ready.vqd", "Ready"));
    ASSERT_TRUE(waitUntilIdle());
    auto* list = w.findChild<QListWidget*>("datasetList");
    {
        std::lock_guard<std::recursive_mutex> hold(hdf5Mutex());
        w.openDataset(writeDataset("loading.vqd", "Loading"));
        ASSERT_TRUE(QTest::qWaitFor([&w] { return w.isPreloadRunning(); }, 20000));
        ASSERT_EQ(list->currentRow(), 1);
        w.removeDataset();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].title, "Cannot Remove");
        EXPECT_EQ(messages[0].text, "This dataset is still loading.");
        EXPECT_EQ(w.datasets().size(), 2u);

        // Removing the row before it moves the preload's row with it.
        list->setCurrentRow(0);
        w.removeDataset();
        ASSERT_EQ(w.datasets().size(), 1u);
    }
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_TRUE(w.datasets()[0]->featuresLoaded);
    EXPECT_EQ(w.datasets()[0]->displayName, "Loading");
    EXPECT_EQ(list->count(), 1);

    w.removeDataset();
    EXPECT_TRUE(w.datasets().empty());
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text(), "No file loaded.");
}

TEST_F(MainWindowOpening, DuplicatesShareTheReaderButNotTheName)
{
    MainWindow& w = makeWindow();
    {
        std::lock_guard<std::recursive_mutex> hold(hdf5Mutex());
        w.openDataset(writeDataset("source.vqd", "Source"));
        ASSERT_TRUE(QTest::qWaitFor([&w] { return w.isPreloadRunning(); }, 20000));
        // Not loaded yet: nothing to duplicate.
        w.duplicateDataset();
        EXPECT_EQ(w.datasets().size(), 1u);
    }
    ASSERT_TRUE(waitUntilIdle());
    w.datasets()[0]->filter.setCombineMode(1);
    w.duplicateDataset();
    ASSERT_EQ(w.datasets().size(), 2u);
    const DatasetEntry* source = w.datasets()[0];
    const DatasetEntry* copy = w.datasets()[1];
    EXPECT_EQ(copy->reader, source->reader);
    EXPECT_NE(copy->id, source->id);
    EXPECT_EQ(copy->displayName, "Source (copy)");
    EXPECT_EQ(copy->filter.combineMode(), 1);
    EXPECT_TRUE(copy->featuresLoaded);
    EXPECT_EQ(w.activeDatasetId(), copy->id);

    // A feature computed for one shows in both.
    source->reader->setFeature("computed", std::vector<double>(120, 1.0));
    EXPECT_TRUE(copy->reader->hasFeature("computed"));

    // Removing the source leaves the copy's reader open.
    w.findChild<QListWidget*>("datasetList")->setCurrentRow(0);
    w.removeDataset();
    ASSERT_EQ(w.datasets().size(), 1u);
    EXPECT_TRUE(w.datasets()[0]->reader->isOpen());
    EXPECT_EQ(w.datasets()[0]->reader->getFeature("deform").size(), 120u);
}

TEST_F(MainWindowOpening, NewDatasetsFollowPeersThatAgree)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("a.vqd", "A"));
    w.openDataset(writeDataset("b.vqd", "B"));
    ASSERT_TRUE(waitUntilIdle());
    for (DatasetEntry* entry : w.datasets()) {
        entry->filter.setEnabled(false);
        FilterRule shared;
        shared.featureName = "deform";
        shared.maxValue = 0.05;
        shared.propagationId = "shared-rule";
        entry->filter.addRule(shared);
    }
    w.openDataset(writeDataset("c.vqd", "C"));
    ASSERT_TRUE(waitUntilIdle());
    const DatasetEntry* added = w.datasets().back();
    EXPECT_FALSE(added->filter.isEnabled());
    ASSERT_EQ(added->filter.ruleCount(), 1);
    EXPECT_EQ(added->filter.rules()[0].propagationId, "shared-rule");
    EXPECT_EQ(added->xFeatureName, "area_um");
    EXPECT_EQ(added->yFeatureName, "deform");
}

TEST_F(MainWindowOpening, FilesThatCrashTheFileLibraryAreRefusedNotFatal)
{
    MainWindow& w = makeWindow();
    const QString damaged = QStringLiteral(TESSALY_TEST_DATA "/hostile/crash-7955c795.vqd");
    ASSERT_TRUE(QFile::exists(damaged));
    w.openDataset(damaged);
    ASSERT_TRUE(waitUntilIdle());
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Error");
    EXPECT_EQ(messages[0].text,
        "Failed to open: " + damaged
            + "\nThe file is damaged: reading its structure crashed the file check.");
    EXPECT_TRUE(w.datasets().empty());
    // The program goes on: a sound file opens after it.
    w.openDataset(writeDataset("after.vqd"));
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_EQ(w.datasets().size(), 1u);
}

TEST_F(MainWindowOpening, AFileWhoseColumnsCrashTheProbeIsDroppedAfterOpening)
{
    // A stand-in probe that gets through the file's structure but crashes on its columns.
    const QString fakeProbe = Testing::writeStandInProgram(
        folder.filePath("probe.sh"), "[ \"$1\" = --columns ] && kill -SEGV $$\nexit 0\n");
    FileProbe::setProgram(fakeProbe);
    MainWindow& w = makeWindow();
    const QString kept = writeDataset("kept.vqd", "Kept");
    w.openDataset(kept);
    const QString dropped = writeDataset("dropped.vqd", "Dropped");
    w.openDataset(dropped);
    ASSERT_TRUE(waitUntilIdle());
    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    // Both were refused once their columns were to be read; the queue went on to the second.
    ASSERT_EQ(messages.size(), 2u);
    const QString reason
        = QStringLiteral("\nThe file is damaged: reading its columns crashed the file check.");
    EXPECT_EQ(messages[0].text, "Failed to open: " + kept + reason);
    EXPECT_EQ(messages[1].text, "Failed to open: " + dropped + reason);
    EXPECT_TRUE(w.datasets().empty());
    EXPECT_EQ(w.findChild<QListWidget*>("datasetList")->count(), 0);
}

// The plot's columns are checked by a probe of their own and handed over first: the plot is drawn
// from them while the other columns are still being checked, with the controls off until the end.
// A plot that would need more than those columns waits for the end.
TEST_F(MainWindowOpening, ThePlotIsDrawnFromItsOwnColumnsBeforeTheRestIsIn)
{
    // A stand-in probe that holds back every share but the plot's own until the gate file exists.
    const QString gate = folder.filePath("gate");
    const QString gatedProbe = Testing::writeStandInProgram(folder.filePath("gated-probe.sh"),
        "case \"$*\" in\n*--no-frames*) ;;\n--columns*) while [ ! -e '" + gate.toUtf8()
            + "' ]; do sleep 0.02; done ;;\nesac\nexec '" TESSALY_PROBE "' \"$@\"\n");
    FileProbe::setProgram(gatedProbe);
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("early.vqd", "Early", 400));
    auto* plot = w.findChild<ScatterPlot*>("scatterPlot");
    auto* xCombo = w.findChild<QComboBox*>("xFeatureCombo");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !plot->xValues().empty(); }, 20000));
    ASSERT_EQ(w.datasets().size(), 1u);
    const DatasetEntry& entry = *w.datasets()[0];
    EXPECT_TRUE(w.isPreloadRunning());
    EXPECT_FALSE(entry.featuresLoaded);
    EXPECT_TRUE(entry.reader->isFeatureCached("area_um"));
    EXPECT_TRUE(entry.reader->isFeatureCached("deform"));
    EXPECT_FALSE(entry.reader->isFeatureCached("bright_avg"));
    EXPECT_EQ(plot->xValues().size(), 400u);
    EXPECT_EQ(xCombo->currentData().toString(), "area_um");
    EXPECT_FALSE(xCombo->isEnabled());
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text(), "Loading: Early...");
    const std::vector<double> early = plot->xValues();

    QFile(gate).open(QIODevice::WriteOnly);
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_TRUE(xCombo->isEnabled());
    EXPECT_EQ(plot->xValues(), early);
    EXPECT_EQ(plot->xValues(), entry.reader->getFeature("area_um"));
    const QString status = w.findChild<QLabel*>("statusLabel")->text();
    EXPECT_TRUE(status.startsWith("Loaded: Early (") && status.endsWith("400 events)"))
        << status.toStdString();

    // Coloured by a column of its own, the plot waits for that column too; with a filter it waits
    // for the end.
    QFile::remove(gate);
    auto* colorCombo = w.findChild<QComboBox*>("colorFeatureCombo");
    colorCombo->setCurrentIndex(colorCombo->findData(QStringLiteral("bright_avg")));
    w.openDataset(writeDataset("coloured.vqd", "Coloured", 300));
    ASSERT_TRUE(QTest::qWaitFor([&] { return plot->xValues().size() == 300u; }, 20000));
    EXPECT_TRUE(w.isPreloadRunning());
    EXPECT_EQ(plot->colorValues().size(), 300u);
    EXPECT_TRUE(w.datasets()[1]->reader->isFeatureCached("bright_avg"));
    QFile(gate).open(QIODevice::WriteOnly);
    ASSERT_TRUE(waitUntilIdle());
    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    EXPECT_TRUE(messages.empty());
}

namespace {

// A stand-in for the probe program that never ends, as the library does on some damaged files.
QString writeHangingProbe(const QTemporaryDir& folder)
{
    return Testing::writeStandInProgram(folder.filePath("hanging-probe.sh"), "exec sleep 60\n");
}

} // namespace

// While a file is checked the window answers: the status says so, other paths wait their turn, and
// a check that hangs ends at the time limit with its reason.
TEST_F(MainWindowOpening, AHangingCheckNeitherFreezesTheWindowNorStopsTheQueue)
{
    MainWindow& w = makeWindow();
    const QString hanging = writeDataset("hanging.vqd", "Hanging");
    const QString next = writeDataset("next.vqd", "Next");
    FileProbe::setProgram(writeHangingProbe(folder));
    FileProbe::setTimeLimit(1500);
    w.openDataset(hanging);
    w.openDataset(next);
    EXPECT_TRUE(w.isCheckingFile());
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text(), "Checking: hanging.vqd...");
    EXPECT_TRUE(w.datasets().empty());

    // Events are delivered meanwhile: a timer fires while the check still runs.
    bool fired = false;
    QTimer::singleShot(10, [&fired] { fired = true; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return fired || !w.isCheckingFile(); }, 5000));
    EXPECT_TRUE(fired);
    EXPECT_TRUE(w.isCheckingFile());

    // Both meet the hanging probe, one after the other.
    ASSERT_TRUE(waitUntilIdle());
    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    FileProbe::setTimeLimit(15000);
    const QString reason
        = QStringLiteral("\nRefused by the file check: reading its structure took longer than 2 s.");
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0].text, "Failed to open: " + hanging + reason);
    EXPECT_EQ(messages[1].text, "Failed to open: " + next + reason);
    EXPECT_TRUE(w.datasets().empty());
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text(), "No file loaded.");
}

// A check that takes long shows a window with a Cancel button; cancelling refuses nothing with a
// box, and the next file in line goes ahead.
TEST_F(MainWindowOpening, ALongCheckCanBeCancelled)
{
    MainWindow& w = makeWindow();
    const QString hanging = writeDataset("hanging.vqd", "Hanging");
    const QString next = writeDataset("next.vqd", "Next");
    FileProbe::setProgram(writeHangingProbe(folder));
    w.openDataset(hanging);
    w.openDataset(next);
    QProgressDialog* progress = nullptr;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            progress = w.findChild<QProgressDialog*>();
            return progress && progress->isVisible();
        },
        10000));
    EXPECT_EQ(progress->windowTitle(), "Checking File");
    EXPECT_EQ(progress->labelText(), "Checking hanging.vqd before opening it...");
    EXPECT_FALSE(progress->isModal());

    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    auto* cancel = progress->findChild<QPushButton*>();
    ASSERT_NE(cancel, nullptr);
    QTest::mouseClick(cancel, Qt::LeftButton);
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(datasetPaths(), std::vector<std::string> { next.toStdString() });
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text().left(14), "Loaded: Next (");
}

// A tiny file may declare a column of billions of events that it doesn't store. The column is
// refused before anything is allocated, the rest of the file opens, and asking for the column
// names it and the limit in the box, while the log has the reader's line once.
TEST_F(MainWindowOpening, AHugeDeclaredColumnIsRefusedAndNamed)
{
    MessageCapture log;
    MainWindow& w = makeWindow();
    const QString path = folder.filePath("huge.vqd");
    Testing::FixtureWriter(path.toStdString())
        .column<double>("area_um", { 50, 60 })
        .unwrittenDataset(
            "events/bright_avg", H5::PredType::NATIVE_UINT8, { hsize_t { 1 } << 36 }, { 1 << 20 })
        .column<double>("deform", { 0.01, 0.02 })
        .stringAttribute("setup:module composition", "Vortiq")
        .close();
    w.openDataset(path);
    ASSERT_TRUE(waitUntilIdle());
    ASSERT_EQ(w.datasets().size(), 1u);
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(w.datasets()[0]->reader->eventCount(), 2u);

    auto* xCombo = w.findChild<QComboBox*>("xFeatureCombo");
    const int huge = xCombo->findData(QStringLiteral("bright_avg"));
    ASSERT_GE(huge, 0);
    xCombo->setCurrentIndex(huge);
    ASSERT_EQ(messages.size(), 1u);
    const QStringList lines = messages[0].text.split('\n');
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0], "Failed to read feature data.");
    EXPECT_EQ(lines[1], QString::fromStdString(w.datasets()[0]->reader->featureLabel("bright_avg")));
    EXPECT_TRUE(lines[2].startsWith("68719476736 values would need ")) << lines[2].toStdString();
    EXPECT_TRUE(lines[2].endsWith(" bytes of memory available now")) << lines[2].toStdString();
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text().left(8), "Loaded: ");

    // Another refresh shows the box again but adds nothing to the log.
    w.refreshFeaturesAndPlot();
    EXPECT_EQ(messages.size(), 2u);
    int logged = 0;
    for (const MessageCapture::Message& message : log.messages())
        logged += message.text.startsWith("Error reading feature 'bright_avg': ") ? 1 : 0;
    EXPECT_EQ(logged, 1);
}
