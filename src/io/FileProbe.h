#pragma once

#include <QString>
#include <QStringList>

class QProcess;

namespace Tessaly {

struct ColumnShare;

// Why a file is not opened, in a user's words: the second line of the "Failed to open" box and the
// text of the log line.
namespace FileProbeTexts {
inline const QString notHdf5 = QStringLiteral("This is not an HDF5 file.");
// %1 what stood in the way, e.g. "it does not exist".
inline const QString unreadable = QStringLiteral("The file cannot be read: %1.");
inline const QString missing = QStringLiteral("it does not exist");
inline const QString folder = QStringLiteral("it is a folder");
inline const QString noPermission = QStringLiteral("permission denied");
inline const QString cannotOpen
    = QStringLiteral("The file's structure is damaged: the HDF5 library cannot open it.");
// %1 "structure" or "columns".
inline const QString crashed = QStringLiteral("The file is damaged: reading its %1 crashed the file check.");
// %1 "structure" or "columns", %2 the time limit in seconds.
inline const QString timedOut
    = QStringLiteral("Refused by the file check: reading its %1 took longer than %2 s.");
inline const QString cancelled = QStringLiteral("The check of the file was cancelled.");
inline const QString structureScope = QStringLiteral("structure");
inline const QString columnsScope = QStringLiteral("columns");
} // namespace FileProbeTexts

// Damaged files can crash or hang the HDF5 library itself while it parses their structure or
// decodes their data, where no exception handling reaches. A separate probe process reads such a
// file first and takes the fault: before opening, what opening reads (metadata, the lists of
// features and traces, the first and last image, mask and trace); before the columns are cached,
// every column. Only what the probe got through is read by the program itself. FileCheck runs the
// same probe without waiting for it.
//
// The probe program lies beside the executable ("tessaly-probe"). Without it, files are opened
// unprobed, as the one way left to read them.
class FileProbe
{
public:
    enum class Scope { Structure, Columns };

    // True when the probe finished without fault, or when no probe program is there. Otherwise
    // `failure` (if given) says why, as one of the FileProbeTexts. Waits for the probe: for threads
    // other than the interface's.
    static bool check(const QString& path, QString* failure = nullptr, Scope scope = Scope::Structure);

    // Why `path` can't be an HDF5 file that this process may read, found without the library: it is
    // missing, a folder, not readable, or has no HDF5 signature. Empty when nothing stands in the way.
    static QString refusalBeforeProbe(const QString& path);

    // The probe program; by default "tessaly-probe" in the folder of the running executable.
    static void setProgram(const QString& program);
    static QString program();
    // The probe program when it is there to run; empty (after one log line) when it isn't.
    static QString availableProgram();

    // How long a probe may take before the file counts as unreadable.
    static void setTimeLimit(int milliseconds);
    static int timeLimit();

    // Starts the probe of `path` in `process`, with the heap checks on and its error stream kept.
    // `options` go before the path (see runProbe).
    static void start(QProcess& process, const QString& executable, const QString& path, Scope scope,
        const QStringList& options = {});
    // Judges a probe that ended (or was stopped past the time limit, `timedOut`): empty when it got
    // through, else the reason. The probe's own lines reach the log when it failed.
    static QString outcome(QProcess& process, bool timedOut, Scope scope);

    // What the probe program runs: exit code 0 when the file was read through, cannotOpenExitCode
    // when it could not be opened. A crash or a hang never returns.
    static constexpr int cannotOpenExitCode = 3;
    // With a `share`, the probe decodes the share's columns instead of all and hands them over (see
    // ColumnCheck); it reads the frames and traces only when the share says so.
    static int runProbe(const QString& path, Scope scope, const ColumnShare* share = nullptr);
};

} // namespace Tessaly
