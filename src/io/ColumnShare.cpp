#include "io/ColumnShare.h"

namespace Tessaly {

namespace {

const QString columnOption = QStringLiteral("--column");
const QString outputOption = QStringLiteral("--output");
const QString noFramesOption = QStringLiteral("--no-frames");

} // namespace

QStringList ColumnShare::options() const
{
    QStringList options { outputOption, output };
    if (!frames)
        options << noFramesOption;
    for (const std::string& column : columns)
        options << columnOption << QString::fromStdString(column);
    return options;
}

bool ColumnShare::parse(QStringList& arguments, ColumnShare& share)
{
    share = ColumnShare();
    // The last argument is the file, whatever it looks like.
    while (arguments.size() > 1 && arguments.first().startsWith(QLatin1String("--"))) {
        const QString option = arguments.takeFirst();
        if (option == noFramesOption) {
            share.frames = false;
            continue;
        }
        if (arguments.size() < 2)
            return false;
        const QString value = arguments.takeFirst();
        if (option == outputOption)
            share.output = value;
        else if (option == columnOption)
            share.columns.push_back(value.toStdString());
        else
            return false;
    }
    return true;
}

} // namespace Tessaly
