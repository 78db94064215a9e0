#pragma once

class QwtPlot;

namespace Tessaly {

// The layout settings of a plot that the export changes and restores. They live behind these
// functions so that only one file includes the library's layout header (see PlotLayoutAccess.cpp).
bool canvasAlignedToScale(const QwtPlot& plot, int axis);
void setCanvasAlignedToScale(QwtPlot& plot, int axis, bool aligned);
int canvasMargin(const QwtPlot& plot, int axis);
// axis -1 sets all four margins.
void setCanvasMargin(QwtPlot& plot, int margin, int axis = -1);

} // namespace Tessaly
