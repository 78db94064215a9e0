#include "io/ColumnCheck.h"

#include "core/FeatureCatalogue.h"
#include "io/ColumnHandover.h"
#include "io/FileProbe.h"
#include "io/Hdf5Mutex.h"
#include "io/VQDReader.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryFile>
#include <QThread>
#include <algorithm>
#include <memory>
#include <mutex>

namespace Tessaly {

namespace {

struct Probe
{
    std::unique_ptr<QTemporaryFile> output;
    std::unique_ptr<QProcess> process;
};

// The scalar columns that the reader lists and has not cached yet, in name order.
std::vector<std::string> uncachedColumns(VQDReader& reader)
{
    std::vector<std::string> names;
    {
        const std::lock_guard<std::recursive_mutex> lock(hdf5Mutex());
        names = reader.featureNames();
    }
    names.erase(std::remove_if(names.begin(), names.end(),
                    [&reader](const std::string& name) {
                        return !isScalarFeature(name) || reader.isComputedFeature(name)
                            || reader.isFeatureCached(name);
                    }),
        names.end());
    return names;
}

} // namespace

int ColumnCheck::probeCount()
{
    return std::clamp(QThread::idealThreadCount(), 1, 4);
}

QString ColumnCheck::handoverFolder()
{
    // Hand-overs are as large as the columns; in a folder in memory they never reach a disk.
    const QFileInfo memory(QStringLiteral("/dev/shm"));
    if (memory.isDir() && memory.isWritable())
        return memory.filePath();
    return QDir::tempPath();
}

int ColumnCheck::removeLeftOverHandovers(const QString& folder, const QDateTime& olderThan)
{
    int removed = 0;
    const QFileInfoList files = QDir(folder).entryInfoList(
        { QStringLiteral("tessaly-columns-*") }, QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QFileInfo& file : files) {
        if (file.lastModified() < olderThan && QFile::remove(file.filePath()))
            ++removed;
    }
    return removed;
}

std::vector<ColumnShare> ColumnCheck::shares(
    const std::vector<std::string>& columns, const std::vector<std::string>& first, int probes)
{
    std::vector<ColumnShare> shares;
    ColumnShare leading;
    leading.frames = false;
    for (const std::string& name : first) {
        const bool listed = std::find(columns.begin(), columns.end(), name) != columns.end();
        if (listed
            && std::find(leading.columns.begin(), leading.columns.end(), name) == leading.columns.end())
            leading.columns.push_back(name);
    }
    std::vector<ColumnShare> bulk(static_cast<std::size_t>(std::max(probes, 1)));
    std::size_t next = 0;
    for (const std::string& name : columns) {
        if (std::find(leading.columns.begin(), leading.columns.end(), name) != leading.columns.end())
            continue;
        bulk[next].columns.push_back(name);
        next = (next + 1) % bulk.size();
    }
    if (!leading.columns.empty())
        shares.push_back(std::move(leading));
    for (std::size_t i = 0; i < bulk.size(); ++i) {
        bulk[i].frames = i == 0;
        if (i == 0 || !bulk[i].columns.empty())
            shares.push_back(std::move(bulk[i]));
    }
    return shares;
}

bool ColumnCheck::run(const QString& path, VQDReader& reader, QString* failure,
    const std::vector<std::string>& first, const std::function<void()>& firstIn)
{
    const QString executable = FileProbe::availableProgram();
    if (executable.isEmpty())
        return true;
    std::vector<ColumnShare> planned = shares(uncachedColumns(reader), first, probeCount());
    const bool leadingShare = !planned.empty() && !planned.front().frames;
    std::vector<Probe> probes(planned.size());
    const auto launch = [&](std::size_t i) {
        probes[i] = { std::make_unique<QTemporaryFile>(
                          handoverFolder() + QStringLiteral("/tessaly-columns-XXXXXX")),
            std::make_unique<QProcess>() };
        // Without a file to hand over in, the probe still checks; the program then reads it all.
        if (probes[i].output->open())
            planned[i].output = probes[i].output->fileName();
        probes[i].output->close();
        FileProbe::start(
            *probes[i].process, executable, path, FileProbe::Scope::Columns, planned[i].options());
    };
    // The probe of the first columns runs alone, so that it has a core to itself; the others start
    // once it has ended and the caller has had the columns.
    const std::size_t leading = leadingShare ? 1 : probes.size();
    for (std::size_t i = 0; i < leading; ++i)
        launch(i);
    QDeadlineTimer deadline(FileProbe::timeLimit());
    QString reason;
    for (std::size_t i = 0; i < probes.size() && reason.isEmpty(); ++i) {
        Probe& probe = probes[i];
        // A probe that can't start is no verdict on the file, as with a single probe.
        if (probe.process->waitForStarted()) {
            bool timedOut = false;
            if (!probe.process->waitForFinished(
                    static_cast<int>(std::max<qint64>(deadline.remainingTime(), 1)))) {
                probe.process->kill();
                probe.process->waitForFinished();
                timedOut = true;
            }
            reason = FileProbe::outcome(*probe.process, timedOut, FileProbe::Scope::Columns);
            if (!reason.isEmpty())
                break;
            // Taken in while the other probes still decode, on the core that this one has left.
            if (!planned[i].output.isEmpty())
                ColumnHandover::adoptFile(planned[i].output, reader);
        }
        // The hand-over is as large as its columns; it goes as soon as it has been read.
        probe.output->remove();
        if (i + 1 == leading && leading < probes.size()) {
            if (firstIn)
                firstIn();
            for (std::size_t next = leading; next < probes.size(); ++next)
                launch(next);
            // Each run of probes has the time limit to itself.
            deadline = QDeadlineTimer(FileProbe::timeLimit());
        }
    }
    // After a refusal the remaining probes are of no use.
    for (Probe& probe : probes) {
        if (probe.process && probe.process->state() != QProcess::NotRunning) {
            probe.process->kill();
            probe.process->waitForFinished();
        }
    }
    if (failure)
        *failure = reason;
    return reason.isEmpty();
}

} // namespace Tessaly
