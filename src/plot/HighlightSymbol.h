#pragma once

#include <qwt_symbol.h>

namespace Tessaly {

// The mark of the selected event: a filled yellow dot inside a dark ring with a thin white rim.
// Yellow alone disappears on the bright end of most colour maps and a dark ring alone in dense dark
// regions; together one of them always stands out.
class HighlightSymbol : public QwtSymbol
{
public:
    HighlightSymbol();

    // Diameter of the dark ring, in pixels, and of the white rim around it.
    static constexpr int ringDiameter = 17;
    static constexpr int rimDiameter = 21;

    QRect boundingRect() const override;

protected:
    void renderSymbols(QPainter* painter, const QPointF* points, int numPoints) const override;
};

} // namespace Tessaly
