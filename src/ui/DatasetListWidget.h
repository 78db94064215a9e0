#pragma once

#include <QListWidget>

namespace Tessaly {

// Mime type of a dataset dragged within the dataset views; the payload is its id as decimal text.
inline const QString datasetMimeType = QStringLiteral("application/x-tessaly-dataset");

// The flat list of loaded datasets, one row per dataset in the order of the session. Rows are
// reordered by dragging; the list itself moves nothing but asks the main window to.
class DatasetListWidget : public QListWidget
{
    Q_OBJECT

public:
    explicit DatasetListWidget(QWidget* parent = nullptr);

    // Works out where a dataset dropped at `position` (viewport coordinates) goes, and asks for the
    // move after the drop has been handled. False when nothing moves: an unknown dataset, or a drop
    // onto its own place (its own row, or the lower half of the row above).
    bool requestMove(const QMimeData* data, const QPoint& position);

Q_SIGNALS:
    void internalReorderRequested(int fromRow, int toRow);

protected:
    // Qt 5 passes the item list by value, Qt 6 by reference.
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    QMimeData* mimeData(const QList<QListWidgetItem*>& items) const override;
#else
    QMimeData* mimeData(const QList<QListWidgetItem*> items) const override;
#endif
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    bool isOwnDrag(const QDropEvent* event) const;
};

// The drag data of a dataset: its id as decimal text, under the dataset type and as plain text.
QMimeData* makeDatasetMimeData(int id);
// The id a dataset drag carries, or -1.
int draggedDatasetId(const QMimeData* data);
// Settings shared by the list and the tree: one selection, own drags, rich-text rows, a menu.
void setUpDatasetView(QAbstractItemView* view);

} // namespace Tessaly
