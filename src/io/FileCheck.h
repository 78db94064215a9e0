#pragma once

#include "io/FileProbe.h"

#include <QObject>
#include <QString>

class QProcess;
class QTimer;

namespace Tessaly {

// One run of the file probe that nobody waits for: the probe runs in its own process, its end (or
// the time limit) is reported by `finished`, and the interface thread goes on meanwhile. A check
// can be cancelled; it then ends at once with the reason FileProbeTexts::cancelled.
class FileCheck : public QObject
{
    Q_OBJECT

public:
    explicit FileCheck(QObject* parent = nullptr);
    ~FileCheck() override;

    // Starts checking `path`, cancelling a check that still runs. A file that can't be HDF5, and any
    // file when there is no probe program, is decided without a probe; `finished` always comes after
    // start has returned.
    void start(const QString& path, FileProbe::Scope scope = FileProbe::Scope::Structure);
    bool isRunning() const { return m_running; }
    QString path() const { return m_path; }
    // Stops the probe; `finished` follows with passed false.
    void cancel();

Q_SIGNALS:
    // `reason` is empty when the file passed, else one of the FileProbeTexts.
    void finished(bool passed, const QString& reason);

private:
    void onProcessFinished();
    void onTimeLimit();
    void finish(const QString& reason);

    QProcess* m_process = nullptr;
    QTimer* m_timer = nullptr;
    QString m_path;
    FileProbe::Scope m_scope = FileProbe::Scope::Structure;
    bool m_running = false;
    bool m_timedOut = false;
    // Tells a verdict meant for an earlier start from the current one.
    int m_generation = 0;
};

} // namespace Tessaly
