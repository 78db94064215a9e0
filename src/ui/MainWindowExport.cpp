// Data export: the events of a dataset that pass its filter, as a measurement file, a table or a video.
#include "core/DatasetEntry.h"
#include "core/FeatureCatalogue.h"
#include "io/AviWriter.h"
#include "io/ExportNaming.h"
#include "io/PartialFile.h"
#include "io/TsvWriter.h"
#include "io/VQDWriter.h"
#include "ui/DatasetText.h"
#include "ui/ExportDialog.h"
#include "ui/MainWindow.h"
#include "ui/MessageBoxes.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProgressDialog>
#include <algorithm>
#include <numeric>

namespace Tessaly {

namespace {

ExportFormat formatOf(const ExportConfig& config)
{
    return config.avi ? ExportFormat::Video
        : config.tsv  ? ExportFormat::Table
                      : ExportFormat::MeasurementFile;
}

bool pathTaken(const std::string& path)
{
    return QFileInfo::exists(QString::fromStdString(path));
}

// The file name as the user knows it; the temporary name never shows.
QString shown(const std::string& path)
{
    return QString::fromStdString(path);
}

} // namespace

void MainWindow::exportData()
{
    DatasetEntry* entry = activeEntry();
    if (!entry || !entry->featuresLoaded || !entry->reader || !entry->reader->isOpen()) {
        MessageBoxes::warning(this, ExportTexts::exportTitle, ExportTexts::noDataset);
        return;
    }
    // The dialog lists the events' features from the readers; the controls hold nothing of it.
    ExportDialog dialog(entry, datasetList, false, this, lastExportConfigSet ? &lastExportConfig : nullptr);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const ExportConfig config = dialog.config();
    lastExportConfig = config;
    lastExportConfigSet = true;

    if (!config.allDatasets) {
        if (exportDataset(entry, config))
            MessageBoxes::information(this, ExportTexts::exportTitle, ExportTexts::exported);
        return;
    }

    // The datasets go one after another; the dialog lets the user stop between two of them.
    const std::vector<DatasetEntry*> batch = datasetList;
    const int count = static_cast<int>(batch.size());
    QProgressDialog progress(ExportTexts::progressText, ExportTexts::cancel, 0, count, this);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(0);
    progress.setValue(0);
    progress.show();
    int exported = 0;
    bool cancelled = false;
    for (int i = 0; i < count; ++i) {
        if (progress.wasCanceled()) {
            cancelled = true;
            break;
        }
        // A dataset removed while the progress dialog let events through is passed over.
        DatasetEntry* item = batch[static_cast<std::size_t>(i)];
        if (std::find(datasetList.begin(), datasetList.end(), item) == datasetList.end())
            continue;
        progress.setLabelText(ExportTexts::progressLabel.arg(item->displayName).arg(i + 1).arg(count));
        progress.setValue(i);
        // The export holds the interface thread; between two datasets the dialog gets its events,
        // so that the label shows and a click on Cancel arrives.
        QCoreApplication::processEvents();
        if (progress.wasCanceled()) {
            cancelled = true;
            break;
        }
        if (exportDataset(item, config))
            ++exported;
    }
    progress.setValue(count);
    if (!cancelled)
        MessageBoxes::information(this, ExportTexts::exportTitle, ExportTexts::exportedMany.arg(exported));
}

bool MainWindow::exportDataset(DatasetEntry* entry, const ExportConfig& config)
{
    if (!entry || !entry->reader || !entry->reader->isOpen())
        return false;
    VQDReader& reader = *entry->reader;
    const QFileInfo source(QString::fromStdString(entry->filePath));
    const QString folder = config.customDirectory ? config.directory : source.absolutePath();
    const ExportFormat format = formatOf(config);
    const std::string path = uniqueExportPath(
        folder.toStdString(), exportFileName(source.fileName().toStdString(), format), pathTaken);

    // The events that pass the effective filter, or all of them in file order.
    const EventFilter effective = buildEffectiveFilter(entry);
    const bool filtered = effective.isEnabled() && effective.ruleCount() >= 1;
    std::vector<std::int32_t> events;
    if (filtered) {
        FeatureColumns columns;
        for (const std::string& name : effective.requiredFeatures())
            columns[name] = &reader.getFeature(name);
        events = effective.evaluate(columns, reader.eventCount());
    } else {
        events.resize(reader.eventCount());
        std::iota(events.begin(), events.end(), 0);
    }
    if (events.empty()) {
        MessageBoxes::warning(
            this, ExportTexts::exportTitle, ExportTexts::noEventsPass.arg(entry->displayName));
        return false;
    }

    std::vector<std::string> features;
    for (const QString& name : config.features) {
        const std::string key = name.toStdString();
        if (isScalarFeature(key) && reader.hasFeature(key))
            features.push_back(key);
    }
    // The name is recorded when the user gave the dataset another one than the file's sample name.
    const QString sample = metadataText(entry->metadata.experiment, "sample");
    const std::string changedName
        = entry->displayName != sample ? entry->displayName.toStdString() : std::string();

    // Everything is written under a temporary name and moved into place only when it is complete.
    PartialFile target(path);
    if (format == ExportFormat::Table) {
        const TsvExport table { features, events, changedName };
        if (!writeTsv(target.path(), reader, entry->metadata, table)) {
            const bool created = QFileInfo::exists(QString::fromStdString(target.path()));
            MessageBoxes::critical(this, ExportTexts::errorTitle,
                (created ? ExportTexts::failedToWrite : ExportTexts::failedToCreate).arg(shown(path)));
            return false;
        }
    } else if (format == ExportFormat::Video) {
        AviExport video;
        video.events = events;
        video.mjpeg = config.mjpeg;
        video.skipDuplicates = config.skipDuplicates;
        video.reanalysis = config.reanalysis;
        switch (writeAvi(target.path(), reader, video)) {
        case AviResult::Written:
            break;
        case AviResult::NoImages:
            MessageBoxes::warning(
                this, ExportTexts::exportTitle, ExportTexts::noImages.arg(entry->displayName));
            return false;
        case AviResult::NoEvents:
            MessageBoxes::warning(
                this, ExportTexts::exportTitle, ExportTexts::noEvents.arg(entry->displayName));
            return false;
        case AviResult::NoDimensions:
            MessageBoxes::warning(this, ExportTexts::exportTitle, ExportTexts::noDimensions);
            return false;
        case AviResult::CannotCreate:
            MessageBoxes::critical(this, ExportTexts::errorTitle, ExportTexts::failedVideo.arg(shown(path)));
            return false;
        case AviResult::WriteFailed:
            MessageBoxes::critical(
                this, ExportTexts::errorTitle, ExportTexts::failedToWrite.arg(shown(path)));
            return false;
        }
    } else {
        VQDWriter writer;
        if (!writer.create(target.path())) {
            MessageBoxes::critical(
                this, ExportTexts::errorTitle, ExportTexts::failedToCreate.arg(shown(path)));
            return false;
        }
        writer.copyAttributes(entry->metadata);
        writer.writeOfflineFilter(filtered ? effective : EventFilter());
        writer.writeExportAttributes(events.size(), changedName);
        writer.writeScalars(features, events, reader);
        if (config.images && reader.hasImage())
            writer.writeImages(reader, events);
        if (config.masks && reader.hasMask())
            writer.writeMasks(reader, events);
        if (config.traces && reader.hasTraces())
            writer.writeTraces(reader, events);
        if (!writer.close()) {
            MessageBoxes::critical(
                this, ExportTexts::errorTitle, ExportTexts::failedToWrite.arg(shown(path)));
            return false;
        }
    }
    if (!target.commit()) {
        MessageBoxes::critical(this, ExportTexts::errorTitle, ExportTexts::failedToWrite.arg(shown(path)));
        return false;
    }
    return true;
}

} // namespace Tessaly
