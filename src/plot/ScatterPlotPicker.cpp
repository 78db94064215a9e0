#include "plot/ScatterPlotPicker.h"

#include <qwt_picker_machine.h>
#include <qwt_plot.h>

namespace Tessaly {

ScatterPlotPicker::ScatterPlotPicker(QWidget* canvas)
    : QwtPlotPicker(QwtPlot::xBottom, QwtPlot::yLeft, QwtPicker::NoRubberBand, QwtPicker::AlwaysOff, canvas)
{
    setStateMachine(new QwtPickerClickPointMachine);
}

} // namespace Tessaly
