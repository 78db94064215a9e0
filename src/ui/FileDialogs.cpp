#include "ui/FileDialogs.h"

#include <QFileDialog>

namespace Tessaly::FileDialogs {

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

QString openFileName(QWidget* parent, const QString& caption, const QString& directory, const QString& filter)
{
    if (currentInterceptor())
        return currentInterceptor()(Kind::Open, caption, directory, filter);
    return QFileDialog::getOpenFileName(parent, caption, directory, filter);
}

QString saveFileName(QWidget* parent, const QString& caption, const QString& directory, const QString& filter)
{
    if (currentInterceptor())
        return currentInterceptor()(Kind::Save, caption, directory, filter);
    return QFileDialog::getSaveFileName(parent, caption, directory, filter);
}

} // namespace Tessaly::FileDialogs
