#pragma once

#include "ExampleEvents.h"
#include "ExampleFileWriter.h"

#include <H5Cpp.h>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <string>
#include <sys/resource.h>

namespace Tessaly::Bench {

// An example measurement of `events` cells with 80 x 250 frames and masks (deflate, one frame per
// chunk, as cameras write them) and three fluorescence channels of `traceLength` samples, written once
// per process and size. Writing 20,000 events takes a while; the benchmarks time only the calculation.
inline std::string exampleCalculationFile(std::size_t events, int traceLength)
{
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("cells_%1_%2.vqd").arg(events).arg(traceLength));
    if (!QFile::exists(path)) {
        H5::Exception::dontPrint();
        ExampleData::ExampleSettings settings;
        settings.eventCount = events;
        settings.traceLength = traceLength;
        ExampleData::WriteOptions options;
        options.compression = ExampleData::Compression::Deflate;
        ExampleData::writeExampleFile(
            path.toStdString(), settings, ExampleData::generateEvents(settings), options);
    }
    return path.toStdString();
}

// CPU seconds used so far by all threads of this process. On a machine shared with other work the
// wall time of a benchmark says more about the others than about the code; the CPU time of all
// threads, divided by the cores used, is what an idle machine would take.
inline double processCpuSeconds()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + 1e-6 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

} // namespace Tessaly::Bench
