#pragma once

#include <QString>
#include <QtGlobal>

namespace Tessaly {

// The program's log: every Qt message becomes one line "<UTC ISO time> [<LEVEL>] <message>", kept in
// a ring of the newest lines (for the feedback report) and appended to this run's log file in the
// working directory. The handler that was installed before ours still receives every message.

// Most lines the ring keeps; older ones are dropped first.
constexpr int logRingCapacity = 2000;
// Old log files kept at start-up; with the new one a run leaves at most one more than this.
constexpr int oldLogFilesKept = 10;

// Prunes old log files in the current working directory, chooses this run's file name, installs
// logMessageHandler and logs the start of the session. Meant to run once, before the application
// object exists; a second call keeps the handler chain intact.
void initLogging();

// The installed Qt message handler. Safe to call from any thread.
void logMessageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message);

// Every line of the ring, oldest first, each followed by a newline.
QString recentLogText();

// Absolute path of this run's log file; empty until initLogging has run.
QString logFilePath();

// Puts the log back to its state before initLogging: restores the previous message handler,
// forgets the log file and empties the ring. For tests that need a fresh log.
void resetLogging();

} // namespace Tessaly
