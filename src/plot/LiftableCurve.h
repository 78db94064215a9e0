#pragma once

#include <qwt_plot_curve.h>

namespace Tessaly {

// A curve that can be lifted off the plot's own drawing while it stays an item of the plot: lifted,
// it still counts for the axes' automatic scale, so that lifting it does not rescale the plot under
// the mouse, but it is drawn elsewhere (on a layer over the canvas). Renderings of the plot into
// files leave a lifted curve out too.
class LiftableCurve : public QwtPlotCurve
{
public:
    void setLifted(bool on) { lifted = on; }
    bool isLifted() const { return lifted; }

    void draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
        const QRectF& canvasRect) const override;

private:
    bool lifted = false;
};

} // namespace Tessaly
