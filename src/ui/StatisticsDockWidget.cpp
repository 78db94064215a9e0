#include "ui/StatisticsDockWidget.h"

#include <QHeaderView>
#include <QTableWidget>
#include <QVBoxLayout>

namespace Tessaly {

StatisticsDockWidget::StatisticsDockWidget(QWidget* parent)
    : QWidget(parent)
    , table(new QTableWidget(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(table);
    table->verticalHeader()->setVisible(false);
    table->horizontalHeader()->setStretchLastSection(true);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    clearStatistics();
}

void StatisticsDockWidget::clearStatistics()
{
    table->clear();
    table->setRowCount(0);
    table->setColumnCount(3);
    table->setHorizontalHeaderLabels({ QStringLiteral("Statistic"), QStringLiteral("X"), QStringLiteral("Y") });
}

} // namespace Tessaly
