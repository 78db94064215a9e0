#include "io/FileProbe.h"

#include "io/ColumnHandover.h"
#include "io/ColumnShare.h"
#include "io/VQDReader.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
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

int FileProbe::runProbe(const QString& path, Scope scope, const ColumnShare* share)
{
    VQDReader reader;
    if (!reader.open(path.toStdString()))
        return cannotOpenExitCode;
    reader.readMetadata();
    reader.featureNames();
    if (scope == Scope::Columns && !share) {
        reader.cacheAllFeatures();
    } else if (scope == Scope::Columns) {
        QFile output(share->output);
        bool handingOver = !share->output.isEmpty()
            && output.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)
            && ColumnHandover::writeStart(output);
        for (const std::string& name : share->columns) {
            // Every column of the share is decoded, whether or not it can still be handed over; none
            // is kept, so that the probe holds one column at a time.
            const std::optional<std::vector<double>> column = reader.readFeatureUncached(name);
            if (column && handingOver)
                handingOver = ColumnHandover::writeColumn(output, name, *column);
        }
    }
    if (share && !share->frames) {
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
