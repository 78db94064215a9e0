#pragma once

#include "ExampleEvents.h"
#include "ExampleFileWriter.h"

#include <QFile>
#include <QString>
#include <QTemporaryDir>

namespace Tessaly::Bench {

// An example measurement file of scalar features only, written once per process, size and
// compression. Compressed columns are stored in chunks of 65536 values, as the instrument writes them.
inline QString exampleFeatureFile(
    std::size_t events, ExampleData::Compression compression = ExampleData::Compression::None)
{
    static QTemporaryDir dir;
    const QString path
        = dir.filePath(QStringLiteral("events_%1_%2.vqd").arg(events).arg(static_cast<int>(compression)));
    if (!QFile::exists(path)) {
        ExampleData::ExampleSettings settings;
        settings.eventCount = events;
        ExampleData::WriteOptions options;
        options.images = options.traces = false;
        options.compression = compression;
        ExampleData::writeExampleFile(
            path.toStdString(), settings, ExampleData::generateEvents(settings), options);
    }
    return path;
}

} // namespace Tessaly::Bench
