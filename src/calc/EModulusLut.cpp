#include "calc/EModulusLut.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTextStream>
#include <cmath>

namespace Tessaly {

namespace {

void applyMetadata(const QString& text, EModulusLut& lut, EModulusLutDiagnostics* diagnostics)
{
    static const QRegularExpression commentMarks(
        QStringLiteral("^#\\s*"), QRegularExpression::MultilineOption);
    QString json = text;
    json.remove(commentMarks);
    lut.metadataText = json.trimmed();
    const QJsonDocument document = QJsonDocument::fromJson(json.toUtf8());
    if (diagnostics) {
        diagnostics->metadataBlock = true;
        if (!document.isObject())
            diagnostics->metadataValid = false;
    }
    if (!document.isObject())
        return;
    const QJsonObject object = document.object();
    const auto take = [&object](const char* key, double& field) {
        const QJsonValue value = object.value(QLatin1String(key));
        if (value.isDouble())
            field = value.toDouble();
    };
    take("channel_width", lut.channelWidth);
    take("flow_rate", lut.flowRate);
    take("fluid_viscosity", lut.viscosity);
}

} // namespace

bool readEModulusLut(const QString& path, EModulusLut& lut, EModulusLutDiagnostics* diagnostics)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    lut = EModulusLut();
    lut.filePath = path;
    static const QRegularExpression whitespace(QStringLiteral("\\s+"));

    QTextStream stream(&file);
    bool inMetadata = false;
    bool headerSeen = false;
    QString metadata;
    int lineNumber = 0;
    QString line;
    while (stream.readLineInto(&line)) {
        ++lineNumber;
        if (line.contains(QLatin1String("BEGIN METADATA"))) {
            inMetadata = true;
            metadata.clear();
            continue;
        }
        if (line.contains(QLatin1String("END METADATA"))) {
            inMetadata = false;
            applyMetadata(metadata, lut, diagnostics);
            continue;
        }
        if (inMetadata) {
            metadata += (line.startsWith(QLatin1Char('#')) ? line.mid(1) : line) + QLatin1Char('\n');
            continue;
        }
        if (line.startsWith(QLatin1Char('#')) || line.trimmed().isEmpty())
            continue;
        // Only the first line naming a column is the header; later ones are rows or rubbish.
        if (!headerSeen && (line.contains(QLatin1String("area")) || line.contains(QLatin1String("deform")))) {
            headerSeen = true;
            continue;
        }
        const QStringList fields = line.split(whitespace, Qt::SkipEmptyParts);
        bool ok = fields.size() >= 3;
        double values[3] = { 0.0, 0.0, 0.0 };
        for (int i = 0; ok && i < 3; ++i) {
            values[i] = fields[i].toDouble(&ok);
            // A non-finite node would spoil the normalisation of the whole table.
            ok = ok && std::isfinite(values[i]);
        }
        if (!ok) {
            if (diagnostics && diagnostics->rejectedLine == 0) {
                diagnostics->rejectedLine = lineNumber;
                diagnostics->rejectedText = line.trimmed().left(80);
            }
            continue;
        }
        lut.area.push_back(values[0]);
        lut.deform.push_back(values[1]);
        lut.emodulus.push_back(values[2]);
    }
    if (diagnostics)
        diagnostics->headerSeen = headerSeen;
    return true;
}

} // namespace Tessaly
