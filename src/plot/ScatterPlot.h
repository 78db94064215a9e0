#pragma once

#include <qwt_plot.h>

namespace Tessaly {

// The main scatter plot of two features of the active dataset.
class ScatterPlot : public QwtPlot
{
    Q_OBJECT

public:
    explicit ScatterPlot(QWidget* parent = nullptr);

    // Empties the plot and everything drawn on it.
    void clearData();
    // Index into the list of colour maps used for colour by value.
    void setColorMapIndex(int index);
    int colorMapIndex() const { return mapIndex; }

private:
    int mapIndex = 0;
};

} // namespace Tessaly
