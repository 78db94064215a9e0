#pragma once

#include "core/FilterRule.h"

#include <QWidget>
#include <vector>

namespace Tessaly {

// A thumbnail of a polygon gate, drawn in the axes' space in which it was drawn (so a polygon from
// log axes keeps its straight edges) and scaled to fill the widget.
class PolygonPreview : public QWidget
{
    Q_OBJECT

public:
    explicit PolygonPreview(QWidget* parent = nullptr);

    void setPolygon(const std::vector<PlanePoint>& vertices, int scaleXMode, int scaleYMode);
    QSize sizeHint() const override { return { 36, 26 }; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    // Vertices in plot space.
    std::vector<PlanePoint> points;
};

} // namespace Tessaly
