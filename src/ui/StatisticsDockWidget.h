#pragma once

#include "stats/DistributionStats.h"

#include <QString>
#include <QWidget>
#include <vector>

class QTreeWidget;

namespace Tessaly {

// The statistics dock's own texts, for the widget and for its tests.
namespace StatisticsText {
inline constexpr char statisticHeader[] = "Statistic";
inline constexpr char xHeader[] = "X";
inline constexpr char yHeader[] = "Y";
// Row names, top to bottom.
inline constexpr const char* rowNames[] = { "N", "Mean", "SD", "Q1", "Median", "Q3", "IQR" };
} // namespace StatisticsText

// The "Plot Statistics" dock: the number of plotted events and six figures of each of the two
// plotted vectors. It is given the vectors that the plot shows, so it describes exactly what is on
// the canvas.
class StatisticsDockWidget : public QWidget
{
    Q_OBJECT

public:
    explicit StatisticsDockWidget(QWidget* parent = nullptr);

    // Rebuilds the table from the plotted values with the axis labels as column headers. When either
    // vector is empty only the header is shown.
    void updateStatistics(const std::vector<double>& x, const std::vector<double>& y, const QString& xLabel,
        const QString& yLabel);
    // The same with the figures of both vectors worked out already, `count` values in each.
    void showStatistics(const DistributionStats& x, const DistributionStats& y, std::size_t count,
        const QString& xLabel, const QString& yLabel);
    // Empties the table and puts back the header "Statistic", "X", "Y".
    void clearStatistics();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void resetTable(const QString& xLabel, const QString& yLabel);
    void fitColumns();

    QTreeWidget* table;
};

} // namespace Tessaly
