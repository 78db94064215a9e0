// The probe program: reads a measurement file the way opening it does, in a process of its own,
// so that a file that crashes or hangs the HDF5 library costs only this process.
#include "io/ColumnShare.h"
#include "io/FileProbe.h"
#include "io/Hdf5Filters.h"

#include <H5Cpp.h>
#include <QCoreApplication>
#include <QStringList>

int main(int argc, char** argv)
{
    H5::Exception::dontPrint();
    Tessaly::registerHdf5Filters();
    QCoreApplication app(argc, argv);
    // Arguments: [--columns [share options]] path. Without share options the probe reads every
    // column and keeps nothing; with them, the share's columns, which it hands over.
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const bool columns = !arguments.isEmpty() && arguments.first() == QLatin1String("--columns");
    if (columns)
        arguments.removeFirst();
    Tessaly::ColumnShare share;
    const bool shared = columns && arguments.size() > 1;
    if (shared && !Tessaly::ColumnShare::parse(arguments, share))
        return 2;
    if (arguments.size() != 1)
        return 2;
    return Tessaly::FileProbe::runProbe(arguments.first(),
        columns ? Tessaly::FileProbe::Scope::Columns : Tessaly::FileProbe::Scope::Structure,
        shared ? &share : nullptr);
}
