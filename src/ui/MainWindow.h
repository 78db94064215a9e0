#pragma once

#include <QMainWindow>
#include <QString>

namespace Tessaly {

// Texts of the main window, in one place.
namespace MainWindowTexts {
inline const QString windowTitle = QStringLiteral("Tessaly - VQD Data Analysis");
inline const QString emptyPlaceholder = QStringLiteral("Drop measurement files here");
// %1 is the message of the failure.
inline const QString unexpectedErrorText = QStringLiteral(
    "An unexpected error occurred:\n\n%1\n\nYou can send a diagnostic report to help us fix this.");
inline const QString sendFeedbackButton = QStringLiteral("Send Feedback...");
inline const QString closeButton = QStringLiteral("Close");
} // namespace MainWindowTexts

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);

public Q_SLOTS:
    // Shows a failure that escaped an event handler, with the offer of a feedback report. Reports
    // that arrive while such a dialog is open are dropped, so that a repeating fault can't stack
    // dialogs.
    void onUnhandledException(const QString& title, const QString& message);

private:
    bool exceptionDialogOpen = false;
};

} // namespace Tessaly
