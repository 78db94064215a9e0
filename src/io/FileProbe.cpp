#include "io/FileProbe.h"

#include "core/FeatureCatalogue.h"
#include "io/ColumnHandover.h"
#include "io/VQDReader.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryFile>
#include <QThread>
#include <algorithm>
#include <memory>
#include <mutex>

namespace Tessaly {

namespace {

struct ProbeSettings
{
    QString program;
    bool programSet = false;
    int timeLimitMs = 15000;
};

ProbeSettings& settings()
{
    static ProbeSettings probe;
    return probe;
}

constexpr int maxForwardedLines = 20;

// Every HDF5 file starts with these bytes, at offset 0 or, behind a user block, at 512, 1024, 2048...
const QByteArray hdf5Signature("\x89HDF\r\n\x1a\n", 8);

bool hasHdf5Signature(QFile& file)
{
    const qint64 size = file.size();
    for (qint64 offset = 0; offset + hdf5Signature.size() <= size; offset = offset == 0 ? 512 : 2 * offset) {
        if (!file.seek(offset))
            return false;
        if (file.read(hdf5Signature.size()) == hdf5Signature)
            return true;
    }
    return false;
}

QString scopeText(FileProbe::Scope scope)
{
    return scope == FileProbe::Scope::Columns ? FileProbeTexts::columnsScope : FileProbeTexts::structureScope;
}

} // namespace

void FileProbe::setProgram(const QString& program)
{
    settings().program = program;
    settings().programSet = true;
}

QString FileProbe::program()
{
    if (settings().programSet)
        return settings().program;
    return QCoreApplication::applicationDirPath() + QStringLiteral("/tessaly-probe");
}

QString FileProbe::availableProgram()
{
    const QString executable = program();
    if (!executable.isEmpty() && QFileInfo(executable).isExecutable())
        return executable;
    static std::once_flag warned;
    std::call_once(warned, [&executable] {
        qWarning().noquote() << "No file probe at" << executable << "- files are opened unprobed";
    });
    return QString();
}

void FileProbe::setTimeLimit(int milliseconds)
{
    settings().timeLimitMs = milliseconds;
}

int FileProbe::timeLimit()
{
    return settings().timeLimitMs;
}

QString FileProbe::refusalBeforeProbe(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return FileProbeTexts::unreadable.arg(FileProbeTexts::missing);
    if (info.isDir())
        return FileProbeTexts::unreadable.arg(FileProbeTexts::folder);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return FileProbeTexts::unreadable.arg(file.error() == QFileDevice::PermissionsError
                ? FileProbeTexts::noPermission
                : file.errorString());
    if (!hasHdf5Signature(file))
        return FileProbeTexts::notHdf5;
    return QString();
}

void FileProbe::start(QProcess& process, const QString& executable, const QString& path, Scope scope,
    const QStringList& options)
{
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.setStandardOutputFile(QProcess::nullDevice());
    // The C library's heap checks turn a corruption that would only surface later, perhaps only in
    // the program itself, into a fault of the probe.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("MALLOC_CHECK_"), QStringLiteral("3"));
    environment.insert(QStringLiteral("MALLOC_PERTURB_"), QStringLiteral("165"));
    process.setProcessEnvironment(environment);
    QStringList arguments;
    if (scope == Scope::Columns)
        arguments << QStringLiteral("--columns");
    process.start(executable, arguments << options << path);
}

QString FileProbe::outcome(QProcess& process, bool timedOut, Scope scope)
{
    QString reason;
    if (timedOut)
        reason = FileProbeTexts::timedOut.arg(scopeText(scope)).arg((timeLimit() + 999) / 1000);
    else if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == cannotOpenExitCode)
        reason = FileProbeTexts::cannotOpen;
    // A fault may also end the probe by an exit code of its own, as a sanitizer's report does.
    else if (process.exitStatus() == QProcess::CrashExit || process.exitCode() != 0)
        reason = FileProbeTexts::crashed.arg(scopeText(scope));
    // The probe's lines tell what the library said. When the probe got through, the program itself
    // reads the file next and says the same, so they are passed on only for a refused file.
    const QByteArray errors = process.readAllStandardError();
    if (!reason.isEmpty()) {
        // A crash report can run to hundreds of lines; its start tells what happened.
        int lines = 0;
        for (const QByteArray& line : errors.split('\n')) {
            if (line.trimmed().isEmpty())
                continue;
            if (++lines > maxForwardedLines)
                break;
            qWarning().noquote() << "File check:" << QString::fromLocal8Bit(line);
        }
    }
    return reason;
}

bool FileProbe::check(const QString& path, QString* failure, Scope scope)
{
    const QString executable = availableProgram();
    if (executable.isEmpty())
        return true;
    QProcess probe;
    start(probe, executable, path, scope);
    if (!probe.waitForStarted())
        return true;
    bool timedOut = false;
    if (!probe.waitForFinished(timeLimit())) {
        probe.kill();
        probe.waitForFinished();
        timedOut = true;
    }
    const QString reason = outcome(probe, timedOut, scope);
    if (failure)
        *failure = reason;
    return reason.isEmpty();
}

int FileProbe::columnProbeCount()
{
    return std::clamp(QThread::idealThreadCount(), 1, 4);
}

QString FileProbe::handoverFolder()
{
    // Hand-overs are as large as the columns; in a folder in memory they never reach a disk.
    const QFileInfo memory(QStringLiteral("/dev/shm"));
    if (memory.isDir() && memory.isWritable())
        return memory.filePath();
    return QDir::tempPath();
}

bool FileProbe::checkColumns(const QString& path, VQDReader& reader, QString* failure)
{
    const QString executable = availableProgram();
    if (executable.isEmpty())
        return true;
    struct Probe
    {
        std::unique_ptr<QTemporaryFile> output;
        std::unique_ptr<QProcess> process;
    };
    const int parts = columnProbeCount();
    std::vector<Probe> probes;
    for (int part = 0; part < parts; ++part) {
        Probe probe { std::make_unique<QTemporaryFile>(
                          handoverFolder() + QStringLiteral("/tessaly-columns-XXXXXX")),
            std::make_unique<QProcess>() };
        // Without a file to hand over in, the probe still checks; the program then reads it all.
        const QString output = probe.output->open() ? probe.output->fileName() : QString();
        probe.output->close();
        start(*probe.process, executable, path, Scope::Columns, shareOptions({ part, parts, output }));
        probes.push_back(std::move(probe));
    }
    const QDeadlineTimer deadline(timeLimit());
    QString reason;
    for (Probe& probe : probes) {
        // A probe that can't start is no verdict on the file, as in check().
        if (!probe.process->waitForStarted())
            continue;
        bool timedOut = false;
        if (!probe.process->waitForFinished(
                static_cast<int>(std::max<qint64>(deadline.remainingTime(), 1)))) {
            probe.process->kill();
            probe.process->waitForFinished();
            timedOut = true;
        }
        reason = outcome(*probe.process, timedOut, Scope::Columns);
        if (!reason.isEmpty())
            break;
        // Taken in while the other probes still decode, on the core that this one has left.
        if (!probe.output->fileName().isEmpty())
            ColumnHandover::adoptFile(probe.output->fileName(), reader);
        // The hand-over is as large as its columns; it goes as soon as it has been read.
        probe.output->remove();
    }
    // After a refusal the remaining probes are of no use.
    for (Probe& probe : probes) {
        if (probe.process->state() != QProcess::NotRunning) {
            probe.process->kill();
            probe.process->waitForFinished();
        }
    }
    if (failure)
        *failure = reason;
    return reason.isEmpty();
}

QStringList FileProbe::shareOptions(const ColumnShare& share)
{
    if (share.output.isEmpty() && share.parts == 1)
        return {};
    QStringList options { QStringLiteral("--part"),
        QStringLiteral("%1/%2").arg(share.part).arg(share.parts) };
    if (!share.output.isEmpty())
        options << QStringLiteral("--output") << share.output;
    return options;
}

bool FileProbe::parseShareOptions(QStringList& arguments, ColumnShare& share)
{
    while (arguments.size() >= 2 && arguments.first().startsWith(QLatin1String("--"))) {
        const QString option = arguments.takeFirst();
        const QString value = arguments.takeFirst();
        if (option == QLatin1String("--output")) {
            share.output = value;
        } else if (option == QLatin1String("--part")) {
            const QStringList numbers = value.split(QLatin1Char('/'));
            bool partOk = false;
            bool partsOk = false;
            if (numbers.size() != 2)
                return false;
            share.part = numbers[0].toInt(&partOk);
            share.parts = numbers[1].toInt(&partsOk);
            if (!partOk || !partsOk || share.parts < 1 || share.part < 0 || share.part >= share.parts)
                return false;
        } else {
            return false;
        }
    }
    return true;
}

int FileProbe::runProbe(const QString& path, Scope scope, const ColumnShare& share)
{
    VQDReader reader;
    if (!reader.open(path.toStdString()))
        return cannotOpenExitCode;
    reader.readMetadata();
    const std::vector<std::string> names = reader.featureNames();
    if (scope == Scope::Columns && share.output.isEmpty() && share.parts == 1) {
        reader.cacheAllFeatures();
    } else if (scope == Scope::Columns) {
        QFile output(share.output);
        bool handingOver = !share.output.isEmpty()
            && output.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)
            && ColumnHandover::writeStart(output);
        int index = 0;
        for (const std::string& name : names) {
            if (!isScalarFeature(name) || index++ % share.parts != share.part)
                continue;
            // Every column of the share is decoded, whether or not it can still be handed over.
            const std::optional<std::vector<double>> column = reader.readFeatureUncached(name);
            if (column && handingOver)
                handingOver = ColumnHandover::writeColumn(output, name, *column);
        }
    }
    if (share.part != 0) {
        reader.close();
        return 0;
    }
    const std::uint64_t events = reader.eventCount();
    for (const std::uint64_t event : { std::uint64_t { 0 }, events > 0 ? events - 1 : 0 }) {
        int width = 0;
        int height = 0;
        reader.getImage(event, &width, &height);
        reader.getMask(event, &width, &height);
        for (const std::string& trace : reader.traceNames())
            reader.getTrace(trace, event);
    }
    reader.close();
    return 0;
}

} // namespace Tessaly
