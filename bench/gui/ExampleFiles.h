#pragma once

#include "ExampleEvents.h"
#include "ExampleFileWriter.h"
#include "ui/MainWindow.h"

#include <QCoreApplication>
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

// The main window at 1400 x 900 with `files` example files of `events`, `events` + 1, ... events
// opened and loaded; the first is the active one.
inline void openExampleFiles(MainWindow& window, std::size_t events, std::size_t files = 1)
{
    window.resize(1400, 900);
    window.show();
    for (std::size_t file = 0; file < files; ++file)
        window.openDataset(exampleFeatureFile(events + file));
    while (window.datasets().size() < files || window.isPreloadRunning() || window.isCheckingFile())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
}

} // namespace Tessaly::Bench
