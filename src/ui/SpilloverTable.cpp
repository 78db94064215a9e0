#include "ui/SpilloverTable.h"

#include "ui/CalculationsTexts.h"

#include <QHeaderView>
#include <QSignalBlocker>

namespace Tessaly {

SpilloverTable::SpilloverTable(QWidget* parent)
    : QTableWidget(parent)
{
    setSelectionMode(QAbstractItemView::SingleSelection);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    horizontalHeader()->setMinimumSectionSize(40);
    fitHeight();
}

void SpilloverTable::setChannels(const std::vector<int>& channels)
{
    const QSignalBlocker blocker(this);
    channelNumbers = channels;
    const int n = static_cast<int>(channels.size());
    clear();
    setRowCount(n);
    setColumnCount(n);
    QStringList headers;
    for (int channel : channels)
        headers << CalculationsTexts::channelHeader.arg(channel);
    setHorizontalHeaderLabels(headers);
    setVerticalHeaderLabels(headers);
    for (int row = 0; row < n; ++row) {
        for (int column = 0; column < n; ++column) {
            auto* item = new QTableWidgetItem(row == column ? QStringLiteral("1.0") : QStringLiteral("0.0"));
            item->setTextAlignment(Qt::AlignCenter);
            if (row == column) {
                item->setFlags(item->flags() & ~Qt::ItemIsEditable);
                item->setBackground(QColor(230, 230, 230));
            }
            setItem(row, column, item);
        }
    }
    fitHeight();
}

std::vector<std::vector<double>> SpilloverTable::matrix() const
{
    const int n = rowCount();
    std::vector<std::vector<double>> values(static_cast<std::size_t>(n), std::vector<double>(n, 0.0));
    for (int row = 0; row < n; ++row) {
        for (int column = 0; column < n; ++column) {
            double& value = values[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
            if (row == column) {
                value = 1.0;
                continue;
            }
            const QTableWidgetItem* cell = item(row, column);
            bool ok = false;
            const double parsed = cell ? cell->text().trimmed().toDouble(&ok) : 0.0;
            if (ok)
                value = parsed;
        }
    }
    return values;
}

void SpilloverTable::setMatrix(const std::vector<std::vector<double>>& matrix)
{
    const auto n = static_cast<std::size_t>(rowCount());
    if (matrix.size() != n)
        return;
    for (const std::vector<double>& row : matrix) {
        if (row.size() != n)
            return;
    }
    const QSignalBlocker blocker(this);
    for (std::size_t row = 0; row < n; ++row) {
        for (std::size_t column = 0; column < n; ++column) {
            if (row == column)
                continue;
            if (QTableWidgetItem* cell = item(static_cast<int>(row), static_cast<int>(column)))
                cell->setText(QString::number(matrix[row][column], 'g', 6));
        }
    }
}

void SpilloverTable::fitHeight()
{
    setFixedHeight(horizontalHeader()->sizeHint().height() + verticalHeader()->length() + 4);
}

} // namespace Tessaly
