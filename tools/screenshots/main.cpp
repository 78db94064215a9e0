// Shows the main window on the offscreen platform with the given measurement files at a few window
// sizes, saves a picture of each, and prints where the plot and its neighbours landed. For looking at
// layout changes without a display (SHOTS_DEBUG=1 also lists the size hints of the visible widgets;
// SHOTS_DENSITY=1 colours the points by density, with its colour bar, and draws contours):
//
//     build/tools/tessaly-screenshots /tmp/shots build/examples/*.vqd
#include "app/Theme.h"
#include "io/FileProbe.h"
#include "io/Hdf5Filters.h"
#include "plot/ScatterPlot.h"
#include "ui/MainWindow.h"

#include <H5Cpp.h>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QSplitter>
#include <QTabWidget>
#include <QTest>
#include <cstdio>
#include <qwt_plot_canvas.h>

using namespace Tessaly;

namespace {

void report(const char* name, const QWidget* widget)
{
    if (!widget || !widget->isVisible()) {
        std::printf("  %-16s hidden\n", name);
        return;
    }
    std::printf("  %-16s %4d x %-4d\n", name, widget->width(), widget->height());
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", QByteArray("offscreen"));
    H5::Exception::dontPrint();
    registerHdf5Filters();
    FileProbe::setProgram(QStringLiteral(TESSALY_PROBE));
    QApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("Tessaly-screenshots"));
    app.setApplicationName(QStringLiteral("Tessaly-screenshots"));
    app.setStyle(QStringLiteral("Fusion"));
    app.setPalette(applicationPalette());
    app.setStyleSheet(applicationStyleSheet());

    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty()) {
        std::fprintf(stderr, "usage: tessaly-screenshots OUTDIR [FILE.vqd ...]\n");
        return 2;
    }
    const QDir out(args.first());
    QDir().mkpath(out.path());

    MainWindow window;
    window.show();
    for (const QString& file : args.mid(1))
        window.openDataset(file);
    // A file is checked in a process of its own before it is opened and loaded.
    const auto files = static_cast<std::size_t>(args.size() - 1);
    if (!QTest::qWaitFor(
            [&] {
                return window.datasets().size() >= files && !window.isCheckingFile()
                    && !window.isPreloadRunning();
            },
            60000))
        std::fprintf(stderr, "the files were still loading after a minute\n");
    QTest::qWait(200);

    std::printf(
        "minimum size hint %d x %d\n", window.minimumSizeHint().width(), window.minimumSizeHint().height());
    const QSize sizes[] = { { 1400, 900 }, { 1024, 700 } };
    for (const QSize& size : sizes) {
        window.resize(size);
        // Set at each size: a file that finishes loading late shows its own settings.
        if (qEnvironmentVariableIsSet("SHOTS_DENSITY")) {
            if (auto* color = window.findChild<QComboBox*>(QStringLiteral("colorFeatureCombo")))
                color->setCurrentIndex(color->findData(QStringLiteral("__density_kde__")));
            if (auto* contours = window.findChild<QComboBox*>(QStringLiteral("contourCombo")))
                contours->setCurrentIndex(1);
        }
        QTest::qWait(300);
        const auto* plot = window.findChild<ScatterPlot*>(QStringLiteral("scatterPlot"));
        std::printf("window %d x %d (actual %d x %d)\n", size.width(), size.height(), window.width(),
            window.height());
        report("central", window.centralWidget());
        report("plot", plot);
        report("canvas", plot ? plot->canvas() : nullptr);
        report("event tabs", window.findChild<QTabWidget*>());
        report("Datasets", window.findChild<QDockWidget*>(QStringLiteral("Datasets")));
        report("Filters", window.findChild<QDockWidget*>(QStringLiteral("Filters")));
        if (qEnvironmentVariableIsSet("SHOTS_DEBUG")) {
            for (QWidget* w : window.findChildren<QWidget*>()) {
                if (!w->isVisible() || w->width() < 100)
                    continue;
                std::printf("    %-30s %-25s geo %4d,%4d %4dx%-4d min %4dx%-4d hint %4dx%-4d\n",
                    w->metaObject()->className(), qPrintable(w->objectName()), w->x(), w->y(), w->width(),
                    w->height(), w->minimumSizeHint().width(), w->minimumSizeHint().height(),
                    w->sizeHint().width(), w->sizeHint().height());
            }
        }
        const QString name = QStringLiteral("main-%1x%2.png").arg(size.width()).arg(size.height());
        window.grab().save(out.filePath(name));
        if (auto* stats = window.findChild<QDockWidget*>(QStringLiteral("Plot Statistics")))
            stats->grab().save(
                out.filePath(QStringLiteral("statistics-%1x%2.png").arg(size.width()).arg(size.height())));
        for (QDockWidget* dock : window.findChildren<QDockWidget*>()) {
            if (dock->objectName() != QLatin1String("Metadata"))
                continue;
            dock->show();
            dock->raise();
            QTest::qWait(200);
            window.grab().save(
                out.filePath(QStringLiteral("metadata-%1x%2.png").arg(size.width()).arg(size.height())));
            window.findChild<QDockWidget*>(QStringLiteral("Filters"))->raise();
        }
    }
    return 0;
}
