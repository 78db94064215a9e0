#include "ui/MainWindow.h"

#include "calc/EModulus.h"
#include "core/DatasetEntry.h"
#include "core/EffectiveFilter.h"
#include "plot/ScatterPlot.h"
#include "ui/DatasetListWidget.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QComboBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QSplitter>
#include <QStackedWidget>
#include <algorithm>

namespace Tessaly {

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
{
    preloadWatcher = new QFutureWatcher<void>(this);
    calculationWatcher = new QFutureWatcher<void>(this);
    emodulusEngine = new EModulus(this);

    createDocks();
    setCentralWidget(createCentralPanel());
    createMenus();
    connectSignals();
    createCalculationEngines();

    setWindowTitle(MainWindowTexts::windowTitle);
    resize(1400, 900);
    setAcceptDrops(true);
    updateApplyPlotButton();
    setupFirstStart();
}

MainWindow::~MainWindow()
{
    // The dataset list empties itself while the child widgets are deleted, after this object has
    // stopped being a MainWindow: its change signals must no longer reach the start panel.
    if (datasetListWidget)
        datasetListWidget->model()->disconnect(this);
    waitForCalculation();
    // The reader of a dataset whose preload still runs stays alive with the task's own reference.
    for (DatasetEntry* entry : datasetList)
        delete entry;
    for (FilterGroup* group : groups)
        delete group;
}

int MainWindow::activeDatasetId() const
{
    const DatasetEntry* entry = activeEntry();
    return entry ? entry->id : -1;
}

DatasetEntry* MainWindow::activeEntry() const
{
    if (activeDatasetIndex < 0 || activeDatasetIndex >= static_cast<int>(datasetList.size()))
        return nullptr;
    return datasetList[static_cast<std::size_t>(activeDatasetIndex)];
}

DatasetEntry* MainWindow::findDatasetById(int id) const
{
    const auto it = std::find_if(
        datasetList.begin(), datasetList.end(), [id](const DatasetEntry* entry) { return entry->id == id; });
    return it == datasetList.end() ? nullptr : *it;
}

DatasetEntry* MainWindow::findDatasetByPath(const std::string& filePath) const
{
    const auto it = std::find_if(datasetList.begin(), datasetList.end(),
        [&filePath](const DatasetEntry* entry) { return entry->filePath == filePath; });
    return it == datasetList.end() ? nullptr : *it;
}

bool MainWindow::datasetFolderViewActive() const
{
    return datasetViewStack->currentIndex() == 1;
}

int MainWindow::datasetFolderDepth() const
{
    return depthSpinBox->value();
}

FilterGroup* MainWindow::findFilterGroupById(int id) const
{
    const auto it = std::find_if(
        groups.begin(), groups.end(), [id](const FilterGroup* group) { return group->id == id; });
    return it == groups.end() ? nullptr : *it;
}

bool MainWindow::isGroupEnabled(const DatasetEntry* ds, int groupId) const
{
    return ds && ds->groupEnabled.value(groupId, false);
}

EventFilter MainWindow::buildEffectiveFilter(const DatasetEntry* ds) const
{
    if (!ds)
        return EventFilter();
    std::vector<const FilterGroup*> enabled;
    for (const FilterGroup* group : groups) {
        if (isGroupEnabled(ds, group->id))
            enabled.push_back(group);
    }
    return joinEffectiveFilter(ds->filter, enabled);
}

void MainWindow::onUnhandledException(const QString& title, const QString& message)
{
    if (exceptionDialogOpen)
        return;
    exceptionDialogOpen = true;

    QMessageBox box(QMessageBox::Critical, title, MainWindowTexts::unexpectedErrorText.arg(message),
        QMessageBox::NoButton, this);
    QPushButton* feedbackButton = box.addButton(MainWindowTexts::sendFeedbackButton, QMessageBox::AcceptRole);
    box.addButton(MainWindowTexts::closeButton, QMessageBox::RejectRole);
    box.exec();
    exceptionDialogOpen = false;

    if (box.clickedButton() == feedbackButton) {
        // The feedback dialog opens here, its report pre-filled with title and message.
    }
}

void MainWindow::onColorMapSelected(QAction* action)
{
    currentColorMapIndex = action->data().toInt();
    QSettings().setValue(SettingsKeys::colorMapIndex, currentColorMapIndex);
    scatterPlot->setColorMapIndex(currentColorMapIndex);
}

void MainWindow::onDatasetViewModeChanged(int mode)
{
    const bool folders = mode == 1;
    datasetViewStack->setCurrentIndex(folders ? 1 : 0);
    depthLabel->setVisible(folders);
    depthSpinBox->setVisible(folders);
    QSettings().setValue(SettingsKeys::datasetViewMode, folders ? 1 : 0);
    if (folders)
        rebuildDatasetTree();
}

void MainWindow::onDatasetDepthChanged(int depth)
{
    QSettings().setValue(SettingsKeys::datasetViewDepth, depth);
    rebuildDatasetTree();
}

void MainWindow::onCheckOnStartupToggled(bool checked)
{
    QSettings().setValue(SettingsKeys::checkOnStartup, checked);
}

// Tool windows go without a question, and nothing is saved. A running preload isn't waited for:
// its task holds its own reference to the reader.
void MainWindow::closeEvent(QCloseEvent* event)
{
    deleteToolWindows();
    QMainWindow::closeEvent(event);
}

// The splitter distributes sizes only once it has a width of its own, at the first showing.
void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (!plotSplitterSized) {
        plotSplitterSized = true;
        plotSplitter->setSizes({ 600, 260 });
    }
}

void MainWindow::deleteToolWindows()
{
    QList<QMainWindow*> windows;
    for (QList<QMainWindow*>* list : { &combinePlotWindows, &statisticalEvaluationWindows,
             &imageGalleryWindows, &filterGroupMatrixWindows }) {
        windows += *list;
        list->clear();
    }
    for (QMainWindow* window : windows) {
        window->disconnect(this);
        disconnect(window);
        window->close();
        delete window;
    }
}

} // namespace Tessaly
