#include "ui/DatasetListWidget.h"

#include "ui/HtmlItemDelegate.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>

namespace Tessaly {

QMimeData* makeDatasetMimeData(int id)
{
    auto* data = new QMimeData;
    const QByteArray text = QByteArray::number(id);
    data->setData(datasetMimeType, text);
    data->setText(QString::fromUtf8(text));
    return data;
}

void setUpDatasetView(QAbstractItemView* view)
{
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    view->setDragEnabled(true);
    view->setAcceptDrops(true);
    view->setDropIndicatorShown(true);
    view->setDragDropMode(QAbstractItemView::DragDrop);
    view->setItemDelegate(new HtmlItemDelegate(view));
}

int draggedDatasetId(const QMimeData* data)
{
    bool ok = false;
    const int id = QString::fromUtf8(data->data(datasetMimeType)).toInt(&ok);
    return ok ? id : -1;
}

DatasetListWidget::DatasetListWidget(QWidget* parent)
    : QListWidget(parent)
{
    setUpDatasetView(this);
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
QMimeData* DatasetListWidget::mimeData(const QList<QListWidgetItem*>& items) const
#else
QMimeData* DatasetListWidget::mimeData(const QList<QListWidgetItem*> items) const
#endif
{
    return items.isEmpty() ? nullptr : makeDatasetMimeData(items.first()->data(Qt::UserRole).toInt());
}

void DatasetListWidget::startDrag(Qt::DropActions)
{
    QListWidgetItem* item = currentItem();
    if (!item)
        return;
    auto* drag = new QDrag(this);
    drag->setMimeData(mimeData({ item }));
    drag->exec(Qt::CopyAction);
}

bool DatasetListWidget::isOwnDrag(const QDropEvent* event) const
{
    return event->source() == this && event->mimeData()->hasFormat(datasetMimeType);
}

void DatasetListWidget::dragEnterEvent(QDragEnterEvent* event)
{
    if (isOwnDrag(event))
        event->acceptProposedAction();
    else
        QListWidget::dragEnterEvent(event);
}

void DatasetListWidget::dragMoveEvent(QDragMoveEvent* event)
{
    if (isOwnDrag(event))
        event->acceptProposedAction();
    else
        QListWidget::dragMoveEvent(event);
}

void DatasetListWidget::dropEvent(QDropEvent* event)
{
    if (!isOwnDrag(event)) {
        QListWidget::dropEvent(event);
        return;
    }
    if (!requestMove(event->mimeData(), event->pos())) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

bool DatasetListWidget::requestMove(const QMimeData* data, const QPoint& position)
{
    int toRow = count();
    if (QListWidgetItem* target = itemAt(position)) {
        toRow = row(target);
        if (position.y() > visualItemRect(target).center().y())
            ++toRow;
    }
    const int id = draggedDatasetId(data);
    int fromRow = -1;
    for (int i = 0; i < count(); ++i) {
        if (item(i)->data(Qt::UserRole).toInt() == id)
            fromRow = i;
    }
    if (fromRow < 0 || fromRow == toRow || fromRow + 1 == toRow)
        return false;
    // The model changes only after the drag has finished its own handling.
    QTimer::singleShot(0, this, [this, fromRow, toRow] { Q_EMIT internalReorderRequested(fromRow, toRow); });
    return true;
}

// A click on empty space would clear the current row, and with it the active dataset.
void DatasetListWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && !itemAt(event->pos()))
        return;
    QListWidget::mousePressEvent(event);
}

} // namespace Tessaly
