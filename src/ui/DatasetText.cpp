#include "ui/DatasetText.h"

#include "core/DatasetEntry.h"

#include <QFileInfo>
#include <QTextDocument>

namespace Tessaly {

QString metadataText(const std::map<std::string, std::string>& section, const char* key)
{
    const auto it = section.find(key);
    return it == section.end() ? QString() : QString::fromStdString(it->second);
}

QStringList datasetDetails(const DatasetEntry& entry, bool reservoirFirst)
{
    QStringList parts;
    bool ok = false;
    const double flowRate = metadataText(entry.metadata.setup, "flow rate").toDouble(&ok);
    if (ok)
        parts << QStringLiteral("%1 µL/s").arg(flowRate, 0, 'g', 4);
    if (metadataText(entry.metadata.setup, "chip region") == QLatin1String("reservoir")) {
        if (reservoirFirst)
            parts.prepend(QStringLiteral("Reservoir"));
        else
            parts << QStringLiteral("Reservoir");
    }
    const QString runIndex = metadataText(entry.metadata.experiment, "run index");
    if (!runIndex.isEmpty())
        parts << QStringLiteral("#%1").arg(runIndex);
    return parts;
}

QString plainToolTip(const QString& text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text, Qt::WhiteSpaceNoWrap) : text;
}

QString sampleOrFileName(const DatasetEntry& entry)
{
    const QString sample = metadataText(entry.metadata.experiment, "sample");
    return sample.isEmpty() ? QFileInfo(QString::fromStdString(entry.filePath)).fileName() : sample;
}

} // namespace Tessaly
