#pragma once

#include <QString>

namespace Tessaly {

// Damaged files can crash or hang the HDF5 library itself while it parses their structure or
// decodes their data, where no exception handling reaches. A separate probe process reads such a
// file first and takes the fault: before opening, what opening reads (metadata, the lists of
// features and traces, the first and last image, mask and trace); before the columns are cached,
// every column. Only what the probe got through is read by the program itself.
//
// The probe program lies beside the executable ("tessaly-probe"). Without it, files are opened
// unprobed, as the one way left to read them.
class FileProbe
{
public:
    // True when the probe finished without fault, or when no probe program is there. Otherwise
    // `failure` (if given) says what happened: a crash, a hang past the time limit, or an error.
    enum class Scope { Structure, Columns };
    static bool check(const QString& path, QString* failure = nullptr, Scope scope = Scope::Structure);

    // The probe program; by default "tessaly-probe" in the folder of the running executable.
    static void setProgram(const QString& program);
    static QString program();

    // How long a probe may take before the file counts as unreadable.
    static void setTimeLimit(int milliseconds);

    // What the probe program runs: exit code 0 when the file was read through, cannotOpenExitCode
    // when it could not be opened. A crash or a hang never returns.
    static constexpr int cannotOpenExitCode = 3;
    static int runProbe(const QString& path, Scope scope);
};

} // namespace Tessaly
