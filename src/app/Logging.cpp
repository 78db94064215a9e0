#include "app/Logging.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>
#include <QStringList>
#include <deque>

namespace Tessaly {

namespace {

struct LogState
{
    QMutex mutex;
    std::deque<QString> lines;
    QString filePath;
    QtMessageHandler previousHandler = nullptr;
};

// Never destroyed: Qt and other static destructors may still log while the process ends.
LogState& logState()
{
    static LogState* state = new LogState;
    return *state;
}

QString levelWord(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return QStringLiteral("DEBUG");
    case QtWarningMsg:
        return QStringLiteral("WARN ");
    case QtCriticalMsg:
        return QStringLiteral("ERROR");
    case QtFatalMsg:
        return QStringLiteral("FATAL");
    case QtInfoMsg:
        return QStringLiteral("INFO ");
    }
    return QStringLiteral("?????");
}

QString currentUtcIsoTime()
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
}

// Keeps the newest `keep` log files of `dir`, judged by modification time.
void pruneOldLogs(const QDir& dir, int keep)
{
    const QFileInfoList logs
        = dir.entryInfoList({ QStringLiteral("Tessaly_log_*.txt") }, QDir::Files, QDir::Time);
    for (int i = keep; i < logs.size(); ++i)
        QFile::remove(logs.at(i).absoluteFilePath());
}

} // namespace

void initLogging()
{
    // Logs live in the working directory the program was started from, not beside the executable.
    const QDir dir = QDir::current();
    pruneOldLogs(dir, oldLogFilesKept);
    const QString fileName
        = QStringLiteral("Tessaly_log_%1.txt")
              .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_hhmmss")));

    LogState& state = logState();
    {
        QMutexLocker lock(&state.mutex);
        state.filePath = dir.absoluteFilePath(fileName);
        // A repeated call must not chain the handler to itself, which would recurse forever.
        const QtMessageHandler previous = qInstallMessageHandler(logMessageHandler);
        if (previous != logMessageHandler)
            state.previousHandler = previous;
    }
    qInfo().noquote() << "Tessaly session started" << currentUtcIsoTime();
}

void logMessageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const QString line = QStringLiteral("%1 [%2] %3").arg(currentUtcIsoTime(), levelWord(type), message);

    LogState& state = logState();
    QtMessageHandler previous = nullptr;
    {
        QMutexLocker lock(&state.mutex);
        state.lines.push_back(line);
        while (state.lines.size() > static_cast<size_t>(logRingCapacity))
            state.lines.pop_front();

        // Opened and closed for every line, so that a crash loses nothing already logged. A file that
        // can't be opened is passed over; the line stays in the ring.
        if (!state.filePath.isEmpty()) {
            QFile file(state.filePath);
            if (file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text)) {
                file.write(line.toUtf8());
                file.write("\n");
            }
        }
        previous = state.previousHandler;
    }
    // Outside the lock: the previous handler may itself log, or abort on a fatal message.
    if (previous)
        previous(type, context, message);
}

QString recentLogText()
{
    LogState& state = logState();
    QMutexLocker lock(&state.mutex);
    QString text;
    for (const QString& line : state.lines) {
        text += line;
        text += QLatin1Char('\n');
    }
    return text;
}

QString logFilePath()
{
    LogState& state = logState();
    QMutexLocker lock(&state.mutex);
    return state.filePath;
}

void resetLogging()
{
    LogState& state = logState();
    QMutexLocker lock(&state.mutex);
    // Only our own handler is taken out; one installed after it stays.
    const QtMessageHandler current = qInstallMessageHandler(state.previousHandler);
    if (current != logMessageHandler)
        qInstallMessageHandler(current);
    state.previousHandler = nullptr;
    state.filePath.clear();
    state.lines.clear();
}

} // namespace Tessaly
