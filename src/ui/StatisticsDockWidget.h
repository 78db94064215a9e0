#pragma once

#include <QWidget>

class QTableWidget;

namespace Tessaly {

// The "Plot Statistics" dock: figures of the two plotted vectors.
class StatisticsDockWidget : public QWidget
{
    Q_OBJECT

public:
    explicit StatisticsDockWidget(QWidget* parent = nullptr);

    // Empties the table and puts back the header "Statistic", "X", "Y".
    void clearStatistics();

private:
    QTableWidget* table;
};

} // namespace Tessaly
