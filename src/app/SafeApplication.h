#pragma once

#include <QApplication>
#include <QString>

namespace Tessaly {

// Titles and texts of the failure reports, in one place.
namespace FailureTexts {
inline const QString hdf5ErrorTitle = QStringLiteral("File / Data Error");
inline const QString unexpectedErrorTitle = QStringLiteral("Unexpected Error");
inline const QString unknownErrorMessage = QStringLiteral("An unknown error occurred.");
} // namespace FailureTexts

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
