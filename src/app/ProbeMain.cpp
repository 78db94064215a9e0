// The probe program: reads a measurement file the way opening it does, in a process of its own,
// so that a file that crashes or hangs the HDF5 library costs only this process.
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
    // Arguments: [--columns [--part K/N] [--output FILE]] path
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const bool columns = !arguments.isEmpty() && arguments.first() == QLatin1String("--columns");
    if (columns)
        arguments.removeFirst();
    Tessaly::ColumnShare share;
    if (columns && !Tessaly::FileProbe::parseShareOptions(arguments, share))
        return 2;
    if (arguments.size() != 1)
        return 2;
    return Tessaly::FileProbe::runProbe(arguments.first(),
        columns ? Tessaly::FileProbe::Scope::Columns : Tessaly::FileProbe::Scope::Structure, share);
}
