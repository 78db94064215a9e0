#include "ui/StatisticsDockWidget.h"

#include "stats/DistributionStats.h"

#include <QHeaderView>
#include <QTreeWidget>
#include <QTreeWidgetItem>
#include <QVBoxLayout>

namespace Tessaly {

namespace {

constexpr Qt::Alignment valueAlignment = Qt::AlignRight | Qt::AlignVCenter;

QTreeWidgetItem* addRow(QTreeWidget* table, const char* name, const QString& x, const QString& y)
{
    auto* item = new QTreeWidgetItem(table, { QString::fromUtf8(name), x, y });
    item->setTextAlignment(1, valueAlignment);
    item->setTextAlignment(2, valueAlignment);
    return item;
}

QString figure(double value)
{
    return QString::number(value, 'g', 6);
}

} // namespace

StatisticsDockWidget::StatisticsDockWidget(QWidget* parent)
    : QWidget(parent)
    , table(new QTreeWidget(this))
{
    table->setObjectName(QStringLiteral("statisticsTable"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(table);
    table->setColumnCount(3);
    table->setRootIsDecorated(false);
    table->setAlternatingRowColors(true);
    table->header()->setStretchLastSection(true);
    clearStatistics();
}

void StatisticsDockWidget::updateStatistics(
    const std::vector<double>& x, const std::vector<double>& y, const QString& xLabel, const QString& yLabel)
{
    resetTable(xLabel, yLabel);
    if (x.empty() || y.empty())
        return;

    const DistributionStats sx = computeDistributionStats(x);
    const DistributionStats sy = computeDistributionStats(y);
    const auto& names = StatisticsText::rowNames;

    // Both vectors come from the same plotted points, so x's count stands for both.
    const QString count = QString::number(x.size());
    addRow(table, names[0], count, count);
    addRow(table, names[1], figure(sx.mean), figure(sy.mean));
    addRow(table, names[2], figure(sx.sd), figure(sy.sd));
    addRow(table, names[3], figure(sx.q1), figure(sy.q1));
    addRow(table, names[4], figure(sx.median), figure(sy.median));
    addRow(table, names[5], figure(sx.q3), figure(sy.q3));
    addRow(table, names[6], figure(sx.iqr), figure(sy.iqr));
    table->resizeColumnToContents(0);
}

void StatisticsDockWidget::clearStatistics()
{
    resetTable(QString::fromUtf8(StatisticsText::xHeader), QString::fromUtf8(StatisticsText::yHeader));
}

void StatisticsDockWidget::resetTable(const QString& xLabel, const QString& yLabel)
{
    table->clear();
    table->setHeaderLabels({ QString::fromUtf8(StatisticsText::statisticHeader), xLabel, yLabel });
}

} // namespace Tessaly
