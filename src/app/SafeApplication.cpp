#include "app/SafeApplication.h"

#include <H5Cpp.h>
#include <QDebug>
#include <exception>

namespace Tessaly {

SafeApplication::SafeApplication(int& argc, char** argv)
    : QApplication(argc, argv)
{
}

bool SafeApplication::notify(QObject* receiver, QEvent* event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const H5::Exception& e) {
        const QString text = QString::fromStdString(e.getFuncName()) + QStringLiteral(": ")
            + QString::fromStdString(e.getDetailMsg());
        qCritical().noquote() << "Unhandled HDF5 exception:" << text;
        Q_EMIT unhandledException(FailureTexts::hdf5ErrorTitle, text);
    } catch (const std::exception& e) {
        const QString text = QString::fromUtf8(e.what());
        qCritical().noquote() << "Unhandled exception:" << text;
        Q_EMIT unhandledException(FailureTexts::unexpectedErrorTitle, text);
    } catch (...) {
        qCritical().noquote() << "Unhandled non-standard exception";
        Q_EMIT unhandledException(FailureTexts::unexpectedErrorTitle, FailureTexts::unknownErrorMessage);
    }
    return false;
}

} // namespace Tessaly
