#pragma once

#include <QMessageBox>
#include <QString>
#include <functional>

namespace Tessaly {

// Every message box of the main window goes through here, so that a test can answer it instead of a
// person. Without an interceptor the boxes are ordinary modal QMessageBox dialogs.
namespace MessageBoxes {

enum class Kind { Information, Warning, Critical, Question };

// Receives the kind, title and text and returns the button that was "pressed".
using Interceptor
    = std::function<QMessageBox::StandardButton(Kind kind, const QString& title, const QString& text)>;

// Replaces the dialogs by the interceptor; an empty function restores the dialogs.
void setInterceptor(Interceptor interceptor);

void information(QWidget* parent, const QString& title, const QString& text);
void warning(QWidget* parent, const QString& title, const QString& text);
void critical(QWidget* parent, const QString& title, const QString& text);
QMessageBox::StandardButton question(QWidget* parent, const QString& title, const QString& text,
    QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton);

// A yes/no question that warns of a consequence: shown with the warning icon, intercepted as a
// warning whose answer is the interceptor's.
QMessageBox::StandardButton warningQuestion(
    QWidget* parent, const QString& title, const QString& text, QMessageBox::StandardButton defaultButton);

} // namespace MessageBoxes

} // namespace Tessaly
