#pragma once

#include <QApplication>
#include <QString>

namespace Tessaly {

// The application object with the program's one catch-all: whatever a slot or event handler throws
// is caught in notify(), logged, and reported by the unhandledException signal, and the event loop
// goes on. No slot needs a catch-all of its own.
class SafeApplication : public QApplication
{
    Q_OBJECT

public:
    SafeApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;

Q_SIGNALS:
    void unhandledException(const QString& title, const QString& message);
};

} // namespace Tessaly
