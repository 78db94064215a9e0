// Sessions: what the user has arranged, written to a file and read back. Measured and computed data
// stay out of it; computed features come back from the flags and inputs that a dataset keeps.
#include "core/DatasetEntry.h"
#include "io/FileProbe.h"
#include "io/SessionFile.h"
#include "io/VQDReader.h"
#include "plot/ScatterPlot.h"
#include "ui/DatasetListWidget.h"
#include "ui/FileDialogs.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"
#include "ui/SessionTexts.h"

#include <QAction>
#include <QActionGroup>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QSaveFile>
#include <QSignalBlocker>
#include <algorithm>
#include <limits>
#include <memory>

namespace Tessaly {

void MainWindow::saveSession()
{
    saveCurrentDatasetState();
    if (datasetList.empty()) {
        MessageBoxes::information(this, SessionTexts::saveTitle, SessionTexts::nothingToSaveText);
        return;
    }
    QString path
        = FileDialogs::saveFileName(this, SessionTexts::saveTitle, QString(), SessionTexts::saveFilter);
    if (path.isEmpty())
        return;
    if (!path.endsWith(sessionFileSuffix, Qt::CaseInsensitive))
        path += sessionFileSuffix;
    saveSessionTo(path);
}

bool MainWindow::saveSessionTo(const QString& path)
{
    saveCurrentDatasetState();
    SessionSnapshot snapshot;
    snapshot.datasets.assign(datasetList.begin(), datasetList.end());
    snapshot.activeDatasetIndex = std::max(0, activeDatasetIndex);
    snapshot.colorMapIndex = currentColorMapIndex;
    snapshot.groups.assign(groups.begin(), groups.end());
    snapshot.nextGroupId = nextGroupId;
    const QByteArray document = writeSessionDocument(snapshot, path);

    // The file appears under its name only when it is complete, so a failed save leaves an older
    // session of that name as it was.
    QSaveFile file(path);
    const bool written
        = file.open(QIODevice::WriteOnly) && file.write(document) == document.size() && file.commit();
    if (!written) {
        qWarning().noquote() << "Session not written to" << path << "-" << file.errorString();
        MessageBoxes::critical(this, SessionTexts::errorTitle, SessionTexts::failedToWriteText + path);
        return false;
    }
    statusLabel->setText(SessionTexts::savedStatus + QFileInfo(path).fileName());
    return true;
}

void MainWindow::loadSession()
{
    if (!datasetList.empty() || !combinePlotWindows.isEmpty()) {
        const auto answer = MessageBoxes::warningQuestion(
            this, SessionTexts::loadTitle, SessionTexts::replaceSessionText, QMessageBox::No);
        if (answer != QMessageBox::Yes)
            return;
    }
    const QString path
        = FileDialogs::openFileName(this, SessionTexts::loadTitle, QString(), SessionTexts::loadFilter);
    if (!path.isEmpty())
        loadSessionFrom(path);
}

void MainWindow::loadSessionFrom(const QString& path)
{
    // Everything that can refuse the file is checked before the current session is touched.
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        MessageBoxes::critical(this, SessionTexts::errorTitle, SessionTexts::failedToReadText + path);
        return;
    }
    const QByteArray bytes = file.readAll();
    file.close();
    QJsonObject root;
    int version = 0;
    QString parseError;
    switch (parseSessionDocument(bytes, &root, &version, &parseError)) {
    case SessionParseResult::Invalid:
        MessageBoxes::critical(this, SessionTexts::errorTitle, SessionTexts::invalidFileText + parseError);
        return;
    case SessionParseResult::Unrecognized:
        MessageBoxes::critical(this, SessionTexts::errorTitle, SessionTexts::unrecognizedText);
        return;
    case SessionParseResult::Ok:
        break;
    }
    if (version > sessionFileVersion)
        MessageBoxes::warning(this, SessionTexts::warningTitle, SessionTexts::newerVersionText);

    // The clearing asks no question of its own: the user has agreed to replace the session.
    sessionLoading = true;
    clearSession();
    sessionLoading = false;

    const QDir sessionDir = QFileInfo(path).absoluteDir();
    const std::vector<QJsonObject> stored = sessionDatasets(root);
    QQueue<QPair<int, QString>> files;
    for (std::size_t index = 0; index < stored.size(); ++index) {
        const SessionDatasetRef ref = sessionDatasetRef(stored[index], sessionDir);
        if (ref.isDuplicate)
            continue;
        QString filePath = ref.filePath;
        if (!QFileInfo(filePath).isFile()) {
            const auto locate = MessageBoxes::warningQuestion(this, SessionTexts::notFoundTitle,
                SessionTexts::notFoundText.arg(filePath, ref.displayName), QMessageBox::Yes);
            if (locate != QMessageBox::Yes)
                continue;
            filePath = FileDialogs::openFileName(this, SessionTexts::locateTitle.arg(ref.displayName),
                sessionDir.absolutePath(), SessionTexts::locateFilter);
            if (filePath.isEmpty())
                continue;
        }

        // A reader of its own, closed again at once: the dataset is opened for real in its turn.
        QString probeFailure;
        VQDReader reader;
        if (!FileProbe::check(filePath, &probeFailure) || !reader.open(filePath.toStdString())) {
            MessageBoxes::warning(this, SessionTexts::errorTitle, SessionTexts::failedToOpenText + filePath);
            continue;
        }
        const SessionFingerprint found = fingerprintOf(reader, filePath);
        reader.close();
        if (found != ref.fingerprint) {
            const QString text = SessionTexts::changedText.arg(ref.displayName)
                                     .arg(ref.fingerprint.eventCount)
                                     .arg(ref.fingerprint.fileSize)
                                     .arg(found.eventCount)
                                     .arg(found.fileSize);
            if (MessageBoxes::warningQuestion(this, SessionTexts::changedTitle, text, QMessageBox::Yes)
                != QMessageBox::Yes)
                continue;
        }
        files.enqueue(qMakePair(static_cast<int>(index), filePath));
    }

    sessionLoading = true;
    sessionIndexToId.clear();
    loadingSessionDocument = root;
    loadingSessionKept = true;

    // Files open one after the other, each when the preload of the one before has ended.
    pendingSessionFiles = files;
    // A file still in the check or the preload hands on to the session's files when it ends.
    if (!preloadRunning && !isCheckingFile() && !openNextSessionFile())
        finishSessionLoad();
}

// Opens the next file of the session being loaded. A file that fails to open now is passed over,
// so that the rest still come in. True when the check of one was started.
bool MainWindow::openNextSessionFile()
{
    while (!pendingSessionFiles.isEmpty()) {
        const QPair<int, QString> next = pendingSessionFiles.dequeue();
        const int id = openSessionDataset(next.second);
        if (id >= 0) {
            sessionIndexToId[next.first] = id;
            return true;
        }
    }
    return false;
}

// All files of the session are in: the duplicates are made and the stored state is applied.
void MainWindow::finishSessionLoad()
{
    if (!loadingSessionKept) {
        sessionLoading = false;
        return;
    }
    const QJsonObject root = loadingSessionDocument;
    const std::vector<QJsonObject> stored = sessionDatasets(root);

    // The stored state replaces whatever the controls show: nothing of them goes into an entry.
    activeDatasetIndex = -1;
    restoreSessionDuplicates(stored);
    restoreSessionOrder();

    for (FilterGroup* group : groups)
        delete group;
    groups.clear();
    for (FilterGroup& group : sessionFilterGroups(root, &nextGroupId))
        groups.push_back(new FilterGroup(std::move(group)));

    int highestId = -1;
    for (const auto& [index, id] : sessionIndexToId) {
        DatasetEntry* entry = findDatasetById(id);
        if (!entry || index < 0 || index >= static_cast<int>(stored.size()))
            continue;
        applySessionDataset(stored[static_cast<std::size_t>(index)], entry);
        highestId = std::max(highestId, id);
    }
    rebuildDatasetList();
    rebuildDatasetTree();

    const SessionMainWindowState state = sessionMainWindowState(root);
    applySessionColorMap(state.colorMapIndex);
    // The stored index is the dataset's place in the saved list; datasets that were skipped aren't
    // here, so the place is found through the session's index map.
    int row = 0;
    const auto active = sessionIndexToId.find(state.activeDatasetIndex);
    if (active != sessionIndexToId.end() && findDatasetById(active->second))
        row = std::max(0, rowOf(findDatasetById(active->second)));
    nextDatasetId = std::max(nextDatasetId, highestId + 1);

    sessionLoading = false;
    loadingSessionDocument = QJsonObject();
    loadingSessionKept = false;
    sessionIndexToId.clear();

    if (!datasetList.empty()) {
        datasetListWidget->blockSignals(true);
        datasetListWidget->setCurrentRow(-1);
        datasetListWidget->blockSignals(false);
        setCurrentRow(row);
    }
    statusLabel->setText(SessionTexts::loadedStatus.arg(datasetList.size()));
    updateApplyPlotButton();
}

// A duplicate shares the reader of the dataset it was made from; one whose source didn't come back
// is dropped without a word, since the reason was given for the source already.
void MainWindow::restoreSessionDuplicates(const std::vector<QJsonObject>& stored)
{
    const QDir noFolder;
    for (std::size_t index = 0; index < stored.size(); ++index) {
        const SessionDatasetRef ref = sessionDatasetRef(stored[index], noFolder);
        if (!ref.isDuplicate)
            continue;
        const auto source = sessionIndexToId.find(ref.duplicateOfIndex);
        if (source == sessionIndexToId.end())
            continue;
        const DatasetEntry* original = findDatasetById(source->second);
        if (!original || !original->reader)
            continue;
        auto copy = std::make_unique<DatasetEntry>();
        copy->id = nextDatasetId++;
        copy->reader = original->reader;
        copy->filePath = original->filePath;
        copy->metadata = original->metadata;
        copy->displayName = ref.displayName.isEmpty() ? original->displayName + MainWindowTexts::copySuffix
                                                      : ref.displayName;
        copy->featuresLoaded = true;
        const int id = copy->id;
        appendEntry(std::move(copy), false);
        sessionIndexToId[static_cast<int>(index)] = id;
    }
}

// Rows follow the saved order, so that duplicates, made last, stand where they stood. Datasets
// opened by other means while the session loaded keep their order behind the session's.
void MainWindow::restoreSessionOrder()
{
    std::map<int, int> indexOfId;
    for (const auto& [index, id] : sessionIndexToId)
        indexOfId[id] = index;
    const auto key = [&indexOfId](const DatasetEntry* entry) {
        const auto it = indexOfId.find(entry->id);
        return it == indexOfId.end() ? std::numeric_limits<int>::max() : it->second;
    };
    std::stable_sort(datasetList.begin(), datasetList.end(),
        [&key](const DatasetEntry* a, const DatasetEntry* b) { return key(a) < key(b); });
}

void MainWindow::applySessionColorMap(int index)
{
    if (index < 0 || index >= MainWindowTexts::colorMapNames.size())
        index = 0;
    currentColorMapIndex = index;
    scatterPlot->setColorMapIndex(index);
    for (QAction* action : colorMapActions->actions()) {
        if (action->data().toInt() == index) {
            const QSignalBlocker blocker(action);
            action->setChecked(true);
        }
    }
}

} // namespace Tessaly
