#pragma once

#include <QTableWidget>
#include <vector>

namespace Tessaly {

// The spillover matrix of crosstalk compensation, one row and one column per fluorescence channel:
// cell (i, j) is the share of channel i's dye that channel j records. The diagonal is 1 and can't be
// edited; the table is as tall as its rows, so that it never scrolls.
class SpilloverTable : public QTableWidget
{
    Q_OBJECT

public:
    explicit SpilloverTable(QWidget* parent = nullptr);

    // Rebuilds the table for these channels, every cell off the diagonal at 0.
    void setChannels(const std::vector<int>& channels);
    const std::vector<int>& channels() const { return channelNumbers; }

    // The matrix as entered; a cell that doesn't read as a number counts as 0, the diagonal as 1.
    std::vector<std::vector<double>> matrix() const;
    // Writes a matrix of the table's size into it (up to 6 significant digits); others are ignored.
    void setMatrix(const std::vector<std::vector<double>>& matrix);

private:
    void fitHeight();

    std::vector<int> channelNumbers;
};

} // namespace Tessaly
