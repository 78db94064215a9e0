#include "MainWindowFixture.h"
#include "ui/MainWindow.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QDockWidget>
#include <QLabel>
#include <QMenuBar>
#include <QSettings>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTabWidget>

using namespace Tessaly;
using Tessaly::Testing::MainWindowFixture;

namespace {

QAction* checkedColorMap(MainWindow& window)
{
    for (QAction* action : window.findChildren<QAction*>()) {
        if (action->isCheckable() && action->isChecked()
            && MainWindowTexts::colorMapNames.contains(action->text()))
            return action;
    }
    return nullptr;
}

QStringList menuTitles(const QMenuBar* bar)
{
    QStringList titles;
    for (const QAction* action : bar->actions())
        titles << action->text();
    return titles;
}

} // namespace

using MainWindowShell = MainWindowFixture;

TEST_F(MainWindowShell, StartsEmptyWithItsDocksAndMenus)
{
    MainWindow& w = makeWindow();
    EXPECT_EQ(w.windowTitle(), "Tessaly - VQD Data Analysis");
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text(),
        "No file loaded. Drag and drop a .vqd file or use File > Open.");
    EXPECT_FALSE(w.findChild<QWidget*>("renameEdit")->isEnabled());
    EXPECT_EQ(w.findChild<QSpinBox*>("eventSpinBox")->maximum(), 0);
    EXPECT_EQ(menuTitles(w.menuBar()),
        (QStringList { "&File", "&Export", "&View", "&Tool Windows", "&Settings", "&Help" }));

    // "Filters", "Calculations" and "Metadata" share a tab place, with "Filters" on top.
    auto* filters = w.findChild<QDockWidget*>("Filters");
    ASSERT_NE(filters, nullptr);
    const QList<QDockWidget*> tabbed = w.tabifiedDockWidgets(filters);
    QStringList tabbedTitles;
    for (const QDockWidget* dock : tabbed)
        tabbedTitles << dock->windowTitle();
    tabbedTitles.sort();
    EXPECT_EQ(tabbedTitles, (QStringList { "Calculations", "Metadata" }));
    EXPECT_EQ(w.dockWidgetArea(w.findChild<QDockWidget*>("Datasets")), Qt::LeftDockWidgetArea);
    EXPECT_EQ(w.dockWidgetArea(w.findChild<QDockWidget*>("Plot Statistics")), Qt::RightDockWidgetArea);
    EXPECT_EQ(filters->maximumWidth(), 500);
    EXPECT_FALSE(filters->features() & QDockWidget::DockWidgetFloatable);

    // The View menu toggles the docks in a fixed order.
    QMenu* view = nullptr;
    for (QAction* action : w.menuBar()->actions()) {
        if (action->text() == "&View")
            view = action->menu();
    }
    ASSERT_NE(view, nullptr);
    QStringList toggles;
    for (const QAction* action : view->actions())
        toggles << action->text();
    EXPECT_EQ(
        toggles, (QStringList { "Datasets", "Filters", "Calculations", "Metadata", "Plot Statistics" }));
}

TEST_F(MainWindowShell, StoredSettingsAreClampedOnReading)
{
    QSettings().setValue(SettingsKeys::datasetViewDepth, 9);
    QSettings().setValue(SettingsKeys::colorMapIndex, 17);
    {
        MainWindow& w = makeWindow();
        EXPECT_EQ(w.datasetFolderDepth(), 4);
        EXPECT_EQ(w.colorMapIndex(), 0);
        ASSERT_NE(checkedColorMap(w), nullptr);
        EXPECT_EQ(checkedColorMap(w)->text(), "Viridis");
        // List mode: the depth control is hidden.
        EXPECT_FALSE(w.findChild<QSpinBox*>("depthSpinBox")->isVisibleTo(&w));
        EXPECT_FALSE(w.datasetFolderViewActive());
    }
    QSettings().setValue(SettingsKeys::datasetViewDepth, 0);
    QSettings().setValue(SettingsKeys::datasetViewMode, 1);
    QSettings().setValue(SettingsKeys::colorMapIndex, 3);
    MainWindow& w = makeWindow();
    EXPECT_EQ(w.datasetFolderDepth(), 1);
    EXPECT_TRUE(w.datasetFolderViewActive());
    EXPECT_TRUE(w.findChild<QSpinBox*>("depthSpinBox")->isVisibleTo(&w));
    EXPECT_EQ(checkedColorMap(w)->text(), "Plasma");
}

TEST_F(MainWindowShell, ChoicesAreStoredAtOnce)
{
    MainWindow& w = makeWindow();
    for (QAction* action : w.findChildren<QAction*>()) {
        if (action->text() == "Quorin")
            action->trigger();
    }
    EXPECT_EQ(w.colorMapIndex(), 4);
    EXPECT_EQ(QSettings().value(SettingsKeys::colorMapIndex).toInt(), 4);

    w.findChild<QComboBox*>("datasetViewModeCombo")->setCurrentIndex(1);
    EXPECT_EQ(QSettings().value(SettingsKeys::datasetViewMode).toInt(), 1);
    EXPECT_TRUE(w.findChild<QSpinBox*>("depthSpinBox")->isVisibleTo(&w));
    w.findChild<QSpinBox*>("depthSpinBox")->setValue(3);
    EXPECT_EQ(QSettings().value(SettingsKeys::datasetViewDepth).toInt(), 3);
}

TEST_F(MainWindowShell, ClearSessionAsksOnlyWhenThereIsSomethingToClear)
{
    MainWindow& w = makeWindow();
    w.clearSession();
    EXPECT_TRUE(messages.empty());

    w.openDataset(writeDataset("one.vqd"));
    ASSERT_TRUE(waitUntilIdle());
    const int firstId = w.datasets().front()->id;

    answer = QMessageBox::Cancel;
    w.clearSession();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].title, "Clear Session");
    EXPECT_EQ(w.datasets().size(), 1u);

    answer = QMessageBox::Ok;
    w.clearSession();
    EXPECT_TRUE(w.datasets().empty());
    EXPECT_EQ(w.findChild<QLabel*>("statusLabel")->text(), "No file loaded.");
    EXPECT_FALSE(w.findChild<QWidget*>("eventSpinBox")->isEnabled());

    // Ids are never reused, not even after the session was cleared.
    w.openDataset(writeDataset("two.vqd"));
    ASSERT_TRUE(waitUntilIdle());
    ASSERT_EQ(w.datasets().size(), 1u);
    EXPECT_GT(w.datasets().front()->id, firstId);
}

TEST_F(MainWindowShell, ClearSessionDuringAPreloadWaitsForIt)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("big.vqd", "Big", 20000));
    w.openDataset(writeDataset("queued.vqd"));
    w.clearSession();
    EXPECT_TRUE(w.datasets().empty());
    EXPECT_FALSE(w.isPreloadRunning());
    // The queued file was dropped with the session: the end of the old task opens nothing.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    EXPECT_TRUE(w.datasets().empty());
}
