#include "core/SaveFileSuffix.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace Tessaly {

QString withFilterSuffix(const QString& fileName, const QString& selectedFilter)
{
    if (fileName.isEmpty() || !QFileInfo(fileName).suffix().isEmpty())
        return fileName;
    static const QRegularExpression firstPattern(QStringLiteral("\\*\\.([A-Za-z0-9.]+)"));
    const QRegularExpressionMatch match = firstPattern.match(selectedFilter);
    if (!match.hasMatch())
        return fileName;
    return fileName + QLatin1Char('.') + match.captured(1);
}

} // namespace Tessaly
