#pragma once

#include <QString>
#include <functional>

class QWidget;

namespace Tessaly {

// The file dialogs of the main window go through here, so that a test can choose the file instead of
// a person. Without an interceptor they are the ordinary QFileDialog ones.
namespace FileDialogs {

enum class Kind { Open, Save };

// Receives the kind, caption, start folder and filter; returns the chosen path, empty for cancel.
using Interceptor = std::function<QString(
    Kind kind, const QString& caption, const QString& directory, const QString& filter)>;

void setInterceptor(Interceptor interceptor);

QString openFileName(
    QWidget* parent, const QString& caption, const QString& directory, const QString& filter);
QString saveFileName(
    QWidget* parent, const QString& caption, const QString& directory, const QString& filter);

} // namespace FileDialogs

} // namespace Tessaly
