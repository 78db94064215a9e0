#pragma once

#include <QString>

namespace Tessaly {

// Why a table file that a user offers can't serve, in words for a message box.
namespace LookupTableTexts {
inline const QString unreadable = QStringLiteral("The file can't be read as text.");
inline const QString noHeader
    = QStringLiteral("The file has no header line naming its columns (area, deformation, Young's modulus).");
// %1 line number, %2 the start of the line.
inline const QString badRow = QStringLiteral("Line %1 is not a row of three numbers: \"%2\"");
// %1 the number of rows.
inline const QString tooFewRows = QStringLiteral("The table has %1 rows; it needs at least 3.");
inline const QString badMetadata
    = QStringLiteral("The block between BEGIN METADATA and END METADATA is not a "
                     "JSON object.");
inline const QString noExtent
    = QStringLiteral("All rows have the same area or the same deformation, so they span no surface.");
} // namespace LookupTableTexts

// Checks a table file strictly before it is put where the program finds it: readable, with a header,
// every row three numbers, a metadata block (if any) that is a JSON object, at least 3 rows spanning
// both axes. Returns what is wrong, or an empty text for a table that serves.
QString lookupTableProblem(const QString& path);

} // namespace Tessaly
