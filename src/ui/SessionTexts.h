#pragma once

#include <QString>

namespace Tessaly::SessionTexts {

inline const QString saveTitle = QStringLiteral("Save Session");
inline const QString loadTitle = QStringLiteral("Load Session");
inline const QString saveFilter = QStringLiteral("Tessaly Session (*.TSY)");
inline const QString loadFilter = QStringLiteral("Tessaly Session (*.TSY);;All Files (*)");
inline const QString nothingToSaveText = QStringLiteral("No datasets loaded to save.");
inline const QString errorTitle = QStringLiteral("Error");
inline const QString warningTitle = QStringLiteral("Warning");
inline const QString failedToWriteText = QStringLiteral("Failed to write session file: ");
inline const QString failedToReadText = QStringLiteral("Failed to read session file: ");
inline const QString invalidFileText = QStringLiteral("Invalid session file: ");
inline const QString unrecognizedText = QStringLiteral("Unrecognized session file format.");
inline const QString newerVersionText = QStringLiteral(
    "This session was saved by a newer version of Tessaly.\nSome settings may not be restored correctly.");
inline const QString replaceSessionText
    = QStringLiteral("Loading a session will close all current datasets\nand "
                     "windows. Unsaved changes will be lost.\n\nContinue?");
inline const QString notFoundTitle = QStringLiteral("Dataset Not Found");
// %1 the absolute path, %2 the display name.
inline const QString notFoundText
    = QStringLiteral("Cannot find dataset:\n%1\n\nDisplay name: %2\n\nWould you like to locate it manually?");
// %1 the display name.
inline const QString locateTitle = QStringLiteral("Locate: %1");
inline const QString locateFilter = QStringLiteral("VQD Files (*.vqd);;All Files (*)");
inline const QString failedToOpenText = QStringLiteral("Failed to open: ");
inline const QString changedTitle = QStringLiteral("Dataset Changed");
// %1 the display name; %2 and %3 the stored event count and size; %4 and %5 those found.
inline const QString changedText = QStringLiteral(
    "Dataset \"%1\" may have changed since the session was saved.\n\nExpected: %2 events, %3 "
    "bytes\nFound: %4 events, %5 bytes\n\nContinue loading this dataset?");
inline const QString savedStatus = QStringLiteral("Session saved: ");
inline const QString loadedStatus = QStringLiteral("Session loaded: %1 dataset(s)");

} // namespace Tessaly::SessionTexts
