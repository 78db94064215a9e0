// The refresh pipeline: every change of features, filter, colour or scale ends in onFilterChanged,
// which rebuilds what the plot shows; around it the overlays, the status and the event selection.
#include "calc/Contours.h"
#include "calc/Density.h"
#include "core/DatasetEntry.h"
#include "core/FeatureCatalogue.h"
#include "core/FluorescenceChannels.h"
#include "core/ParallelBlocks.h"
#include "core/PolygonRuleId.h"
#include "core/PoolTask.h"
#include "core/ScaleModes.h"
#include "io/Hdf5Mutex.h"
#include "plot/ImageViewer.h"
#include "plot/ScatterPlot.h"
#include "plot/TracePlot.h"
#include "stats/DistributionStats.h"
#include "ui/DatasetText.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"
#include "ui/NameColumnLimiter.h"
#include "ui/StatisticsDockWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPolygonF>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTableWidget>
#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>

namespace Tessaly {

namespace {

// Points per block of the refresh's passes on the thread pool; smaller blocks cost more to hand
// over than they save.
constexpr std::size_t minimumRefreshBlock = 100000;

std::string comboKey(const QComboBox* combo)
{
    return combo->currentData().toString().toStdString();
}

bool isDensityKey(const std::string& key)
{
    return key.rfind(densityColorPrefix, 0) == 0;
}

// The values of a column at the given events; an event past the column's end reads as NaN, and the
// cleaning step then drops it.
std::vector<double> gather(const std::vector<double>& column, const std::vector<int>& events)
{
    std::vector<double> values(events.size());
    const std::size_t size = column.size();
    runInBlocks(events.size(), parallelBlockCount(events.size(), minimumRefreshBlock),
        [&](std::size_t, std::size_t first, std::size_t last) {
            for (std::size_t i = first; i < last; ++i) {
                const auto event = static_cast<std::size_t>(events[i]);
                values[i] = event < size ? column[event] : std::numeric_limits<double>::quiet_NaN();
            }
        });
    return values;
}

} // namespace

void MainWindow::updateFeatureSelection()
{
    const DatasetEntry* entry = activeEntry();
    if (entry && entry->reader->isOpen() && !preloadRunning)
        onFilterChanged();
}

void MainWindow::refreshFeaturesAndPlot()
{
    const QVariant x = xFeatureCombo->currentData();
    const QVariant y = yFeatureCombo->currentData();
    const QVariant color = colorFeatureCombo->currentData();
    {
        const QSignalBlocker blockX(xFeatureCombo);
        const QSignalBlocker blockY(yFeatureCombo);
        const QSignalBlocker blockColor(colorFeatureCombo);
        populateFeatureCombos();
        for (const auto& [combo, value] : { std::pair { xFeatureCombo, x }, std::pair { yFeatureCombo, y },
                 std::pair { colorFeatureCombo, color } }) {
            const int found = combo->findData(value);
            if (found >= 0)
                combo->setCurrentIndex(found);
        }
    }
    onFilterChanged();
}

void MainWindow::requestRefresh(bool keepGroupWidgets)
{
    if (refreshQueued) {
        queuedRefreshKeepsGroupWidgets = queuedRefreshKeepsGroupWidgets && keepGroupWidgets;
        return;
    }
    refreshQueued = true;
    queuedRefreshKeepsGroupWidgets = keepGroupWidgets;
    QMetaObject::invokeMethod(this, &MainWindow::runQueuedRefresh, Qt::QueuedConnection);
}

void MainWindow::runQueuedRefresh()
{
    // A refresh that ran in between has shown the latest state already.
    if (!refreshQueued)
        return;
    const bool keep = queuedRefreshKeepsGroupWidgets;
    groupRuleUpdating = keep;
    onFilterChanged();
    groupRuleUpdating = false;
}

void MainWindow::onFilterChanged()
{
    refreshQueued = false;
    DatasetEntry* entry = activeEntry();
    if (!entry || !entry->reader->isOpen())
        return;
    // The columns are used by reference throughout; a calculation on the thread pool that replaces
    // one of them waits for this lock.
    std::unique_lock<std::recursive_mutex> readerLock(hdf5Mutex());
    const std::string xKey = comboKey(xFeatureCombo);
    const std::string yKey = comboKey(yFeatureCombo);
    if (xKey.empty() || yKey.empty())
        return;
    VQDReader& reader = *entry->reader;
    const std::vector<double>& xColumn = reader.getFeature(xKey);
    const std::vector<double>& yColumn = reader.getFeature(yKey);
    if (xColumn.empty() || yColumn.empty()) {
        std::vector<std::string> unreadable;
        if (xColumn.empty())
            unreadable.push_back(xKey);
        if (yColumn.empty() && yKey != xKey)
            unreadable.push_back(yKey);
        // Not held across the dialog, whose event loop may run for long.
        readerLock.unlock();
        reportUnreadableColumns(unreadable);
        return;
    }

    // Events that pass the filter, or all of them in file order.
    const EventFilter effective = buildEffectiveFilter(entry);
    visibleIndices.clear();
    filterReducedPlot = effective.isEnabled() && effective.ruleCount() >= 1;
    if (filterReducedPlot) {
        FeatureColumns columns;
        for (const std::string& name : effective.requiredFeatures())
            columns[name] = &reader.getFeature(name);
        const std::vector<std::int32_t> passing = effective.evaluate(columns, reader.eventCount());
        visibleIndices.assign(passing.begin(), passing.end());
        plotX = gather(xColumn, visibleIndices);
        plotY = gather(yColumn, visibleIndices);
    } else {
        plotX = xColumn;
        plotY = yColumn;
    }
    plotXLabel = QString::fromStdString(reader.featureLabel(xKey));
    plotYLabel = QString::fromStdString(reader.featureLabel(yKey));

    // Colour by a feature (a column of another length than X colours nothing) or by density.
    const std::string colorKey = comboKey(colorFeatureCombo);
    const int scaleX = xScaleCombo->currentIndex();
    const int scaleY = yScaleCombo->currentIndex();
    plotColor.clear();
    plotColorLabel.clear();
    densityFit = KernelDensityFit();
    if (!colorKey.empty() && !isDensityKey(colorKey)) {
        const std::vector<double>& colorColumn = reader.getFeature(colorKey);
        if (!colorColumn.empty() && colorColumn.size() == xColumn.size()) {
            plotColor = filterReducedPlot ? gather(colorColumn, visibleIndices) : colorColumn;
            plotColorLabel = QString::fromStdString(reader.featureLabel(colorKey));
        }
    } else if (!colorKey.empty()) {
        const int method = std::max(static_cast<int>(KernelDensity), densityMethodForColorBy(colorKey));
        std::vector<double> xStorage;
        std::vector<double> yStorage;
        plotColor = computeDensity(valuesInPlotSpace(plotX, scaleX, xStorage),
            valuesInPlotSpace(plotY, scaleY, yStorage), method, &densityFit);
        plotColorLabel = MainWindowTexts::densityLabel;
    }

    cleanPlotPoints();

    // Points at or below zero stay in the vectors but can't be drawn on a log axis.
    const auto nonPositive = [](const std::vector<double>& values) {
        return static_cast<int>(
            std::count_if(values.begin(), values.end(), [](double v) { return v <= 0.0; }));
    };
    markLogAxisProblem(xScaleCombo, scaleX == 1 ? nonPositive(plotX) : 0, MainWindowTexts::xScaleToolTip);
    markLogAxisProblem(yScaleCombo, scaleY == 1 ? nonPositive(plotY) : 0, MainWindowTexts::yScaleToolTip);

    // The contour levels and the figures of the statistics depend on the points alone: they are
    // worked out on the thread pool while this thread hands the points to the plot. Nothing here
    // changes the points, the density fit or the controls before the tasks are waited for.
    std::vector<ContourLevel> levels;
    const int contourMode = contourCombo->currentIndex();
    const int innerPercent = innerContourSpinBox->value();
    const int outerPercent = outerContourSpinBox->value();
    PoolTask contourTask([&] {
        levels = overlayContours(
            contourMode, plotX, plotY, innerPercent, outerPercent, scaleX, scaleY, &densityFit);
    });
    const bool withStatistics = !plotX.empty() && !plotY.empty();
    DistributionStats xStatistics;
    DistributionStats yStatistics;
    PoolTask xStatisticsTask([&] {
        if (withStatistics)
            xStatistics = computeDistributionStats(plotX);
    });
    PoolTask yStatisticsTask([&] {
        if (withStatistics)
            yStatistics = computeDistributionStats(plotY);
    });

    scatterPlot->setData(plotX, plotY, plotXLabel, plotYLabel, plotColor, plotColorLabel);

    // The user's zoom survives a refresh unless the axes show something else now.
    bool changed = false;
    if (zoomResetCheck) {
        changed = zoomResetCheck(xKey) || zoomResetCheck(yKey) || zoomResetCheck(colorKey);
        zoomResetCheck = nullptr;
    }
    if (changed || xKey != lastPlotXName || yKey != lastPlotYName || activeDatasetIndex != lastPlotDataset)
        scatterPlot->resetZoom();
    lastPlotXName = xKey;
    lastPlotYName = yKey;
    lastPlotDataset = activeDatasetIndex;

    updatePolygonOverlays();
    contourTask.wait();
    showContours(contourMode, levels);
    xStatisticsTask.wait();
    yStatisticsTask.wait();
    updateIsoelastics();
    updatePlotStatus();
    // The dock marks where the peers differ; group widgets are rebuilt unless a group rule is being
    // written back from the row that is being typed in.
    updatePeerHighlights();
    if (!groupRuleUpdating)
        refreshFilterGroupWidgets();
    updateApplyPlotButton();
    if (withStatistics)
        statisticsDock->showStatistics(xStatistics, yStatistics, plotX.size(), plotXLabel, plotYLabel);
    else
        statisticsDock->updateStatistics(plotX, plotY, plotXLabel, plotYLabel);
    placeSelection(*entry);
    emit plotRefreshed();
}

// Non-finite values vanish from the plot here, and from the "shown" count with them; the event
// index of each remaining point is carried along. Blocks of points are checked on the thread pool,
// then each block's survivors go to their place in order.
void MainWindow::cleanPlotPoints()
{
    const std::size_t n = plotX.size();
    if (n == 0)
        return;
    const bool colored = !plotColor.empty();
    const auto keep = [&](std::size_t i) {
        return std::isfinite(plotX[i]) && i < plotY.size() && std::isfinite(plotY[i])
            && (!colored || (i < plotColor.size() && std::isfinite(plotColor[i])));
    };
    const std::size_t blocks = parallelBlockCount(n, minimumRefreshBlock);
    std::vector<std::size_t> keptInBlock(blocks, 0);
    runInBlocks(n, blocks, [&](std::size_t block, std::size_t first, std::size_t last) {
        std::size_t kept = 0;
        for (std::size_t i = first; i < last; ++i)
            kept += keep(i) ? 1 : 0;
        keptInBlock[block] = kept;
    });
    std::vector<std::size_t> offsets(blocks + 1, 0);
    for (std::size_t block = 0; block < blocks; ++block)
        offsets[block + 1] = offsets[block] + keptInBlock[block];
    const std::size_t total = offsets.back();
    // Nothing dropped: the vectors stay as they are.
    if (total == n && plotY.size() == n && (!colored || plotColor.size() == n))
        return;

    std::vector<double> x(total);
    std::vector<double> y(total);
    std::vector<double> color(colored ? total : 0);
    std::vector<int> events(total);
    runInBlocks(n, blocks, [&](std::size_t block, std::size_t first, std::size_t last) {
        std::size_t next = offsets[block];
        for (std::size_t i = first; i < last; ++i) {
            if (!keep(i))
                continue;
            x[next] = plotX[i];
            y[next] = plotY[i];
            if (colored)
                color[next] = plotColor[i];
            events[next] = filterReducedPlot ? visibleIndices[i] : static_cast<int>(i);
            ++next;
        }
    });
    visibleIndices = std::move(events);
    filterReducedPlot = true;
    plotX = std::move(x);
    plotY = std::move(y);
    if (colored)
        plotColor = std::move(color);
}

// The selected event keeps its highlight if it is still shown; otherwise the first shown event is
// selected, so that a filter never leaves the viewer on an event that has just dropped out.
void MainWindow::placeSelection(DatasetEntry& entry)
{
    const int current = entry.currentEventIndex;
    if (visibleIndices.empty()) {
        if (current >= 0 && current < static_cast<int>(plotX.size()))
            scatterPlot->highlightPoint(current);
        else
            scatterPlot->clearHighlight();
        return;
    }
    const auto found = std::find(visibleIndices.begin(), visibleIndices.end(), current);
    if (found != visibleIndices.end()) {
        scatterPlot->highlightPoint(static_cast<int>(found - visibleIndices.begin()));
        return;
    }
    scatterPlot->clearHighlight();
    entry.currentEventIndex = visibleIndices.front();
    {
        const QSignalBlocker blocker(eventSpinBox);
        eventSpinBox->setValue(entry.currentEventIndex);
    }
    scatterPlot->highlightPoint(0);
    showEventData(entry.currentEventIndex);
}

void MainWindow::markLogAxisProblem(QComboBox* combo, int count, const QString& axisName)
{
    if (count > 0) {
        combo->setItemText(1, MainWindowTexts::logWarningItem);
        combo->setStyleSheet(MainWindowTexts::logWarningSheet);
        combo->setToolTip(MainWindowTexts::logWarningToolTip.arg(axisName).arg(count).arg(
            count == 1 ? QString() : QStringLiteral("s")));
    } else {
        combo->setItemText(1, QStringLiteral("Log"));
        combo->setStyleSheet(QString());
        combo->setToolTip(axisName);
    }
}

void MainWindow::onScaleModeChanged()
{
    scatterPlot->setAxisScaleMode(QwtPlot::xBottom, xScaleCombo->currentIndex());
    scatterPlot->setAxisScaleMode(QwtPlot::yLeft, yScaleCombo->currentIndex());
    onFilterChanged();
}

void MainWindow::updateContours()
{
    const int mode = contourCombo->currentIndex();
    showContours(mode,
        overlayContours(mode, plotX, plotY, innerContourSpinBox->value(), outerContourSpinBox->value(),
            xScaleCombo->currentIndex(), yScaleCombo->currentIndex(), &densityFit));
}

void MainWindow::showContours(int mode, const std::vector<ContourLevel>& levels)
{
    scatterPlot->setDataVisible(mode != ContourOverlayOnly);
    if (levels.empty())
        scatterPlot->clearContours();
    else
        scatterPlot->setContours(levels);
}

// Polygon rules of the plotted feature pair are drawn over the points: the dataset's own with their
// rule index as id, those of its enabled groups with ids that can't collide with them.
void MainWindow::updatePolygonOverlays()
{
    keepPolygonEditValid();
    scatterPlot->clearPolygonOverlays();
    const DatasetEntry* entry = activeEntry();
    if (!entry)
        return;
    const std::string x = comboKey(xFeatureCombo);
    const std::string y = comboKey(yFeatureCombo);
    // The polygon under edit is drawn by the plot's edit curve, not as an overlay.
    const int edited = scatterPlot->isEditing() ? scatterPlot->editId() : -1;
    const auto overlay = [&](const FilterRule& rule, int id) {
        if (rule.type != PolygonRule || rule.featureName != x || rule.featureNameY != y || id == edited)
            return;
        QPolygonF polygon;
        for (const auto& vertex : rule.polygonVertices)
            polygon << QPointF(vertex.first, vertex.second);
        scatterPlot->addPolygonOverlay(id, polygon, rule.enabled);
    };
    const std::vector<FilterRule>& own = entry->filter.rules();
    for (std::size_t i = 0; i < own.size(); ++i)
        overlay(own[i], static_cast<int>(i));
    for (const FilterGroup* group : groups) {
        if (!isGroupEnabled(entry, group->id))
            continue;
        for (std::size_t j = 0; j < group->rules.size(); ++j)
            overlay(group->rules[j], groupRuleId(group->id, static_cast<int>(j)));
    }
}

// A file without images still shows the clicked event's values in the event table.
void MainWindow::onPointClicked(int index)
{
    DatasetEntry* entry = activeEntry();
    if (!entry || index < 0)
        return;
    int event = index;
    if (!visibleIndices.empty()) {
        if (index >= static_cast<int>(visibleIndices.size()))
            return;
        event = visibleIndices[static_cast<std::size_t>(index)];
    }
    if (event >= static_cast<int>(entry->reader->eventCount()))
        return;
    entry->currentEventIndex = event;
    {
        const QSignalBlocker blocker(eventSpinBox);
        eventSpinBox->setValue(event);
    }
    scatterPlot->highlightPoint(index);
    showEventData(event);
}

void MainWindow::onEventSpinBoxChanged(int index)
{
    DatasetEntry* entry = activeEntry();
    if (!entry || index < 0 || index >= static_cast<int>(entry->reader->eventCount()))
        return;
    entry->currentEventIndex = index;
    if (visibleIndices.empty()) {
        scatterPlot->highlightPoint(index);
    } else {
        // An event that the filter hides can still be looked at; it just has no point to mark.
        const auto found = std::find(visibleIndices.begin(), visibleIndices.end(), index);
        if (found != visibleIndices.end())
            scatterPlot->highlightPoint(static_cast<int>(found - visibleIndices.begin()));
        else
            scatterPlot->clearHighlight();
    }
    showEventData(index);
}

void MainWindow::onMaskToggled(bool)
{
    const DatasetEntry* entry = activeEntry();
    if (entry && entry->currentEventIndex >= 0)
        showEventData(entry->currentEventIndex);
}

void MainWindow::showEventData(int event)
{
    DatasetEntry* entry = activeEntry();
    if (!entry || event < 0)
        return;
    VQDReader& reader = *entry->reader;
    const auto index = static_cast<std::size_t>(event);

    if (!reader.hasImage()) {
        imageViewer->clearImage(MainWindowTexts::noImageInFileText);
    } else {
        int width = 0;
        int height = 0;
        const std::vector<std::uint8_t> image = reader.getImage(index, &width, &height);
        const QString title = MainWindowTexts::eventTitle.arg(event);
        if (image.empty()) {
            imageViewer->clearImage();
        } else {
            bool withMask = false;
            if (imageViewer->isMaskShown() && reader.hasMask()) {
                int maskWidth = 0;
                int maskHeight = 0;
                const std::vector<std::uint8_t> mask = reader.getMask(index, &maskWidth, &maskHeight);
                if (!mask.empty() && maskWidth == width && maskHeight == height) {
                    imageViewer->setImageWithMask(
                        image, mask, width, height, title + MainWindowTexts::withMaskSuffix);
                    withMask = true;
                }
            }
            if (!withMask)
                imageViewer->setImage(image, width, height, title);
        }
    }

    showEventTraces(event);

    const std::lock_guard<std::recursive_mutex> readerLock(hdf5Mutex());
    std::vector<std::string> features;
    for (const std::string& name : reader.featureNames()) {
        if (isScalarFeature(name))
            features.push_back(name);
    }
    eventTable->setRowCount(static_cast<int>(features.size()));
    for (std::size_t row = 0; row < features.size(); ++row) {
        auto* label = new QTableWidgetItem(QString::fromStdString(reader.featureLabel(features[row])));
        // The label may be elided in a narrow panel: the tool tip has all of it, with the key.
        label->setData(Qt::UserRole, QString::fromStdString(features[row]));
        label->setToolTip(
            plainToolTip(label->text() + QLatin1Char('\n') + QString::fromStdString(features[row])));
        eventTable->setItem(static_cast<int>(row), 0, label);
        const std::vector<double>& column = reader.getFeature(features[row]);
        const QString value = index < column.size() ? QString::number(column[index], 'g', 6) : QString();
        eventTable->setItem(static_cast<int>(row), 1, new QTableWidgetItem(value));
    }
    // The labels get their width, up to the share that leaves the values readable.
    if (auto* limiter = eventTable->findChild<NameColumnLimiter*>())
        limiter->fit();
}

// The trace plot shows one curve per fluorescence channel named in the metadata.
void MainWindow::setupTraceChannels(const DatasetEntry& entry)
{
    tracePlot->setupChannels(readFluorescenceChannelSettings(entry.metadata.fluorescence),
        entry.reader->traceNames(), preferRefinedTraces);
    tracePlot->setVisible(tracePlot->hasChannels());
}

void MainWindow::showEventTraces(int event)
{
    DatasetEntry* entry = activeEntry();
    if (!entry || !entry->reader->hasTraces() || !tracePlot->hasChannels()) {
        tracePlot->clearTraces();
        return;
    }
    std::map<std::string, std::vector<float>> traces;
    for (const TraceChannel& channel : tracePlot->traceChannels())
        traces[channel.traceName]
            = entry->reader->getTrace(channel.traceName, static_cast<std::size_t>(event));
    tracePlot->setTraces(traces);
}

void MainWindow::onApplyPlotSettingsToAll()
{
    const DatasetEntry* active = activeEntry();
    if (!active)
        return;
    saveCurrentDatasetState();
    for (DatasetEntry* peer : datasetList) {
        if (peer != active)
            copyPlotSettings(*active, *peer);
    }
    onFilterChanged();
    updateApplyPlotButton();
}

} // namespace Tessaly
