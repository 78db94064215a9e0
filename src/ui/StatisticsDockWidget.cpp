#include "ui/StatisticsDockWidget.h"

#include "core/ParallelBlocks.h"
#include "stats/DistributionStats.h"
#include "ui/DatasetText.h"
#include "ui/WrappingHeaderView.h"

#include <QEvent>
#include <QHeaderView>
#include <QTreeWidget>
#include <QTreeWidgetItem>
#include <QVBoxLayout>
#include <algorithm>

namespace Tessaly {

namespace {

constexpr Qt::Alignment valueAlignment = Qt::AlignRight | Qt::AlignVCenter;
// Room beside a figure in its cell, or a title in its header section: the margins on both sides.
constexpr int cellPadding = 14;

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
    // The headers are axis labels, often longer than a column of a narrow dock: they wrap rather
    // than being cut, and the two value columns share the room the names leave.
    table->setHeader(new WrappingHeaderView(table));
    table->setColumnCount(3);
    table->setRootIsDecorated(false);
    table->setAlternatingRowColors(true);
    table->header()->setStretchLastSection(true);
    table->header()->setMinimumSectionSize(24);
    table->viewport()->installEventFilter(this);
    clearStatistics();
}

void StatisticsDockWidget::updateStatistics(
    const std::vector<double>& x, const std::vector<double>& y, const QString& xLabel, const QString& yLabel)
{
    if (x.empty() || y.empty()) {
        resetTable(xLabel, yLabel);
        return;
    }

    // The two axes are independent: for many points they are worked out at once.
    constexpr std::size_t manyPoints = 20000;
    DistributionStats sx;
    DistributionStats sy;
    runBoth([&] { sx = computeDistributionStats(x); }, [&] { sy = computeDistributionStats(y); },
        x.size() >= manyPoints);
    // Both vectors come from the same plotted points, so x's count stands for both.
    showStatistics(sx, sy, x.size(), xLabel, yLabel);
}

void StatisticsDockWidget::showStatistics(const DistributionStats& sx, const DistributionStats& sy,
    std::size_t points, const QString& xLabel, const QString& yLabel)
{
    resetTable(xLabel, yLabel);
    const auto& names = StatisticsText::rowNames;
    const QString count = QString::number(points);
    addRow(table, names[0], count, count);
    addRow(table, names[1], figure(sx.mean), figure(sy.mean));
    addRow(table, names[2], figure(sx.sd), figure(sy.sd));
    addRow(table, names[3], figure(sx.q1), figure(sy.q1));
    addRow(table, names[4], figure(sx.median), figure(sy.median));
    addRow(table, names[5], figure(sx.q3), figure(sy.q3));
    addRow(table, names[6], figure(sx.iqr), figure(sy.iqr));
    fitColumns();
}

bool StatisticsDockWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == table->viewport() && event->type() == QEvent::Resize)
        fitColumns();
    return QWidget::eventFilter(watched, event);
}

// The names take what they need; the two value columns share the rest evenly, so that both fit
// the dock without a horizontal scroll bar. Each keeps at least the room of its widest figure and
// of the longest word of its title, which can't wrap; only a dock too narrow for those scrolls.
void StatisticsDockWidget::fitColumns()
{
    QHeaderView* header = table->header();
    const QFontMetrics metrics = table->fontMetrics();
    const auto needed = [&](int column) {
        const QString title = table->headerItem()->text(column);
        int word = 0;
        for (const QString& part : title.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            word = std::max(word, header->fontMetrics().horizontalAdvance(part));
        int figure = 0;
        for (int row = 0; row < table->topLevelItemCount(); ++row)
            figure = std::max(figure, metrics.horizontalAdvance(table->topLevelItem(row)->text(column)));
        return std::max(word, figure) + cellPadding;
    };
    const int names = needed(0);
    header->resizeSection(0, names);
    const int rest = std::max(0, table->viewport()->width() - names);
    const int second = std::max(needed(2), rest / 2);
    header->resizeSection(1, std::max(needed(1), rest - second));
    header->resizeSection(2, second);
    // Wider columns wrap their titles onto fewer lines: the header's height follows.
    QMetaObject::invokeMethod(table, "updateGeometries", Qt::QueuedConnection);
}

void StatisticsDockWidget::clearStatistics()
{
    resetTable(QString::fromUtf8(StatisticsText::xHeader), QString::fromUtf8(StatisticsText::yHeader));
}

void StatisticsDockWidget::resetTable(const QString& xLabel, const QString& yLabel)
{
    table->clear();
    table->setHeaderLabels({ QString::fromUtf8(StatisticsText::statisticHeader), xLabel, yLabel });
    table->headerItem()->setToolTip(1, plainToolTip(xLabel));
    table->headerItem()->setToolTip(2, plainToolTip(yLabel));
    fitColumns();
}

} // namespace Tessaly
