// Qwt 6.1's layout header gives a flags parameter the default value 0x00, which compiles only with
// QFlags' constructor from a literal zero; that constructor goes away with the Qt APIs deprecated
// before 5.15. This file alone, which uses no deprecated API itself, keeps it.
#undef QT_DISABLE_DEPRECATED_BEFORE
#define QT_DISABLE_DEPRECATED_BEFORE 0x050E00

#include "plot/PlotLayoutAccess.h"

#include <qwt_plot.h>
#include <qwt_plot_layout.h>

namespace Tessaly {

bool canvasAlignedToScale(const QwtPlot& plot, int axis)
{
    return plot.plotLayout()->alignCanvasToScale(axis);
}

void setCanvasAlignedToScale(QwtPlot& plot, int axis, bool aligned)
{
    plot.plotLayout()->setAlignCanvasToScale(axis, aligned);
}

int canvasMargin(const QwtPlot& plot, int axis)
{
    return plot.plotLayout()->canvasMargin(axis);
}

void setCanvasMargin(QwtPlot& plot, int margin, int axis)
{
    plot.plotLayout()->setCanvasMargin(margin, axis);
}

} // namespace Tessaly
