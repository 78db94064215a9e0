// What a newcomer meets: the start panel over the empty plot with the example datasets, and menu
// entries of features that aren't built yet shown as disabled.
#include "plot/ScatterPlot.h"
#include "ui/DatasetListWidget.h"
#include "ui/MainWindow.h"
#include "ui/MenuPlaceholders.h"
#include "ui/StartPanel.h"

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QMenuBar>

namespace Tessaly {

// Runs last in the construction, once every menu entry that works has been connected.
void MainWindow::setupFirstStart()
{
    startPanel = new StartPanel(scatterPlot->canvas());
    startPanel->setExampleFolder(findExampleFolder(QCoreApplication::applicationDirPath()));
    connect(startPanel, &StartPanel::openExamplesRequested, this, &MainWindow::openExampleData);
    // The list mirrors the session row by row, so its model tells when the session becomes empty.
    const QAbstractItemModel* rows = datasetListWidget->model();
    connect(rows, &QAbstractItemModel::rowsInserted, this, &MainWindow::updateStartPanel);
    connect(rows, &QAbstractItemModel::rowsRemoved, this, &MainWindow::updateStartPanel);
    connect(rows, &QAbstractItemModel::modelReset, this, &MainWindow::updateStartPanel);
    updateStartPanel();

    disableUnconnectedEntries(menuBar());
}

void MainWindow::updateStartPanel()
{
    startPanel->setVisible(datasetListWidget->count() == 0);
}

void MainWindow::openExampleData()
{
    for (const QString& path : exampleFiles(startPanel->exampleFolder()))
        openDataset(path);
}

} // namespace Tessaly
