#include "app/Logging.h"
#include "app/SafeApplication.h"
#include "app/Theme.h"
#include "io/ColumnCheck.h"
#include "io/Hdf5Filters.h"
#include "ui/MainWindow.h"

#include <H5Cpp.h>
#include <QIcon>
#include <QPalette>
#include <QPixmap>
#include <QSplashScreen>
#include <QTimer>

int main(int argc, char** argv)
{
    // HDF5 failures are then seen only as exceptions, never as error stacks on the console.
    H5::Exception::dontPrint();
    // Compressed measurement files must read from the first file on.
    Tessaly::registerHdf5Filters();
    Tessaly::initLogging();
    Tessaly::ColumnCheck::removeLeftOverHandovers(
        Tessaly::ColumnCheck::handoverFolder(), QDateTime::currentDateTime().addSecs(-3600));

    Tessaly::SafeApplication app(argc, argv);
    // The organization name places the settings; no domain is set.
    app.setApplicationName(QStringLiteral("Tessaly"));
    app.setApplicationVersion(QStringLiteral("3.1.93"));
    app.setOrganizationName(QStringLiteral("Tessaly"));
    app.setWindowIcon(QIcon(QStringLiteral(":/Logo_Orvane_rgb_randlos_keinText.png")));

    app.setStyle(QStringLiteral("Fusion"));
    const QPalette palette = Tessaly::applicationPalette();
    app.setPalette(palette);
    app.setStyleSheet(Tessaly::applicationStyleSheet());

    const QPixmap logo(QStringLiteral(":/Logo_Orvane_rgb_randlos.png"));
    QSplashScreen splash(logo);
    splash.show();
    app.processEvents();

    // Declared last, so that it goes first on the way out: main window, splash, pixmap, palette,
    // then the application object.
    Tessaly::MainWindow window;
    // Queued, so that the dialog does not open inside the delivery of the event that failed.
    QObject::connect(&app, &Tessaly::SafeApplication::unhandledException, &window,
        &Tessaly::MainWindow::onUnhandledException, Qt::QueuedConnection);

    // Counted from the end of the main window's construction: the splash stays at least this long.
    QTimer::singleShot(1500, &window, [&splash, &window] {
        splash.close();
        window.show();
    });

    return app.exec();
}
