#pragma once

#include "ExampleEvents.h"
#include "ExampleFileWriter.h"

#include <QFile>
#include <QString>
#include <QTemporaryDir>

namespace Tessaly::Bench {

// An example measurement file of scalar features only, written once per process and size.
inline QString exampleFeatureFile(std::size_t events)
{
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("events_%1.vqd").arg(events));
    if (!QFile::exists(path)) {
        ExampleData::ExampleSettings settings;
        settings.eventCount = events;
        ExampleData::WriteOptions options;
        options.images = options.traces = false;
        ExampleData::writeExampleFile(
            path.toStdString(), settings, ExampleData::generateEvents(settings), options);
    }
    return path;
}

} // namespace Tessaly::Bench
