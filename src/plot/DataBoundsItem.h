#pragma once

#include "core/AxisRange.h"

#include <qwt_plot_item.h>

namespace Tessaly {

// An invisible plot item that tells the plot's auto scale where the data lie. The point curves take
// no part in the auto scale themselves: a log axis would stretch to its library limit for a single
// value at or below zero, and such a value can't be drawn there anyway. This item's bounds hold only
// what each axis can draw.
class DataBoundsItem : public QwtPlotItem
{
public:
    DataBoundsItem();

    int rtti() const override;
    // The x and y ranges; an invalid range has a negative extent, which the auto scale skips, so
    // that axis keeps the scale it was last given.
    void setRanges(const AxisRange& x, const AxisRange& y);
    QRectF boundingRect() const override;
    void draw(QPainter*, const QwtScaleMap&, const QwtScaleMap&, const QRectF&) const override { }

private:
    AxisRange xRange;
    AxisRange yRange;
};

} // namespace Tessaly
