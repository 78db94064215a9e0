#pragma once

#include <QObject>

class QPainter;
class QRectF;
class QwtScaleWidget;

namespace Tessaly {

// Paints a scale widget that shows a colour bar in place of the widget's own painting, with the
// bar filled row by row in memory. The library draws the bar as one line per pixel row through
// a painter, which takes milliseconds at every refresh of a coloured plot; the rows of an image
// come out the same, pixel for pixel. Scale, labels and title are drawn by the widget's own
// parts as before. A widget without a colour bar paints itself.
class ColorBarPainter : public QObject
{
public:
    explicit ColorBarPainter(QwtScaleWidget* widget);

    // The colour bar of `widget` into `rect`, as the widget itself would draw it.
    static void drawColorBar(const QwtScaleWidget& widget, QPainter* painter, const QRectF& rect);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QwtScaleWidget* widget;
};

} // namespace Tessaly
