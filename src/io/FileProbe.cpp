#include "io/FileProbe.h"

#include "io/VQDReader.h"

#include <QCoreApplication>
#include <QDebug>
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

void FileProbe::setTimeLimit(int milliseconds)
{
    settings().timeLimitMs = milliseconds;
}

bool FileProbe::check(const QString& path, QString* failure, Scope scope)
{
    const QString executable = program();
    if (executable.isEmpty() || !QFileInfo(executable).isExecutable()) {
        static std::once_flag warned;
        std::call_once(warned, [&executable] {
            qWarning().noquote() << "No file probe at" << executable << "- files are opened unprobed";
        });
        return true;
    }
    QProcess probe;
    probe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // The C library's heap checks turn a corruption that would only surface later, perhaps only in
    // the program itself, into a fault of the probe.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("MALLOC_CHECK_"), QStringLiteral("3"));
    environment.insert(QStringLiteral("MALLOC_PERTURB_"), QStringLiteral("165"));
    probe.setProcessEnvironment(environment);
    probe.start(executable,
        scope == Scope::Columns ? QStringList { QStringLiteral("--columns"), path } : QStringList { path });
    if (!probe.waitForStarted())
        return true;
    const auto fail = [failure](const QString& why) {
        if (failure)
            *failure = why;
        return false;
    };
    if (!probe.waitForFinished(settings().timeLimitMs)) {
        probe.kill();
        probe.waitForFinished();
        return fail(QStringLiteral("reading the file did not finish in time"));
    }
    // A fault may also end the probe by an exit code of its own, as a sanitizer's report does.
    if (probe.exitStatus() == QProcess::NormalExit && probe.exitCode() == cannotOpenExitCode)
        return fail(QStringLiteral("the file could not be opened"));
    if (probe.exitStatus() == QProcess::CrashExit || probe.exitCode() != 0)
        return fail(QStringLiteral("the file's structure is damaged"));
    return true;
}

int FileProbe::runProbe(const QString& path, Scope scope)
{
    VQDReader reader;
    if (!reader.open(path.toStdString()))
        return cannotOpenExitCode;
    reader.readMetadata();
    reader.featureNames();
    if (scope == Scope::Columns)
        reader.cacheAllFeatures();
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
