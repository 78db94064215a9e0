#include "plot/TracePlot.h"

namespace Tessaly {

TracePlot::TracePlot(QWidget* parent)
    : QwtPlot(parent)
{
    setCanvasBackground(Qt::white);
    setMinimumHeight(120);
}

void TracePlot::clearTraces()
{
    replot();
}

} // namespace Tessaly
