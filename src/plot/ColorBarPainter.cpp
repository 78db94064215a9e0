#include "plot/ColorBarPainter.h"

#include <QEvent>
#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <qwt_color_map.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>

namespace Tessaly {

ColorBarPainter::ColorBarPainter(QwtScaleWidget* widget_)
    : QObject(widget_)
    , widget(widget_)
{
    widget->installEventFilter(this);
}

void ColorBarPainter::drawColorBar(const QwtScaleWidget& widget, QPainter* painter, const QRectF& rect)
{
    const QwtColorMap* map = widget.colorMap();
    const QwtInterval interval = widget.colorBarInterval().normalized();
    if (!map || !interval.isValid())
        return;
    const QRect device = rect.toAlignedRect();
    if (device.isEmpty())
        return;
    QImage bar(device.size(), QImage::Format_ARGB32_Premultiplied);
    bar.fill(Qt::transparent);
    // Each row (or column) takes the colour of the value its pixel centre line stands for; the
    // map runs from the rectangle's bottom (or left) to its top (or right), as the scale does.
    QwtScaleMap scaleMap = widget.scaleDraw()->scaleMap();
    const QVector<QRgb> table
        = map->format() == QwtColorMap::Indexed ? map->colorTable(interval) : QVector<QRgb>();
    const auto colorAt = [&](double value) {
        const QRgb rgb = map->format() == QwtColorMap::RGB
            ? map->rgb(interval, value)
            : table.value(static_cast<int>(map->colorIndex(interval, value)));
        return qPremultiply(rgb);
    };
    if (widget.scaleDraw()->orientation() == Qt::Horizontal) {
        scaleMap.setPaintInterval(rect.left(), rect.right());
        for (int x = device.left(); x <= device.right(); ++x) {
            const QRgb color = colorAt(scaleMap.invTransform(x));
            for (int y = 0; y < device.height(); ++y)
                reinterpret_cast<QRgb*>(bar.scanLine(y))[x - device.left()] = color;
        }
    } else {
        scaleMap.setPaintInterval(rect.bottom(), rect.top());
        for (int y = device.top(); y <= device.bottom(); ++y) {
            const QRgb color = colorAt(scaleMap.invTransform(y));
            QRgb* line = reinterpret_cast<QRgb*>(bar.scanLine(y - device.top()));
            std::fill(line, line + device.width(), color);
        }
    }
    painter->drawImage(rect, bar);
}

bool ColorBarPainter::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != widget || event->type() != QEvent::Paint || !widget->isColorBarEnabled()
        || widget->colorBarWidth() <= 0 || !widget->colorBarInterval().isValid())
        return QObject::eventFilter(watched, event);

    // What the widget's own painting does, with the bar drawn here.
    QPainter painter(widget);
    painter.setClipRegion(static_cast<QPaintEvent*>(event)->region());
    QStyleOption option;
    option.initFrom(widget);
    widget->style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, widget);
    widget->scaleDraw()->draw(&painter, widget->palette());
    drawColorBar(*widget, &painter, widget->colorBarRect(widget->contentsRect()));
    QRect titleRect = widget->contentsRect();
    if (widget->scaleDraw()->orientation() == Qt::Horizontal) {
        titleRect.setLeft(titleRect.left() + widget->startBorderDist());
        titleRect.setWidth(titleRect.width() - widget->endBorderDist());
    } else {
        titleRect.setTop(titleRect.top() + widget->startBorderDist());
        titleRect.setHeight(titleRect.height() - widget->endBorderDist());
    }
    if (!widget->title().isEmpty())
        widget->drawTitle(&painter, widget->scaleDraw()->alignment(), titleRect);
    return true;
}

} // namespace Tessaly
