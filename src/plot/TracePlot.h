#pragma once

#include <qwt_plot.h>

namespace Tessaly {

// The fluorescence traces of the selected event.
class TracePlot : public QwtPlot
{
    Q_OBJECT

public:
    explicit TracePlot(QWidget* parent = nullptr);

    // Empties and hides all curves.
    void clearTraces();
};

} // namespace Tessaly
