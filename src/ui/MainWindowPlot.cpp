// Showing the active dataset: selection, the controls that hold its plot settings, the status text
// and the metadata tree.
#include "core/DatasetEntry.h"
#include "core/FeatureCatalogue.h"
#include "io/Hdf5Mutex.h"
#include "plot/ImageViewer.h"
#include "plot/ScatterPlot.h"
#include "plot/TracePlot.h"
#include "ui/CalculationsDockWidget.h"
#include "ui/DatasetListWidget.h"
#include "ui/DatasetText.h"
#include "ui/DatasetTreeWidget.h"
#include "ui/FilterDockWidget.h"
#include "ui/MainWindow.h"
#include "ui/NameColumnLimiter.h"
#include "ui/StatisticsDockWidget.h"

#include <QComboBox>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTableWidget>
#include <QTreeWidget>
#include <algorithm>
#include <cmath>
#include <mutex>
#include <set>
#include <utility>

namespace Tessaly {

void MainWindow::saveCurrentDatasetState()
{
    DatasetEntry* entry = activeEntry();
    if (!entry)
        return;
    entry->xFeatureName = xFeatureCombo->currentData().toString().toStdString();
    entry->yFeatureName = yFeatureCombo->currentData().toString().toStdString();
    entry->colorFeatureName = colorFeatureCombo->currentData().toString().toStdString();
    entry->currentEventIndex = eventSpinBox->value();
    entry->contourMode = contourCombo->currentIndex();
    entry->contourFraction1 = innerContourSpinBox->value() / 100.0;
    entry->contourFraction2 = outerContourSpinBox->value() / 100.0;
    entry->scaleXMode = xScaleCombo->currentIndex();
    entry->scaleYMode = yScaleCombo->currentIndex();
}

void MainWindow::onDatasetSelected(int index)
{
    if (index < 0 || index >= static_cast<int>(datasetList.size()) || index == activeDatasetIndex)
        return;
    saveCurrentDatasetState();
    activeDatasetIndex = index;
    DatasetEntry* entry = datasetList[static_cast<std::size_t>(index)];

    if (datasetFolderViewActive()) {
        treeSelectionUpdating = true;
        for (QTreeWidgetItemIterator it(datasetTreeWidget); *it; ++it) {
            if ((*it)->data(0, Qt::UserRole).isValid() && (*it)->data(0, Qt::UserRole).toInt() == entry->id) {
                datasetTreeWidget->setCurrentItem(*it);
                break;
            }
        }
        treeSelectionUpdating = false;
    }
    {
        const QSignalBlocker blocker(datasetListWidget);
        datasetListWidget->setCurrentRow(index);
    }
    filterDock->setDataset(entry);

    if (entry->featuresLoaded) {
        showActiveDataset();
        return;
    }
    // Still loading: show the name, keep the controls off, and wait for the preload to finish.
    statusLabel->setText(MainWindowTexts::loadingText.arg(entry->displayName));
    for (QComboBox* combo : { xFeatureCombo, yFeatureCombo, colorFeatureCombo })
        combo->setEnabled(false);
    eventSpinBox->setEnabled(false);
    imageViewer->setMaskControlEnabled(false);
    renameEdit->setEnabled(false);
    {
        const QSignalBlocker blocker(renameEdit);
        renameEdit->setText(entry->displayName);
    }
    scatterPlot->clearData();
    imageViewer->clearImage();
    tracePlot->clearTraces();
    eventTable->setRowCount(0);
    statisticsDock->clearStatistics();
}

void MainWindow::showActiveDataset()
{
    DatasetEntry* entry = activeEntry();
    if (!entry || !entry->featuresLoaded)
        return;
    VQDReader& reader = *entry->reader;

    for (QComboBox* combo : { xFeatureCombo, yFeatureCombo, colorFeatureCombo })
        combo->setEnabled(true);
    renameEdit->setEnabled(true);
    {
        const QSignalBlocker blocker(renameEdit);
        renameEdit->setText(entry->displayName);
    }
    updateCalculationsDock(*entry);

    applyPlotControls(*entry);
    {
        const QSignalBlocker blocker(eventSpinBox);
        const int events = static_cast<int>(reader.eventCount());
        eventSpinBox->setRange(0, std::max(0, events - 1));
        eventSpinBox->setEnabled(events > 0);
        if (entry->currentEventIndex < 0 || entry->currentEventIndex >= events)
            entry->currentEventIndex = 0;
        eventSpinBox->setValue(entry->currentEventIndex);
    }

    imageViewer->setMaskControlEnabled(reader.hasMask());
    setupTraceChannels(*entry);
    metadataTree->clear();
    if (metadataDock->isVisible())
        fillMetadataTree();
    filterDock->setDataset(entry);
    // The refresh also places the highlight, through the plot's own indices.
    onFilterChanged();
    // A file without images still has the event table; its "Image" tab says why it stays empty.
    if (reader.eventCount() > 0 && entry->currentEventIndex >= 0)
        showEventData(entry->currentEventIndex);
    else if (reader.hasImage())
        imageViewer->clearImage();
    else
        imageViewer->clearImage(MainWindowTexts::noImageInFileText);
    if (!reader.hasImage())
        eventTabs->setCurrentIndex(eventTabs->indexOf(eventTable));
}

// The feature, scale and contour controls as `entry` has them, with their signals blocked.
void MainWindow::applyPlotControls(DatasetEntry& entry)
{
    {
        const QSignalBlocker blockX(xFeatureCombo);
        const QSignalBlocker blockY(yFeatureCombo);
        const QSignalBlocker blockColor(colorFeatureCombo);
        populateFeatureCombos();
        const std::pair<QComboBox*, const std::string*> stored[] = { { xFeatureCombo, &entry.xFeatureName },
            { yFeatureCombo, &entry.yFeatureName }, { colorFeatureCombo, &entry.colorFeatureName } };
        for (const auto& [combo, name] : stored) {
            if (name->empty())
                continue;
            const int found = combo->findData(QString::fromStdString(*name));
            if (found >= 0)
                combo->setCurrentIndex(found);
        }
    }
    {
        const QSignalBlocker blockContour(contourCombo);
        const QSignalBlocker blockInner(innerContourSpinBox);
        const QSignalBlocker blockOuter(outerContourSpinBox);
        const QSignalBlocker blockScaleX(xScaleCombo);
        const QSignalBlocker blockScaleY(yScaleCombo);
        contourCombo->setCurrentIndex(entry.contourMode);
        innerContourSpinBox->setValue(static_cast<int>(std::lround(entry.contourFraction1 * 100.0)));
        outerContourSpinBox->setValue(static_cast<int>(std::lround(entry.contourFraction2 * 100.0)));
        xScaleCombo->setCurrentIndex(entry.scaleXMode);
        yScaleCombo->setCurrentIndex(entry.scaleYMode);
    }
    scatterPlot->setAxisScaleMode(QwtPlot::xBottom, entry.scaleXMode);
    scatterPlot->setAxisScaleMode(QwtPlot::yLeft, entry.scaleYMode);
}

void MainWindow::populateFeatureCombos()
{
    xFeatureCombo->clear();
    yFeatureCombo->clear();
    colorFeatureCombo->clear();
    const DatasetEntry* entry = activeEntry();
    if (!entry)
        return;
    // A calculation on the thread pool may add a feature meanwhile; it waits for this lock.
    const std::lock_guard<std::recursive_mutex> readerLock(hdf5Mutex());
    colorFeatureCombo->addItem(QStringLiteral("None"), QString());
    colorFeatureCombo->addItem(MainWindowTexts::densityKdeText, MainWindowTexts::densityKdeKey);
    for (const std::string& name : entry->reader->featureNames()) {
        if (!isScalarFeature(name))
            continue;
        const QString label = QString::fromStdString(entry->reader->featureLabel(name));
        const QString key = QString::fromStdString(name);
        for (QComboBox* combo : { xFeatureCombo, yFeatureCombo, colorFeatureCombo })
            combo->addItem(label, key);
    }
    const int x = xFeatureCombo->findData(QStringLiteral("area_um"));
    if (x >= 0)
        xFeatureCombo->setCurrentIndex(x);
    const int y = yFeatureCombo->findData(QStringLiteral("deform"));
    if (y >= 0)
        yFeatureCombo->setCurrentIndex(y);
    colorFeatureCombo->setCurrentIndex(0);
}

void MainWindow::updatePlotStatus()
{
    const DatasetEntry* entry = activeEntry();
    if (!entry)
        return;
    const auto total = static_cast<qulonglong>(entry->reader->eventCount());
    const auto shown = filterReducedPlot ? static_cast<qulonglong>(visibleIndices.size()) : total;
    filterDock->setEventCounts(shown, total);

    QStringList parts = datasetDetails(*entry, false);
    if (filterReducedPlot) {
        const double percent
            = total > 0 ? 100.0 * static_cast<double>(shown) / static_cast<double>(total) : 0.0;
        parts << QStringLiteral("%1/%2 events shown (%3% pass filter)")
                     .arg(shown)
                     .arg(total)
                     .arg(percent, 0, 'f', 1);
    } else {
        parts << QStringLiteral("%1 events").arg(total);
    }
    statusLabel->setText(
        MainWindowTexts::loadedText.arg(entry->displayName, parts.join(QStringLiteral(", "))));
}

// The button lights up when the datasets disagree on their plot settings.
void MainWindow::updateApplyPlotButton()
{
    const bool enabled = activeEntry() && datasetList.size() >= 2;
    applyPlotSettingsButton->setEnabled(enabled);
    applyPlotSettingsButton->setStyleSheet(
        enabled && !activeMatchesAllPeers(nullptr) ? MainWindowTexts::applyButtonHighlightSheet : QString());
}

void MainWindow::showMetadata()
{
    const DatasetEntry* entry = activeEntry();
    if (!entry || !entry->reader->isOpen())
        return;
    metadataDock->show();
    metadataDock->raise();
    if (metadataTree->topLevelItemCount() == 0)
        fillMetadataTree();
}

void MainWindow::fillMetadataTree()
{
    metadataTree->clear();
    const DatasetEntry* entry = activeEntry();
    if (!entry)
        return;
    const VQDMetadata& metadata = entry->metadata;
    QFont bold = metadataTree->font();
    bold.setWeight(QFont::Bold);
    const auto addSection = [&](const QString& title, const std::map<std::string, std::string>& values) {
        if (values.empty())
            return;
        auto* section = new QTreeWidgetItem(metadataTree, { title });
        section->setFont(0, bold);
        for (const auto& [key, value] : values) {
            auto* item = new QTreeWidgetItem(
                section, { QString::fromStdString(key), QString::fromStdString(value) });
            // A text elided in the middle is there in full in its tool tip.
            item->setToolTip(0, plainToolTip(item->text(0)));
            item->setToolTip(1, plainToolTip(item->text(1)));
        }
    };
    addSection(QStringLiteral("Experiment"), metadata.experiment);
    addSection(QStringLiteral("Setup"), metadata.setup);
    addSection(QStringLiteral("Imaging"), metadata.imaging);
    addSection(QStringLiteral("Online Contour"), metadata.online_contour);
    addSection(QStringLiteral("Fluorescence"), metadata.fluorescence);
    addSection(QStringLiteral("Online Filter"), metadata.online_filter);
    addSection(QStringLiteral("Offline Filter"), metadata.offline_filter);
    addSection(QStringLiteral("Export"), metadata.export_);

    // Attributes of no known section, or without a section, stand under their full names.
    static const std::set<std::string> known = { "experiment", "setup", "imaging", "online_contour",
        "online_filter", "offline_filter", "fluorescence", "export" };
    std::map<std::string, std::string> other;
    for (const auto& [name, value] : metadata.allAttributes) {
        const auto colon = name.find(':');
        if (colon == std::string::npos || !known.count(name.substr(0, colon)))
            other[name] = value;
    }
    addSection(QStringLiteral("Other"), other);
    metadataTree->expandAll();
    // Sized to the names, which get at most half the width, so that the values stay in sight.
    if (auto* limiter = metadataTree->findChild<NameColumnLimiter*>())
        limiter->fit();
}

} // namespace Tessaly
