#include "MainWindowFixture.h"
#include "io/Hdf5Mutex.h"
#include "plot/ImageViewer.h"
#include "plot/ScatterPlot.h"
#include "ui/FilterDockWidget.h"
#include "ui/MenuPlaceholders.h"
#include "ui/StartPanel.h"

#include <QAction>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextDocument>
#include <qwt_plot_curve.h>
#include <qwt_scale_div.h>

using namespace Tessaly;
using Tessaly::Testing::MainWindowFixture;

namespace {

// Whether a label draws its text as markup: set so, or left to guess and the text looks like it.
bool drawsMarkup(const QLabel* label)
{
    return label->textFormat() == Qt::RichText
        || (label->textFormat() == Qt::AutoText && Qt::mightBeRichText(label->text()));
}

QString shownText(const QString& html)
{
    QTextDocument document;
    document.setHtml(html);
    return document.toPlainText();
}

QAction* findAction(const QWidget* window, const QString& text)
{
    for (QAction* action : window->findChildren<QAction*>()) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

} // namespace

using MainWindowFirstUse = MainWindowFixture;

// A dataset name is what the user typed, wherever it appears.
TEST_F(MainWindowFirstUse, DatasetNamesAreTextNeverMarkup)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("one.vqd"));
    ASSERT_TRUE(waitUntilIdle());
    const QString name = QStringLiteral("<b>Bold</b> & <i>co</i>");
    auto* rename = w.findChild<QLineEdit*>("renameEdit");
    rename->setText(name);
    emit rename->editingFinished();

    auto* status = w.findChild<QLabel*>("statusLabel");
    EXPECT_TRUE(status->text().contains(name));
    EXPECT_FALSE(drawsMarkup(status));
    // The list draws its rows as rich text: the name must come out as typed.
    const auto* list = w.findChild<QListWidget*>("datasetList");
    EXPECT_TRUE(shownText(list->item(0)->text()).startsWith(name)) << list->item(0)->text().toStdString();
}

// After "Clear Session", and while a dataset loads, the plot shows nothing of the one before.
TEST_F(MainWindowFirstUse, AnEmptyPlotHasNoOldAxes)
{
    MainWindow& w = makeWindow();
    auto* plot = w.findChild<ScatterPlot*>("scatterPlot");
    w.openDataset(writeDataset("one.vqd", "One", 200));
    ASSERT_TRUE(waitUntilIdle());
    ASSERT_FALSE(plot->axisTitle(QwtPlot::xBottom).text().isEmpty());

    // The second file is still loading when it becomes the active one: the reader lock, held here
    // on the interface thread, keeps its preload from ending.
    std::unique_lock<std::recursive_mutex> holdPreload(hdf5Mutex());
    w.openDataset(writeDataset("two.vqd", "Two", 200));
    QTRY_VERIFY_WITH_TIMEOUT(w.datasets().size() == 2, 20000);
    ASSERT_TRUE(w.isPreloadRunning());
    EXPECT_TRUE(plot->axisTitle(QwtPlot::xBottom).text().isEmpty());
    EXPECT_TRUE(plot->axisTitle(QwtPlot::yLeft).text().isEmpty());
    EXPECT_TRUE(plot->xValues().empty());
    holdPreload.unlock();
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_FALSE(plot->axisTitle(QwtPlot::xBottom).text().isEmpty());

    answer = QMessageBox::Ok;
    w.clearSession();
    EXPECT_TRUE(plot->axisTitle(QwtPlot::xBottom).text().isEmpty());
    EXPECT_TRUE(plot->axisTitle(QwtPlot::yLeft).text().isEmpty());
    EXPECT_EQ(plot->axisScaleDiv(QwtPlot::xBottom).upperBound(), 1.0);
}

// A file of scalar features only: a click on a point still shows the event's values.
TEST_F(MainWindowFirstUse, FileWithoutImagesShowsTheClickedEventsValues)
{
    MainWindow& w = makeWindow();
    w.openDataset(writeDataset("scalars.vqd", "Scalars", 150, false));
    ASSERT_TRUE(waitUntilIdle());
    auto* tabs = w.findChild<QTabWidget*>();
    auto* table = w.findChild<QTableWidget*>("eventTable");
    EXPECT_EQ(tabs->currentWidget(), table);
    EXPECT_EQ(w.findChild<ImageViewer*>()->findChild<QLabel*>("infoLabel")->text(), "No image in this file");

    w.onPointClicked(7);
    const int event = w.plottedEvents().empty() ? 7 : w.plottedEvents()[7];
    EXPECT_EQ(w.findChild<QSpinBox*>("eventSpinBox")->value(), event);
    EXPECT_TRUE(w.findChild<ScatterPlot*>("scatterPlot")->highlight()->isVisible());
    ASSERT_GT(table->rowCount(), 5);
    bool found = false;
    for (int row = 0; row < table->rowCount(); ++row) {
        if (table->item(row, 0)->data(Qt::UserRole).toString() == "index") {
            // "index" counts from 1.
            EXPECT_EQ(table->item(row, 1)->text(), QString::number(event + 1));
            found = true;
        }
    }
    EXPECT_TRUE(found);
}

// An entry nothing is connected to is disabled; working entries, submenus and separators stay.
TEST(MenuPlaceholders, OnlyEntriesWithoutReceiversAreDisabled)
{
    QMenuBar bar;
    QMenu* file = bar.addMenu("File");
    QAction* open = file->addAction("Open");
    QObject::connect(open, &QAction::triggered, [] {});
    QAction* inert = file->addAction("Save");
    QAction* separator = file->addSeparator();
    QAction* toggle = file->addAction("Check");
    toggle->setCheckable(true);
    QObject::connect(toggle, &QAction::toggled, [](bool) {});
    QMenu* sub = file->addMenu("More");
    QAction* deep = sub->addAction("Deep");
    QAction* grouped = sub->addAction("Grouped");
    auto* group = new QActionGroup(&bar);
    group->addAction(grouped);
    QObject::connect(group, &QActionGroup::triggered, [](QAction*) {});

    disableUnconnectedEntries(&bar);
    EXPECT_TRUE(open->isEnabled());
    EXPECT_FALSE(inert->isEnabled());
    EXPECT_TRUE(separator->isEnabled());
    EXPECT_TRUE(toggle->isEnabled());
    EXPECT_TRUE(sub->menuAction()->isEnabled());
    EXPECT_FALSE(deep->isEnabled());
    EXPECT_TRUE(grouped->isEnabled());
}

// The entries that work in the main window stay on offer.
TEST_F(MainWindowFirstUse, WorkingMenuEntriesStayEnabled)
{
    MainWindow& w = makeWindow();
    for (const char* text : { "&Open...", "&Clear Session", "E&xit", "Viridis", "Grayscale",
             "Check for Updates on Startup", "Datasets", "Metadata" }) {
        QAction* action = findAction(&w, QString::fromUtf8(text));
        ASSERT_NE(action, nullptr) << text;
        EXPECT_TRUE(action->isEnabled()) << text;
    }
    // An entry of a feature that isn't there yet says so by being disabled.
    QAction* about = findAction(&w, QStringLiteral("&About"));
    ASSERT_NE(about, nullptr);
    EXPECT_FALSE(about->isEnabled());
}

// The example folder is found beside the program's folder or inside it, and only with datasets in it.
TEST(StartPanel, FindsTheExampleFolderWithDatasets)
{
    QTemporaryDir root;
    QDir(root.path()).mkpath("build/src");
    QDir(root.path()).mkpath("build/examples");
    const QString program = root.filePath("build/src");
    EXPECT_TRUE(findExampleFolder(program).isEmpty());

    QFile(root.filePath("build/examples/notes.txt")).open(QIODevice::WriteOnly);
    EXPECT_TRUE(findExampleFolder(program).isEmpty());
    for (const char* name : { "build/examples/treated.vqd", "build/examples/control.vqd" })
        QFile(root.filePath(name)).open(QIODevice::WriteOnly);
    EXPECT_EQ(findExampleFolder(program), QDir(root.filePath("build/examples")).absolutePath());
    EXPECT_EQ(exampleFiles(findExampleFolder(program)),
        (QStringList {
            root.filePath("build/examples/control.vqd"), root.filePath("build/examples/treated.vqd") }));

    QDir(root.path()).mkpath("app/examples");
    QFile(root.filePath("app/examples/a.vqd")).open(QIODevice::WriteOnly);
    EXPECT_EQ(findExampleFolder(root.filePath("app")), QDir(root.filePath("app/examples")).absolutePath());
}

// With no dataset the plot offers the examples; opening them hides the offer until the session is
// empty again.
TEST_F(MainWindowFirstUse, StartPanelOpensTheExamples)
{
    MainWindow& w = makeWindow();
    w.resize(1200, 800);
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
    auto* panel = w.findChild<StartPanel*>();
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->isVisible());
    auto* button = panel->findChild<QPushButton*>("openExamplesButton");

    panel->setExampleFolder(QString());
    EXPECT_FALSE(button->isVisible());
    writeDataset("examples/b.vqd", "Treated");
    writeDataset("examples/a.vqd", "Control");
    panel->setExampleFolder(folder.filePath("examples"));
    ASSERT_TRUE(button->isVisible());
    // The panel lies on the plot, whole.
    EXPECT_TRUE(panel->parentWidget()->rect().contains(panel->geometry()));

    QTest::mouseClick(button, Qt::LeftButton);
    ASSERT_TRUE(waitUntilIdle());
    EXPECT_EQ(datasetPaths(),
        (std::vector<std::string> { folder.filePath("examples/a.vqd").toStdString(),
            folder.filePath("examples/b.vqd").toStdString() }));
    EXPECT_FALSE(panel->isVisible());

    answer = QMessageBox::Ok;
    w.clearSession();
    EXPECT_TRUE(panel->isVisible());
}
