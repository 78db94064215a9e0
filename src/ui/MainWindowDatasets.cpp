// How files become datasets and leave again: opening, drag and drop, the background preload and its
// queues, removal, duplication and clearing the session.
#include "core/DatasetEntry.h"
#include "core/FeatureCatalogue.h"
#include "core/PoolRun.h"
#include "io/ColumnCheck.h"
#include "plot/ImageViewer.h"
#include "plot/ScatterPlot.h"
#include "plot/TracePlot.h"
#include "ui/CalculationsDockWidget.h"
#include "ui/DatasetListWidget.h"
#include "ui/DatasetText.h"
#include "ui/DatasetTreeWidget.h"
#include "ui/FilterDockWidget.h"
#include "ui/FirstColumnsHandOff.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"
#include "ui/PathOrder.h"
#include "ui/StatisticsDockWidget.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDirIterator>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFutureInterface>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QSpinBox>
#include <QTableWidget>
#include <QTreeWidget>
#include <QUrl>
#include <algorithm>
#include <cmath>

namespace Tessaly {

namespace {

// How long the check of the remaining columns waits for the plot of the first ones to be drawn.
constexpr std::chrono::milliseconds plotWait(1000);

bool hasVqdSuffix(const QString& path)
{
    return path.endsWith(QStringLiteral(".vqd"), Qt::CaseInsensitive);
}

// The columns that the first plot of `entry` shows: its own choice of features where the file has
// them, else those that the feature lists start with.
std::vector<std::string> plotColumns(const DatasetEntry& entry)
{
    VQDReader& reader = *entry.reader;
    std::string firstScalar;
    for (const std::string& name : reader.featureNames()) {
        if (isScalarFeature(name)) {
            firstScalar = name;
            break;
        }
    }
    const auto choose = [&](const std::string& chosen, const std::string& fallback) {
        if (!chosen.empty() && isScalarFeature(chosen) && reader.hasFeature(chosen))
            return chosen;
        return reader.hasFeature(fallback) ? fallback : firstScalar;
    };
    std::vector<std::string> columns { choose(entry.xFeatureName, "area_um"),
        choose(entry.yFeatureName, "deform") };
    if (isScalarFeature(entry.colorFeatureName) && reader.hasFeature(entry.colorFeatureName))
        columns.push_back(entry.colorFeatureName);
    return columns;
}

} // namespace

void MainWindow::openFile()
{
    QStringList paths = QFileDialog::getOpenFileNames(
        this, MainWindowTexts::openCaption, QString(), MainWindowTexts::openFilter);
    sortPaths(paths);
    for (const QString& path : paths)
        openDataset(path);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    if (!event->mimeData()->hasUrls())
        return;
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls()) {
        const QString local = url.toLocalFile();
        if (local.isEmpty())
            continue;
        if (QFileInfo(local).isDir()) {
            QDirIterator it(local, { QStringLiteral("*.vqd") }, QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext())
                paths << it.next();
        } else if (hasVqdSuffix(local)) {
            paths << local;
        }
    }
    if (paths.isEmpty()) {
        MessageBoxes::warning(this, MainWindowTexts::invalidFileTitle, MainWindowTexts::invalidFileText);
        return;
    }
    sortPaths(paths);
    for (const QString& path : paths)
        openDataset(path);
    event->acceptProposedAction();
}

// Adds the entry as the last row of the session and of its views; returns the row.
int MainWindow::appendEntry(std::unique_ptr<DatasetEntry> entry, bool inheritFromPeers)
{
    DatasetEntry* added = entry.release();
    datasetList.push_back(added);
    filterDock->setDatasetCount(static_cast<int>(datasetList.size()));
    if (inheritFromPeers)
        inheritPeerSettings(added);
    addDatasetRow(added);
    rebuildDatasetTree();
    return static_cast<int>(datasetList.size()) - 1;
}

// A new dataset follows the others where they agree, so that adding a file to a consistent session
// keeps it consistent.
void MainWindow::inheritPeerSettings(DatasetEntry* entry)
{
    if (datasetList.size() < 2)
        return;
    DatasetEntry* model = activeEntry();
    if (!model || model == entry) {
        const auto other = std::find_if(
            datasetList.begin(), datasetList.end(), [entry](const DatasetEntry* e) { return e != entry; });
        model = *other;
    }

    bool sameEnabled = true;
    bool sameMode = true;
    for (const DatasetEntry* peer : datasetList) {
        if (peer == model || peer == entry)
            continue;
        sameEnabled = sameEnabled && peer->filter.isEnabled() == model->filter.isEnabled();
        sameMode = sameMode && peer->filter.combineMode() == model->filter.combineMode();
    }
    if (sameEnabled)
        entry->filter.setEnabled(model->filter.isEnabled());
    if (sameMode)
        entry->filter.setCombineMode(model->filter.combineMode());

    // Rules that were applied to all datasets carry a propagation id and reach new ones too.
    for (const FilterRule& rule : model->filter.rules()) {
        if (!rule.propagationId.empty())
            entry->filter.addRule(rule);
    }

    if (!activeMatchesAllPeers(entry))
        return;
    if (model == activeEntry())
        saveCurrentDatasetState();
    copyPlotSettings(*model, *entry);
}

// True when every dataset other than the active one and `excluded` has the plot settings that the
// controls show. Fractions must be exactly equal; NaN never equals anything.
bool MainWindow::activeMatchesAllPeers(const DatasetEntry* excluded) const
{
    const DatasetEntry* active = activeEntry();
    if (!active)
        return true;
    const std::string x = xFeatureCombo->currentData().toString().toStdString();
    const std::string y = yFeatureCombo->currentData().toString().toStdString();
    const std::string color = colorFeatureCombo->currentData().toString().toStdString();
    const int scaleX = xScaleCombo->currentIndex();
    const int scaleY = yScaleCombo->currentIndex();
    const int contour = contourCombo->currentIndex();
    const double fraction1 = innerContourSpinBox->value() / 100.0;
    const double fraction2 = outerContourSpinBox->value() / 100.0;
    for (const DatasetEntry* peer : datasetList) {
        if (peer == active || peer == excluded)
            continue;
        if (peer->xFeatureName != x || peer->yFeatureName != y || peer->colorFeatureName != color
            || peer->scaleXMode != scaleX || peer->scaleYMode != scaleY || peer->contourMode != contour
            || !(peer->contourFraction1 == fraction1) || !(peer->contourFraction2 == fraction2))
            return false;
    }
    return true;
}

void MainWindow::startPreload(int row)
{
    if (preloadRunning) {
        pendingPreloadRows.enqueue(row);
        return;
    }
    preloadRunning = true;
    preloadRow = row;
    DatasetEntry* entry = datasetList[static_cast<std::size_t>(row)];
    statusLabel->setText(MainWindowTexts::cachingText.arg(entry->displayName));
    // The task keeps the reader alive by its own reference, so that closing the program while it
    // runs can't pull the reader from under it; it touches nothing else. The columns are decoded by
    // the probes, which hand them over: a file whose data crashes the library is then refused, not
    // fatal. Only what they did not hand over is read here. The plot's columns come first: the
    // task tells of them through its future's progress, and the watcher draws the plot from them
    // while the rest is still being decoded.
    std::shared_ptr<VQDReader> reader = entry->reader;
    auto failure = std::make_shared<QString>();
    preloadFailure = failure;
    auto handOff = std::make_shared<FirstColumnsHandOff>();
    preloadHandOff = handOff;
    const QString path = QString::fromStdString(entry->filePath);
    const std::vector<std::string> first = plotColumns(*entry);
    preloadWatcher->setFuture(
        runOnPool([reader, failure, path, first, handOff](QFutureInterface<void>& progress) {
            const auto plotColumnsIn = [&] {
                progress.setProgressValue(1);
                handOff->waitUntilDrawn(plotWait);
            };
            try {
                if (ColumnCheck::run(path, *reader, failure.get(), first, plotColumnsIn))
                    reader->cacheAllFeatures();
            } catch (const std::exception& error) {
                // A column that can't be read is left empty, as when the reader fails on it.
                qWarning("Caching the columns of %s stopped: %s", qPrintable(path), error.what());
            }
        }));
}

// The plot of the dataset being preloaded, from the columns that are in, while the controls stay
// off until the preload ends. Only a plain plot is drawn early: one that needs a column that is not
// in yet, or a filter (whose first passing event would fill the event table), waits for the end.
void MainWindow::showPlotWhileLoading()
{
    if (!preloadRunning || preloadRow != activeDatasetIndex)
        return;
    DatasetEntry* entry = activeEntry();
    if (!entry || entry->featuresLoaded)
        return;
    applyPlotControls(*entry);
    VQDReader& reader = *entry->reader;
    const auto inMemory = [&reader](const QComboBox* combo) {
        const std::string name = combo->currentData().toString().toStdString();
        return reader.isFeatureCached(name) && !reader.getFeature(name).empty();
    };
    const std::string color = colorFeatureCombo->currentData().toString().toStdString();
    const bool colorReady
        = color.empty() || color.rfind(densityColorPrefix, 0) == 0 || inMemory(colorFeatureCombo);
    const EventFilter filter = buildEffectiveFilter(entry);
    if (!inMemory(xFeatureCombo) || !inMemory(yFeatureCombo) || !colorReady
        || (filter.isEnabled() && filter.ruleCount() >= 1))
        return;
    onFilterChanged();
    statusLabel->setText(MainWindowTexts::loadingText.arg(entry->displayName));
}

// The order below decides who goes next: queued preloads first, then files of a session being
// loaded, then files that arrived while a preload ran.
void MainWindow::onFeaturesLoaded()
{
    const bool refused = preloadFailure && !preloadFailure->isEmpty();
    if (refused && preloadRow >= 0 && preloadRow < static_cast<int>(datasetList.size())) {
        const QString path
            = QString::fromStdString(datasetList[static_cast<std::size_t>(preloadRow)]->filePath);
        const int row = preloadRow;
        preloadRow = -1;
        removeDatasetAt(row);
        refuseFile(path, *preloadFailure);
    } else if (preloadRow >= 0 && preloadRow < static_cast<int>(datasetList.size())) {
        datasetList[static_cast<std::size_t>(preloadRow)]->featuresLoaded = true;
        if (preloadRow == activeDatasetIndex)
            showActiveDataset();
    }
    preloadRow = -1;
    preloadRunning = false;
    preloadFailure.reset();
    continueOpening();
}

void MainWindow::removeDataset()
{
    const int row = currentRow();
    if (row < 0 || row >= static_cast<int>(datasetList.size()))
        return;
    if (row == preloadRow) {
        MessageBoxes::warning(this, MainWindowTexts::cannotRemoveTitle, MainWindowTexts::cannotRemoveText);
        return;
    }
    removeDatasetAt(row);
}

void MainWindow::removeDatasetAt(int row)
{
    // The list would select a neighbour while the entry is still in place; selection follows below.
    datasetListWidget->blockSignals(true);
    delete datasetListWidget->takeItem(row);
    datasetListWidget->blockSignals(false);
    DatasetEntry* removed = datasetList[static_cast<std::size_t>(row)];
    datasetList.erase(datasetList.begin() + row);
    if (filterDock->dataset() == removed)
        filterDock->setDataset(nullptr);
    if (calculationsDock->dataset() == removed)
        calculationsDock->setDataset(nullptr);
    delete removed;
    filterDock->setDatasetCount(static_cast<int>(datasetList.size()));

    // Queued preloads refer to rows: those above the removed one move up by one.
    if (preloadRow > row)
        --preloadRow;
    QQueue<int> rows;
    for (int pending : pendingPreloadRows) {
        if (pending != row)
            rows.enqueue(pending > row ? pending - 1 : pending);
    }
    pendingPreloadRows = rows;

    if (!datasetList.empty()) {
        if (row < activeDatasetIndex) {
            --activeDatasetIndex;
            datasetListWidget->blockSignals(true);
            datasetListWidget->setCurrentRow(activeDatasetIndex);
            datasetListWidget->blockSignals(false);
        } else if (row == activeDatasetIndex) {
            activeDatasetIndex = -1;
            setCurrentRow(std::min(row, static_cast<int>(datasetList.size()) - 1));
        }
    } else {
        activeDatasetIndex = -1;
        clearDatasetViews();
        filterDock->setDataset(nullptr);
        calculationsDock->setDataset(nullptr);
        statusLabel->setText(MainWindowTexts::noFileText);
    }
    updateApplyPlotButton();
    if (datasetFolderViewActive())
        rebuildDatasetTree();
}

void MainWindow::duplicateDataset()
{
    const int row = currentRow();
    if (row < 0 || row >= static_cast<int>(datasetList.size()))
        return;
    const DatasetEntry* source = datasetList[static_cast<std::size_t>(row)];
    if (!source->featuresLoaded)
        return;
    saveCurrentDatasetState();

    // The copy shares the reader, so features computed for either show in both. Calculation flags,
    // compensation and group switches start afresh.
    auto* copy = new DatasetEntry;
    copy->id = nextDatasetId++;
    copy->reader = source->reader;
    copy->metadata = source->metadata;
    copy->filePath = source->filePath;
    copy->displayName = source->displayName + MainWindowTexts::copySuffix;
    copy->xFeatureName = source->xFeatureName;
    copy->yFeatureName = source->yFeatureName;
    copy->colorFeatureName = source->colorFeatureName;
    copy->currentEventIndex = source->currentEventIndex;
    copy->filter = source->filter;
    copy->contourMode = source->contourMode;
    copy->contourFraction1 = source->contourFraction1;
    copy->contourFraction2 = source->contourFraction2;
    copy->scaleXMode = source->scaleXMode;
    copy->scaleYMode = source->scaleYMode;
    copy->featuresLoaded = true;

    setCurrentRow(appendEntry(std::unique_ptr<DatasetEntry>(copy), false));
    updateApplyPlotButton();
}

void MainWindow::clearSession()
{
    if (datasetList.empty() && combinePlotWindows.isEmpty() && statisticalEvaluationWindows.isEmpty())
        return;
    if (!sessionLoading) {
        const auto answer = MessageBoxes::question(this, MainWindowTexts::clearSessionTitle,
            MainWindowTexts::clearSessionText, QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Cancel);
        if (answer != QMessageBox::Ok)
            return;
    }
    // The running task uses a reader that is about to go; files waiting to be opened are dropped
    // with the session they were meant for.
    if (preloadRunning) {
        preloadWatcher->waitForFinished();
        preloadRunning = false;
        preloadRow = -1;
    }
    pendingPreloadRows.clear();
    pendingOpenPaths.clear();
    // A session load under way ends with the session it was filling.
    pendingSessionFiles.clear();
    sessionIndexToId.clear();
    sessionLoading = false;
    loadingSessionDocument = QJsonObject();
    loadingSessionKept = false;
    // A file still being checked belonged to the old session as well.
    cancelFileCheck();

    deleteToolWindows();

    activeDatasetIndex = -1;
    filterDock->setDataset(nullptr);
    calculationsDock->setDataset(nullptr);

    datasetListWidget->blockSignals(true);
    for (DatasetEntry* entry : datasetList)
        delete entry;
    datasetList.clear();
    datasetListWidget->clear();
    datasetListWidget->blockSignals(false);
    treeSelectionUpdating = true;
    datasetTreeWidget->clear();
    treeSelectionUpdating = false;
    filterDock->setDatasetCount(0);

    // Group ids start again; dataset ids never do.
    for (FilterGroup* group : groups)
        delete group;
    groups.clear();
    nextGroupId = 0;
    refreshFilterGroupWidgets();

    clearDatasetViews();
    statusLabel->setText(MainWindowTexts::noFileText);
    updateApplyPlotButton();
}

// Features go over only where the target's file has them; a density selector always does.
void MainWindow::copyPlotSettings(const DatasetEntry& from, DatasetEntry& to)
{
    const VQDReader& reader = *to.reader;
    if (reader.hasFeature(from.xFeatureName))
        to.xFeatureName = from.xFeatureName;
    if (reader.hasFeature(from.yFeatureName))
        to.yFeatureName = from.yFeatureName;
    const std::string& color = from.colorFeatureName;
    if (color.empty() || reader.hasFeature(color) || color.rfind(densityColorPrefix, 0) == 0)
        to.colorFeatureName = color;
    to.scaleXMode = from.scaleXMode;
    to.scaleYMode = from.scaleYMode;
    to.contourMode = from.contourMode;
    to.contourFraction1 = from.contourFraction1;
    to.contourFraction2 = from.contourFraction2;
}

// Empties every view of a dataset and disables the controls that need one.
void MainWindow::clearDatasetViews()
{
    // The plot goes empty with everything drawn over it.
    scatterPlot->clearData();
    scatterPlot->clearPolygonOverlays();
    scatterPlot->clearIsoelastics();
    imageViewer->clearImage();
    imageViewer->setMaskControlEnabled(false);
    tracePlot->clearTraces();
    eventTable->setRowCount(0);
    statisticsDock->clearStatistics();
    metadataTree->clear();
    for (QComboBox* combo : { xFeatureCombo, yFeatureCombo, colorFeatureCombo }) {
        combo->blockSignals(true);
        combo->clear();
        combo->blockSignals(false);
    }
    eventSpinBox->blockSignals(true);
    eventSpinBox->setRange(0, 0);
    eventSpinBox->blockSignals(false);
    eventSpinBox->setEnabled(false);
    renameEdit->clear();
    renameEdit->setEnabled(false);
    visibleIndices.clear();
    filterReducedPlot = false;
}

int MainWindow::currentRow() const
{
    return datasetListWidget->currentRow();
}

// Making a row current selects its dataset through the list's signal.
void MainWindow::setCurrentRow(int row)
{
    if (datasetListWidget->currentRow() == row)
        onDatasetSelected(row);
    else
        datasetListWidget->setCurrentRow(row);
}

} // namespace Tessaly
