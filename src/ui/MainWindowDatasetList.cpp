// The two views of the datasets: the flat list, the master view whose row order is the session's,
// and the folder tree rebuilt from it; reordering, renaming and their context menus.
#include "core/DatasetEntry.h"
#include "ui/DatasetFolderTree.h"
#include "ui/DatasetListWidget.h"
#include "ui/DatasetText.h"
#include "ui/DatasetTreeWidget.h"
#include "ui/FilterDockWidget.h"
#include "ui/MainWindow.h"

#include <QLineEdit>
#include <QMenu>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTreeWidget>
#include <algorithm>
#include <functional>

namespace Tessaly {

QString MainWindow::datasetLabelHtml(const DatasetEntry* entry) const
{
    QStringList parts = datasetDetails(*entry, true);
    parts << QStringLiteral("%1 events").arg(entry->reader->eventCount());
    // Names and details come from users and files: text, never markup.
    return QStringLiteral("<b>%1</b> (%2)")
        .arg(entry->displayName.toHtmlEscaped(), parts.join(QStringLiteral(", ")).toHtmlEscaped());
}

int MainWindow::rowOf(const DatasetEntry* entry) const
{
    const auto it = std::find(datasetList.begin(), datasetList.end(), entry);
    return it == datasetList.end() ? -1 : static_cast<int>(it - datasetList.begin());
}

void MainWindow::addDatasetRow(const DatasetEntry* entry)
{
    auto* item = new QListWidgetItem(datasetLabelHtml(entry));
    item->setData(Qt::UserRole, entry->id);
    item->setToolTip(plainToolTip(QString::fromStdString(entry->filePath)));
    const QSignalBlocker blocker(datasetListWidget);
    datasetListWidget->addItem(item);
}

void MainWindow::rebuildDatasetList()
{
    const QSignalBlocker blocker(datasetListWidget);
    datasetListWidget->clear();
    for (const DatasetEntry* entry : datasetList)
        addDatasetRow(entry);
    datasetListWidget->setCurrentRow(activeDatasetIndex);
}

void MainWindow::rebuildDatasetTree()
{
    if (!datasetFolderViewActive())
        return;
    treeSelectionUpdating = true;
    datasetTreeWidget->clear();
    QStringList paths;
    for (const DatasetEntry* entry : datasetList)
        paths << QString::fromStdString(entry->filePath);
    const std::vector<DatasetFolderNode> nodes
        = buildDatasetFolderTree(paths, depthSpinBox ? depthSpinBox->value() : 2);

    QTreeWidgetItem* activeItem = nullptr;
    std::function<void(const DatasetFolderNode&, QTreeWidgetItem*)> addNode
        = [&](const DatasetFolderNode& node, QTreeWidgetItem* parent) {
              auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(datasetTreeWidget);
              if (node.datasetIndex < 0) {
                  item->setText(0, node.label.toHtmlEscaped());
                  item->setFlags(item->flags() & ~(Qt::ItemIsSelectable | Qt::ItemIsDragEnabled));
              } else {
                  const DatasetEntry* entry = datasetList[static_cast<std::size_t>(node.datasetIndex)];
                  item->setText(0, datasetLabelHtml(entry));
                  item->setData(0, Qt::UserRole, entry->id);
                  item->setToolTip(0, plainToolTip(QString::fromStdString(entry->filePath)));
                  item->setFlags((item->flags() | Qt::ItemIsDragEnabled) & ~Qt::ItemIsDropEnabled);
                  if (node.datasetIndex == activeDatasetIndex)
                      activeItem = item;
              }
              for (const DatasetFolderNode& child : node.children)
                  addNode(child, item);
          };
    for (const DatasetFolderNode& node : nodes)
        addNode(node, nullptr);
    datasetTreeWidget->expandAll();
    if (activeItem)
        datasetTreeWidget->setCurrentItem(activeItem);
    treeSelectionUpdating = false;
}

void MainWindow::moveDataset(int fromRow, int toRow)
{
    const int count = static_cast<int>(datasetList.size());
    if (fromRow < 0 || fromRow >= count || toRow < 0 || toRow > count)
        return;
    std::vector<DatasetEntry*> before = datasetList;
    DatasetEntry* moved = datasetList[static_cast<std::size_t>(fromRow)];
    datasetList.erase(datasetList.begin() + fromRow);
    const int target = toRow > fromRow ? toRow - 1 : toRow;
    datasetList.insert(datasetList.begin() + target, moved);

    // Rows held elsewhere follow their datasets to the new places.
    const auto newRow = [&](int row) {
        return row < 0 || row >= count ? row : rowOf(before[static_cast<std::size_t>(row)]);
    };
    activeDatasetIndex = newRow(activeDatasetIndex);
    preloadRow = newRow(preloadRow);
    for (int& row : pendingPreloadRows)
        row = newRow(row);

    rebuildDatasetList();
    updateApplyPlotButton();
    rebuildDatasetTree();
}

void MainWindow::onTreeReorderRequested(int sourceId, int targetId, bool after)
{
    const int fromRow = rowOf(findDatasetById(sourceId));
    const int targetRow = rowOf(findDatasetById(targetId));
    if (fromRow < 0 || targetRow < 0)
        return;
    moveDataset(fromRow, targetRow + (after ? 1 : 0));
}

void MainWindow::onRenameFinished()
{
    DatasetEntry* entry = activeEntry();
    if (!entry)
        return;
    QString name = renameEdit->text().trimmed();
    if (name == entry->displayName)
        return;
    // An empty name brings the sample name back.
    if (name.isEmpty()) {
        name = sampleOrFileName(*entry);
        if (name == entry->displayName)
            return;
    }
    entry->displayName = name;
    {
        const QSignalBlocker blocker(renameEdit);
        renameEdit->setText(name);
    }
    if (QListWidgetItem* item = datasetListWidget->item(activeDatasetIndex))
        item->setText(datasetLabelHtml(entry));
    rebuildDatasetTree();
    updatePlotStatus();
    filterDock->setDataset(entry);
}

void MainWindow::onDatasetContextMenu(const QPoint& position)
{
    QWidget* view = qobject_cast<QWidget*>(sender());
    if (view == datasetTreeWidget) {
        // The tree's menu acts on the dataset under the pointer; folders have none.
        QTreeWidgetItem* item = datasetTreeWidget->itemAt(position);
        if (!item || !item->data(0, Qt::UserRole).isValid())
            return;
        onDatasetSelected(rowOf(findDatasetById(item->data(0, Qt::UserRole).toInt())));
    } else if (!datasetListWidget->itemAt(position)) {
        return;
    }
    QMenu menu(this);
    menu.addAction(QStringLiteral("Duplicate Dataset"), this, &MainWindow::duplicateDataset);
    menu.addAction(QStringLiteral("Remove Dataset"), this, &MainWindow::removeDataset);
    menu.exec(view->mapToGlobal(position));
}

} // namespace Tessaly
