#pragma once

#include <QString>

namespace Tessaly {

// Messages of the main window's filter operations and filter group files.
namespace FilterOperationTexts {
inline const QString importMeasurementTitle = QStringLiteral("Import Measurement Filters");
inline const QString noSoftLimits = QStringLiteral("No features with soft limit enabled found.");

inline const QString exportTitle = QStringLiteral("Export Filter Groups");
inline const QString importTitle = QStringLiteral("Import Filter Groups");
inline const QString noGroupsToExport = QStringLiteral("There are no filter groups to export.");
inline const QString selectGroupsLabel = QStringLiteral("Select groups to export:");
inline const QString selectAll = QStringLiteral("Select All");
inline const QString selectNone = QStringLiteral("Select None");
inline const QString fileFilter = QStringLiteral("Tessaly Filter Groups (*.tsyfg)");
inline const QString openFileFilter = QStringLiteral("Tessaly Filter Groups (*.tsyfg);;All Files (*)");
inline const QString fileSuffix = QStringLiteral(".tsyfg");
inline const QString failedToWrite = QStringLiteral("Failed to open file for writing:\n");
inline const QString failedToRead = QStringLiteral("Failed to read file:\n");
inline const QString notValidJson = QStringLiteral("File is not a valid filter-groups JSON: ");
inline const QString noGroupsInFile = QStringLiteral("The file contains no filter groups.");
inline const QString importedGroupName = QStringLiteral("Imported group");
// %1 the number of groups.
inline const QString exportedStatus = QStringLiteral("Exported %1 filter group(s).");
inline const QString importedStatus = QStringLiteral("Imported %1 filter group(s).");
} // namespace FilterOperationTexts

} // namespace Tessaly
