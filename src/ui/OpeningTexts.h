#pragma once

#include <QString>

namespace Tessaly {

// Texts of the file check that runs before a file is opened.
namespace OpeningTexts {
// %1 the file name.
inline const QString checkingStatus = QStringLiteral("Checking: %1...");
inline const QString checkTitle = QStringLiteral("Checking File");
// %1 the file name.
inline const QString checkLabel = QStringLiteral("Checking %1 before opening it...");
inline const QString cancelButton = QStringLiteral("Cancel");
} // namespace OpeningTexts

} // namespace Tessaly
