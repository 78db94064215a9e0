#include "ui/DatasetTreeWidget.h"

#include "ui/DatasetListWidget.h"

#include <QDrag>
#include <QDragMoveEvent>
#include <QMimeData>
#include <QTimer>

namespace Tessaly {

DatasetTreeWidget::DatasetTreeWidget(QWidget* parent)
    : QTreeWidget(parent)
{
    setHeaderHidden(true);
    setUpDatasetView(this);
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
QMimeData* DatasetTreeWidget::mimeData(const QList<QTreeWidgetItem*>& items) const
#else
QMimeData* DatasetTreeWidget::mimeData(const QList<QTreeWidgetItem*> items) const
#endif
{
    if (items.isEmpty() || !items.first()->data(0, Qt::UserRole).isValid())
        return nullptr;
    return makeDatasetMimeData(items.first()->data(0, Qt::UserRole).toInt());
}

void DatasetTreeWidget::startDrag(Qt::DropActions)
{
    QTreeWidgetItem* item = currentItem();
    if (!item || !item->data(0, Qt::UserRole).isValid())
        return;
    auto* drag = new QDrag(this);
    drag->setMimeData(mimeData({ item }));
    drag->exec(Qt::CopyAction);
}

QTreeWidgetItem* DatasetTreeWidget::dropTarget(const QPoint& position, int draggedId) const
{
    QTreeWidgetItem* target = itemAt(position);
    if (!target || !target->data(0, Qt::UserRole).isValid())
        return nullptr;
    return target->data(0, Qt::UserRole).toInt() == draggedId ? nullptr : target;
}

// The item model knows only its own drag format; a dataset drag from this tree is let in here, and
// where it may land is decided as it moves.
void DatasetTreeWidget::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->source() == this && event->mimeData()->hasFormat(datasetMimeType))
        event->acceptProposedAction();
    else
        QTreeWidget::dragEnterEvent(event);
}

void DatasetTreeWidget::dragMoveEvent(QDragMoveEvent* event)
{
    if (event->source() != this || !event->mimeData()->hasFormat(datasetMimeType)) {
        QTreeWidget::dragMoveEvent(event);
        return;
    }
    if (dropTarget(event->pos(), draggedDatasetId(event->mimeData())))
        event->acceptProposedAction();
    else
        event->ignore();
}

void DatasetTreeWidget::dropEvent(QDropEvent* event)
{
    if (event->source() != this || !event->mimeData()->hasFormat(datasetMimeType)) {
        QTreeWidget::dropEvent(event);
        return;
    }
    const int sourceId = draggedDatasetId(event->mimeData());
    QTreeWidgetItem* target = dropTarget(event->pos(), sourceId);
    if (!target) {
        event->ignore();
        return;
    }
    const int targetId = target->data(0, Qt::UserRole).toInt();
    const bool after = event->pos().y() > visualItemRect(target).center().y();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    QTimer::singleShot(0, this,
        [this, sourceId, targetId, after] { Q_EMIT internalReorderRequested(sourceId, targetId, after); });
}

} // namespace Tessaly
