#pragma once

#include <qwt_plot_picker.h>

namespace Tessaly {

// The scatter plot's picker: a click-point machine without tracker or rubber band. It stays
// enabled, but the plot's event filter does the picking; pointSelected carries a plot index.
class ScatterPlotPicker : public QwtPlotPicker
{
    Q_OBJECT

public:
    explicit ScatterPlotPicker(QWidget* canvas);

signals:
    void pointSelected(int index);
};

} // namespace Tessaly
