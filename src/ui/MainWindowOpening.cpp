// How a path becomes a dataset: the file check in a process of its own, which the window does not
// wait for, then opening, the instrument test and the start of the preload; the queue of paths that
// arrive meanwhile; and what the user is told when a file or a column is refused.
#include "core/DatasetEntry.h"
#include "io/FileCheck.h"
#include "plot/ScatterPlot.h"
#include "ui/DatasetText.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"
#include "ui/OpeningTexts.h"
#include "ui/StatisticsDockWidget.h"

#include <QDebug>
#include <QFileInfo>
#include <QLabel>
#include <QProgressDialog>
#include <QTimer>

namespace Tessaly {

namespace {

// A check that ends within this time never shows its progress window.
constexpr int checkProgressDelayMs = 800;

} // namespace

void MainWindow::openDataset(const QString& path)
{
    // A file is opened once; a second view of it is made by duplicating.
    if (DatasetEntry* existing = findDatasetByPath(path.toStdString())) {
        setCurrentRow(rowOf(existing));
        return;
    }
    // One file at a time: the others wait for the running check or preload.
    if (preloadRunning || isCheckingFile()) {
        pendingOpenPaths.enqueue(path);
        return;
    }
    startFileCheck(path, false);
}

int MainWindow::openSessionDataset(const QString& path)
{
    // The dataset appears under this id once its file has passed the check; a refused file's id is
    // spent and never resolves.
    return startFileCheck(path, true);
}

bool MainWindow::isCheckingFile() const
{
    return fileCheck && fileCheck->isRunning();
}

int MainWindow::startFileCheck(const QString& path, bool forSession)
{
    if (!fileCheck) {
        fileCheck = new FileCheck(this);
        connect(fileCheck, &FileCheck::finished, this, &MainWindow::onFileCheckFinished);
        checkProgressTimer = new QTimer(this);
        checkProgressTimer->setSingleShot(true);
        connect(checkProgressTimer, &QTimer::timeout, this, &MainWindow::showCheckProgress);
    }
    checkingId = nextDatasetId++;
    checkingForSession = forSession;
    statusLabel->setText(OpeningTexts::checkingStatus.arg(QFileInfo(path).fileName()));
    checkProgressTimer->start(checkProgressDelayMs);
    fileCheck->start(path);
    return checkingId;
}

void MainWindow::showCheckProgress()
{
    if (!isCheckingFile() || checkProgress)
        return;
    checkProgress = new QProgressDialog(this);
    checkProgress->setWindowTitle(OpeningTexts::checkTitle);
    checkProgress->setLabelText(OpeningTexts::checkLabel.arg(QFileInfo(fileCheck->path()).fileName()));
    checkProgress->setCancelButtonText(OpeningTexts::cancelButton);
    checkProgress->setRange(0, 0);
    checkProgress->setMinimumDuration(0);
    checkProgress->setWindowModality(Qt::NonModal);
    checkProgress->setAutoClose(false);
    checkProgress->setAutoReset(false);
    connect(checkProgress, &QProgressDialog::canceled, this, &MainWindow::cancelFileCheck);
    checkProgress->show();
}

void MainWindow::cancelFileCheck()
{
    if (isCheckingFile())
        fileCheck->cancel();
}

void MainWindow::hideCheckProgress()
{
    if (checkProgressTimer)
        checkProgressTimer->stop();
    if (QProgressDialog* dialog = checkProgress) {
        checkProgress = nullptr;
        // Closing the dialog would report a cancel; it may also be the sender of one right now.
        dialog->disconnect(this);
        dialog->hide();
        dialog->deleteLater();
    }
}

void MainWindow::onFileCheckFinished(bool passed, const QString& reason)
{
    const QString path = fileCheck->path();
    const int id = checkingId;
    const bool forSession = checkingForSession;
    checkingId = -1;
    hideCheckProgress();

    std::unique_ptr<DatasetEntry> entry;
    if (passed) {
        entry = openEntry(path, id);
    } else if (reason == FileProbeTexts::cancelled) {
        qInfo().noquote() << "Not opening" << path << "-" << reason;
    } else {
        refuseFile(path, reason);
    }
    if (!entry) {
        restoreStatus();
        continueOpening();
        return;
    }
    if (forSession) {
        // The session restores the stored name later.
        entry->displayName = QFileInfo(path).fileName();
        startPreload(appendEntry(std::move(entry), false));
        return;
    }
    const QString changedName = metadataText(entry->metadata.export_, "changed sample name");
    entry->displayName = changedName.isEmpty() ? sampleOrFileName(*entry) : changedName;
    const int row = appendEntry(std::move(entry), true);
    startPreload(row);
    setCurrentRow(row);
    updateApplyPlotButton();
}

// A new entry under `id`, or null after saying why not: a file that can't be opened, or one that no
// instrument of ours wrote (said once per run, so that a folder of foreign files costs one dialog).
std::unique_ptr<DatasetEntry> MainWindow::openEntry(const QString& path, int id)
{
    auto entry = std::make_unique<DatasetEntry>();
    entry->id = id;
    entry->reader = std::make_shared<VQDReader>();
    if (!entry->reader->open(path.toStdString())) {
        refuseFile(path, FileProbeTexts::cannotOpen);
        return nullptr;
    }
    entry->filePath = path.toStdString();
    entry->metadata = entry->reader->readMetadata();
    if (!entry->reader->isInstrumentData()) {
        qWarning().noquote() << "Not opening" << path << "- no instrument of ours wrote it";
        if (!unsupportedDataWarned) {
            unsupportedDataWarned = true;
            MessageBoxes::warning(this, MainWindowTexts::unsupportedTitle, MainWindowTexts::unsupportedText);
        }
        return nullptr;
    }
    return entry;
}

void MainWindow::refuseFile(const QString& path, const QString& reason)
{
    qWarning().noquote() << "Not opening" << path << "-" << reason;
    MessageBoxes::critical(this, MainWindowTexts::errorTitle,
        MainWindowTexts::failedToOpenText + path + QLatin1Char('\n') + reason);
}

// The next file in line: queued preloads first, then files of a session being loaded, then files
// that arrived while another was checked or preloaded. A path found loaded already only selects its
// row and starts nothing, so the queue goes on to the next one.
void MainWindow::continueOpening()
{
    if (!pendingPreloadRows.isEmpty()) {
        startPreload(pendingPreloadRows.dequeue());
        return;
    }
    if (openNextSessionFile())
        return;
    while (!pendingOpenPaths.isEmpty() && !preloadRunning && !isCheckingFile())
        openDataset(pendingOpenPaths.dequeue());
    if (preloadRunning || isCheckingFile())
        return;
    if (sessionLoading)
        finishSessionLoad();
}

// After a file was turned away the status tells of the dataset that is shown, not of the check.
void MainWindow::restoreStatus()
{
    const DatasetEntry* entry = activeEntry();
    if (!entry)
        statusLabel->setText(MainWindowTexts::noFileText);
    else if (!entry->featuresLoaded)
        statusLabel->setText(MainWindowTexts::loadingText.arg(entry->displayName));
    else
        updatePlotStatus();
}

// A column of the active dataset that gives nothing: the box names it and says why where the reader
// knows, the plot is emptied, and the status tells of the dataset as it stands.
void MainWindow::reportUnreadableColumns(const std::vector<std::string>& names)
{
    DatasetEntry* entry = activeEntry();
    if (!entry)
        return;
    const VQDReader& reader = *entry->reader;
    QStringList lines { MainWindowTexts::failedToReadFeatureText };
    QStringList reasons;
    for (const std::string& name : names) {
        lines << QString::fromStdString(reader.featureLabel(name));
        const QString reason = QString::fromStdString(reader.featureError(name));
        if (!reason.isEmpty() && !reasons.contains(reason))
            reasons << reason;
    }
    lines << reasons;
    plotX.clear();
    plotY.clear();
    plotColor.clear();
    visibleIndices.clear();
    filterReducedPlot = false;
    scatterPlot->clearData();
    statisticsDock->clearStatistics();
    updatePlotStatus();
    MessageBoxes::warning(this, MainWindowTexts::errorTitle, lines.join(QLatin1Char('\n')));
}

} // namespace Tessaly
