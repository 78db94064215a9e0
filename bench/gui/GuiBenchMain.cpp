#include "app/SafeApplication.h"
#include "io/FileProbe.h"
#include "io/Hdf5Filters.h"
#include "ui/MessageBoxes.h"

#include <H5Cpp.h>
#include <QStandardPaths>
#include <benchmark/benchmark.h>

// Widget benchmarks run in one application object on the offscreen platform; message boxes are
// answered at once so that nothing waits for a person.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", QByteArray("offscreen"));
    QStandardPaths::setTestModeEnabled(true);
    H5::Exception::dontPrint();
    Tessaly::registerHdf5Filters();
    Tessaly::FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    Tessaly::SafeApplication app(argc, argv);
    Tessaly::MessageBoxes::setInterceptor(
        [](Tessaly::MessageBoxes::Kind, const QString&, const QString&) { return QMessageBox::Ok; });
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
