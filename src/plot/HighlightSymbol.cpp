#include "plot/HighlightSymbol.h"

#include <QPainter>
#include <QPen>

namespace Tessaly {

namespace {

const QColor dotColor(254, 204, 0);
const QColor ringColor(35, 38, 46);
constexpr int dotDiameter = 12;
constexpr double ringWidth = 2.0;
constexpr double rimWidth = 1.5;

} // namespace

HighlightSymbol::HighlightSymbol()
    : QwtSymbol(QwtSymbol::Ellipse, QBrush(dotColor), QPen(dotColor, 2.0), QSize(dotDiameter, dotDiameter))
{
}

QRect HighlightSymbol::boundingRect() const
{
    const int extent = rimDiameter + 2 * static_cast<int>(rimWidth + 1.0);
    return QRect(-extent / 2, -extent / 2, extent, extent);
}

void HighlightSymbol::renderSymbols(QPainter* painter, const QPointF* points, int numPoints) const
{
    QwtSymbol::renderSymbols(painter, points, numPoints);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->setBrush(Qt::NoBrush);
    const double ringRadius = ringDiameter / 2.0;
    const double rimRadius = rimDiameter / 2.0;
    for (int i = 0; i < numPoints; ++i) {
        painter->setPen(QPen(Qt::white, rimWidth));
        painter->drawEllipse(points[i], rimRadius, rimRadius);
        painter->setPen(QPen(ringColor, ringWidth));
        painter->drawEllipse(points[i], ringRadius, ringRadius);
    }
    painter->restore();
}

} // namespace Tessaly
