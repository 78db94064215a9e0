#include "ui/DatasetListWidget.h"

namespace Tessaly {

DatasetListWidget::DatasetListWidget(QWidget* parent)
    : QListWidget(parent)
{
    setSelectionMode(QAbstractItemView::SingleSelection);
    setContextMenuPolicy(Qt::CustomContextMenu);
}

} // namespace Tessaly
