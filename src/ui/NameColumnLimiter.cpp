#include "ui/NameColumnLimiter.h"

#include <QEvent>
#include <QTableView>
#include <QTreeView>

namespace Tessaly {

NameColumnLimiter::NameColumnLimiter(QAbstractItemView* itemView, double widthShare)
    : QObject(itemView)
    , view(itemView)
    , viewport(itemView->viewport())
    , share(widthShare)
{
    viewport->installEventFilter(this);
}

void NameColumnLimiter::fit()
{
    const int limit = static_cast<int>(view->viewport()->width() * share);
    if (auto* tree = qobject_cast<QTreeView*>(view)) {
        tree->resizeColumnToContents(0);
        if (limit > 0 && tree->columnWidth(0) > limit)
            tree->setColumnWidth(0, limit);
    } else if (auto* table = qobject_cast<QTableView*>(view)) {
        table->resizeColumnToContents(0);
        if (limit > 0 && table->columnWidth(0) > limit)
            table->setColumnWidth(0, limit);
    }
}

bool NameColumnLimiter::eventFilter(QObject* watched, QEvent* event)
{
    // Only the stored pointer is compared: while the view is being destroyed it is no longer a view,
    // and the viewport still sends events on its way out.
    if (event->type() == QEvent::Resize && watched == viewport)
        fit();
    return QObject::eventFilter(watched, event);
}

} // namespace Tessaly
