#pragma once

#include "plot/DotColorCache.h"

#include <cstdint>
#include <qwt_plot_spectrocurve.h>

namespace Tessaly {

// A spectro curve whose dots are round: the library's own draws squares. A dot's diameter is the
// pen width; dots are drawn in the order of the series, so later points cover earlier ones.
class RoundSpectroCurve : public QwtPlotSpectroCurve
{
public:
    using QwtPlotSpectroCurve::QwtPlotSpectroCurve;

    // The samples as set. Qwt 6.1 keeps the series store of a spectro curve behind a private base.
    size_t pointCount() const { return series().size(); }
    QwtPoint3D point(size_t index) const { return series().sample(index); }

protected:
    void drawDots(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
        const QRectF& canvasRect, int from, int to) const override;
    void dataChanged() override;

private:
    const QwtSeriesData<QwtPoint3D>& series() const;

    // Painting happens on the user interface thread only; the colours are kept between paints.
    mutable DotColorCache colorCache;
    std::uint64_t dataGeneration = 0;
};

} // namespace Tessaly
