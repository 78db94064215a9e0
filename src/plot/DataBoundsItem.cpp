#include "plot/DataBoundsItem.h"

namespace Tessaly {

DataBoundsItem::DataBoundsItem()
{
    setItemAttribute(QwtPlotItem::AutoScale, true);
    setItemAttribute(QwtPlotItem::Legend, false);
}

int DataBoundsItem::rtti() const
{
    return QwtPlotItem::Rtti_PlotUserItem + 1;
}

void DataBoundsItem::setRanges(const AxisRange& x, const AxisRange& y)
{
    xRange = x;
    yRange = y;
}

QRectF DataBoundsItem::boundingRect() const
{
    const double left = xRange.isValid() ? xRange.low : 0.0;
    const double width = xRange.isValid() ? xRange.high - xRange.low : -1.0;
    const double top = yRange.isValid() ? yRange.low : 0.0;
    const double height = yRange.isValid() ? yRange.high - yRange.low : -1.0;
    return QRectF(left, top, width, height);
}

} // namespace Tessaly
