#include "ui/MessageBoxes.h"

namespace Tessaly::MessageBoxes {

namespace {
Interceptor& currentInterceptor()
{
    static Interceptor interceptor;
    return interceptor;
}
} // namespace

void setInterceptor(Interceptor interceptor)
{
    currentInterceptor() = std::move(interceptor);
}

void information(QWidget* parent, const QString& title, const QString& text)
{
    if (currentInterceptor())
        currentInterceptor()(Kind::Information, title, text);
    else
        QMessageBox::information(parent, title, text);
}

void warning(QWidget* parent, const QString& title, const QString& text)
{
    if (currentInterceptor())
        currentInterceptor()(Kind::Warning, title, text);
    else
        QMessageBox::warning(parent, title, text);
}

void critical(QWidget* parent, const QString& title, const QString& text)
{
    if (currentInterceptor())
        currentInterceptor()(Kind::Critical, title, text);
    else
        QMessageBox::critical(parent, title, text);
}

QMessageBox::StandardButton question(QWidget* parent, const QString& title, const QString& text,
    QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton)
{
    if (currentInterceptor())
        return currentInterceptor()(Kind::Question, title, text);
    return QMessageBox::question(parent, title, text, buttons, defaultButton);
}

QMessageBox::StandardButton warningQuestion(
    QWidget* parent, const QString& title, const QString& text, QMessageBox::StandardButton defaultButton)
{
    if (currentInterceptor())
        return currentInterceptor()(Kind::Warning, title, text);
    return QMessageBox::warning(parent, title, text, QMessageBox::Yes | QMessageBox::No, defaultButton);
}

} // namespace Tessaly::MessageBoxes
