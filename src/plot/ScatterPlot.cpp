#include "plot/ScatterPlot.h"

#include <qwt_plot_canvas.h>

namespace Tessaly {

ScatterPlot::ScatterPlot(QWidget* parent)
    : QwtPlot(parent)
{
    setCanvasBackground(Qt::white);
    setMinimumSize(300, 250);
}

void ScatterPlot::clearData()
{
    replot();
}

void ScatterPlot::setColorMapIndex(int index)
{
    mapIndex = index;
    replot();
}

} // namespace Tessaly
