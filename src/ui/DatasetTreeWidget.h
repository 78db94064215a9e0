#pragma once

#include <QTreeWidget>

namespace Tessaly {

// The loaded datasets under the folders that hold their files. Dataset items can be dragged onto
// other dataset items to reorder the session; folders are no drop targets.
class DatasetTreeWidget : public QTreeWidget
{
    Q_OBJECT

public:
    explicit DatasetTreeWidget(QWidget* parent = nullptr);

Q_SIGNALS:
    void internalReorderRequested(int sourceId, int targetId, bool after);

protected:
    // Qt 5 passes the item list by value, Qt 6 by reference.
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    QMimeData* mimeData(const QList<QTreeWidgetItem*>& items) const override;
#else
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override;
#endif
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // The dataset item under `position` other than the dragged one, or null.
    QTreeWidgetItem* dropTarget(const QPoint& position, int draggedId) const;
};

} // namespace Tessaly
