#include "ui/DatasetTreeWidget.h"

namespace Tessaly {

DatasetTreeWidget::DatasetTreeWidget(QWidget* parent)
    : QTreeWidget(parent)
{
    setHeaderHidden(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setContextMenuPolicy(Qt::CustomContextMenu);
}

} // namespace Tessaly
