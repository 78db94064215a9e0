#include "app/SafeApplication.h"
#include "io/FileProbe.h"
#include "io/Hdf5Filters.h"

#include <H5Cpp.h>
#include <QByteArray>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>

// Widget tests share one application object. It is a SafeApplication, so that tests of the
// exception guard exercise the real notify(). The offscreen platform needs no display.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", QByteArray("offscreen"));
    ::testing::InitGoogleTest(&argc, argv);
    // Settings of the tests live apart from a user's own, and apart from those of test processes
    // that run at the same time.
    QStandardPaths::setTestModeEnabled(true);
    QTemporaryDir settingsFolder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsFolder.path());
    H5::Exception::dontPrint();
    Tessaly::registerHdf5Filters();
    // The program looks for its file probe beside itself; the tests name the one just built.
    Tessaly::FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    Tessaly::SafeApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("Tessaly"));
    app.setApplicationName(QStringLiteral("Tessaly"));
    return RUN_ALL_TESTS();
}
