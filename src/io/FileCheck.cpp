#include "io/FileCheck.h"

#include <QProcess>
#include <QTimer>

namespace Tessaly {

FileCheck::FileCheck(QObject* parent)
    : QObject(parent)
    , m_timer(new QTimer(this))
{
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &FileCheck::onTimeLimit);
}

FileCheck::~FileCheck()
{
    // A probe still running is of no use to anyone now.
    if (m_process) {
        m_process->disconnect(this);
        m_process->kill();
        m_process->waitForFinished(1000);
    }
}

void FileCheck::start(const QString& path, FileProbe::Scope scope)
{
    if (m_running)
        cancel();
    m_path = path;
    m_scope = scope;
    m_timedOut = false;
    m_running = true;
    const QString refusal = FileProbe::refusalBeforeProbe(path);
    const QString executable = refusal.isEmpty() ? FileProbe::availableProgram() : QString();
    const int generation = ++m_generation;
    if (!refusal.isEmpty() || executable.isEmpty()) {
        // Reported like a probe's verdict, after start has returned, so that callers have one way
        // of going on.
        QMetaObject::invokeMethod(
            this,
            [this, refusal, generation] {
                if (m_running && m_generation == generation)
                    finish(refusal);
            },
            Qt::QueuedConnection);
        return;
    }
    m_process = new QProcess(this);
    connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
        &FileCheck::onProcessFinished);
    // A probe that can't even start is no verdict on the file: it is then opened unprobed.
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finish(QString());
    });
    FileProbe::start(*m_process, executable, path, scope);
    if (m_running)
        m_timer->start(FileProbe::timeLimit());
}

void FileCheck::cancel()
{
    if (m_running)
        finish(FileProbeTexts::cancelled);
}

void FileCheck::onProcessFinished()
{
    if (m_running)
        finish(FileProbe::outcome(*m_process, m_timedOut, m_scope));
}

void FileCheck::onTimeLimit()
{
    if (!m_running || !m_process)
        return;
    m_timedOut = true;
    // The end of the killed process reports the outcome.
    m_process->kill();
}

void FileCheck::finish(const QString& reason)
{
    m_timer->stop();
    m_running = false;
    if (QProcess* process = m_process) {
        m_process = nullptr;
        process->disconnect(this);
        if (process->state() != QProcess::NotRunning) {
            process->kill();
            // Reaped by the process object; deleted once it has ended.
            connect(process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), process,
                &QObject::deleteLater);
        } else {
            process->deleteLater();
        }
    }
    emit finished(reason.isEmpty(), reason);
}

} // namespace Tessaly
