#include "ui/PolygonPreview.h"

#include "core/ScaleModes.h"
#include "ui/FilterDockTexts.h"

#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>

namespace Tessaly {

PolygonPreview::PolygonPreview(QWidget* parent)
    : QWidget(parent)
{
    setFixedSize(sizeHint());
}

void PolygonPreview::setPolygon(const std::vector<PlanePoint>& vertices, int scaleXMode, int scaleYMode)
{
    points.clear();
    for (const PlanePoint& vertex : vertices) {
        const double x = scaleValue(vertex.first, scaleXMode);
        const double y = scaleValue(vertex.second, scaleYMode);
        if (std::isfinite(x) && std::isfinite(y))
            points.emplace_back(x, y);
    }
    update();
}

void PolygonPreview::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), QColor(FilterDockTexts::polygonFillColor).lighter(125));
    if (points.size() < 2)
        return;
    double minX = points.front().first, maxX = minX;
    double minY = points.front().second, maxY = minY;
    for (const PlanePoint& p : points) {
        minX = std::min(minX, p.first);
        maxX = std::max(maxX, p.first);
        minY = std::min(minY, p.second);
        maxY = std::max(maxY, p.second);
    }
    const double margin = 3.0;
    const double width = std::max(1.0, static_cast<double>(this->width()) - 2 * margin);
    const double height = std::max(1.0, static_cast<double>(this->height()) - 2 * margin);
    const double spanX = maxX > minX ? maxX - minX : 1.0;
    const double spanY = maxY > minY ? maxY - minY : 1.0;
    QPolygonF polygon;
    for (const PlanePoint& p : points) {
        // Y grows upwards in the plot and downwards on screen.
        polygon << QPointF(
            margin + (p.first - minX) / spanX * width, margin + height - (p.second - minY) / spanY * height);
    }
    const QColor line(FilterDockTexts::polygonLineColor);
    QColor fill(FilterDockTexts::polygonFillColor);
    painter.setPen(QPen(line, 1.2));
    painter.setBrush(fill);
    painter.drawPolygon(polygon);
}

} // namespace Tessaly
