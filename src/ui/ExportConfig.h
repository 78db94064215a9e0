#pragma once

#include <QString>
#include <QStringList>

namespace Tessaly {

// What the export dialog was closed with. The main window keeps the last one, so that the next
// dialog opens as this one closed.
struct ExportConfig
{
    QStringList features; // scalar feature keys, in list order
    bool images = false; // non-scalar data: measurement files only
    bool masks = false;
    bool traces = false;
    bool tsv = false; // both false: a measurement file
    bool avi = false;
    bool mjpeg = true; // false: uncompressed video
    bool skipDuplicates = false; // one event per camera frame
    bool reanalysis = false; // 100 frames of the average image first
    bool customDirectory = false; // else beside each dataset's file
    QString directory;
    bool allDatasets = false;
};

// The texts of data export, for the dialog, the main window and their tests.
namespace ExportTexts {
inline const QString dialogTitle = QStringLiteral("Export Data");
inline const QString scopeGroup = QStringLiteral("Export Scope");
inline const QString currentOnly = QStringLiteral("Current dataset only");
inline const QString allDatasets = QStringLiteral("All datasets (%1)");
inline const QString formatGroup = QStringLiteral("Export Format");
inline const QString vqdFormat = QStringLiteral(".vqd (HDF5)");
inline const QString tsvFormat = QStringLiteral(".tsv (Tab-separated)");
inline const QString aviFormat = QStringLiteral(".avi (Video)");
inline const QString aviGroup = QStringLiteral("AVI Options");
inline const QString mjpeg = QStringLiteral("MJPEG (compressed)");
inline const QString raw = QStringLiteral("Raw (uncompressed)");
inline const QString skipDuplicates
    = QStringLiteral("Skip duplicate frames (exclude multiple events from the same video frame)");
inline const QString reanalysis = QStringLiteral("For reanalysis (prepend 100 frames of the average image)");
inline const QString featuresGroup = QStringLiteral("Scalar Features");
inline const QString selectAll = QStringLiteral("Select All");
inline const QString deselectAll = QStringLiteral("Deselect All");
inline const QString nonScalarGroup = QStringLiteral("Non-scalar Data");
inline const QString images = QStringLiteral("Images");
inline const QString masks = QStringLiteral("Masks");
inline const QString traces = QStringLiteral("Traces");
inline const QString directoryGroup = QStringLiteral("Output Directory");
inline const QString customDirectory
    = QStringLiteral("Export All to a Custom Directory (default: original file locations)");
inline const QString browse = QStringLiteral("Browse...");
inline const QString exportButton = QStringLiteral("Export");
inline const QString imagesAlwaysTip = QStringLiteral("Images are always included in AVI export");
inline const QString onlyImagesTip = QStringLiteral("Only images are exported in AVI format");
inline const QString notInTsvTip = QStringLiteral("Not available in TSV format");
inline const QString otherDatasetsTip
    = QStringLiteral("Not available in current dataset (available in other datasets)");

inline const QString exportTitle = QStringLiteral("Export");
inline const QString errorTitle = QStringLiteral("Export Error");
inline const QString noDataset = QStringLiteral("No loaded dataset available for export.");
inline const QString exported = QStringLiteral("Dataset exported successfully.");
inline const QString progressText = QStringLiteral("Exporting data...");
inline const QString cancel = QStringLiteral("Cancel");
// %1 display name, %2 running number, %3 count.
inline const QString progressLabel = QStringLiteral("Exporting %1 (%2/%3)");
inline const QString exportedMany = QStringLiteral("Exported %1 dataset(s) successfully.");
inline const QString noEventsPass = QStringLiteral("No events pass the filter for: %1");
inline const QString failedToCreate = QStringLiteral("Failed to create: %1");
// A file that was created but could not be written whole (a full disk, a removed medium).
inline const QString failedToWrite = QStringLiteral("Failed to write: %1");
inline const QString noImages = QStringLiteral("No images available in: %1");
inline const QString noEvents = QStringLiteral("No events to export for: %1");
inline const QString noDimensions = QStringLiteral("Failed to read image dimensions.");
inline const QString failedVideo = QStringLiteral("Failed to create video file: %1");
} // namespace ExportTexts

} // namespace Tessaly
