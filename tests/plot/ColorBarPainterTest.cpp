#include "plot/ColorBarPainter.h"

#include "plot/ColorMaps.h"

#include <QImage>
#include <gtest/gtest.h>
#include <qwt_color_map.h>
#include <qwt_interval.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>

using namespace Tessaly;

namespace {

QImage grabbed(QwtScaleWidget& widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_ARGB32);
}

} // namespace

// The quick painting is only worth having if nobody can tell: for every map, both orientations
// and sizes that don't divide evenly, the widget shows the same pixels as its own painting.
TEST(ColorBarPainter, PaintsWhatTheWidgetPaints)
{
    const struct
    {
        QwtScaleDraw::Alignment alignment;
        QSize size;
        QwtInterval range;
        int barWidth;
    } cases[] = {
        { QwtScaleDraw::RightScale, { 90, 413 }, { 0.0, 3.7 }, 10 },
        { QwtScaleDraw::RightScale, { 70, 128 }, { -2.5e-4, 1.25e-3 }, 14 },
        { QwtScaleDraw::BottomScale, { 377, 80 }, { 10.0, 11.0 }, 10 },
    };
    for (const auto& c : cases) {
        for (int map = 0; map < 6; ++map) {
            QwtScaleWidget widget(c.alignment);
            widget.setTitle(QStringLiteral("Density"));
            widget.setScaleDiv(
                QwtLinearScaleEngine().divideScale(c.range.minValue(), c.range.maxValue(), 8, 5));
            widget.setColorBarEnabled(true);
            widget.setColorBarWidth(c.barWidth);
            widget.setColorMap(c.range, colorMapFor(map));
            widget.resize(c.size);
            const QImage own = grabbed(widget);
            new ColorBarPainter(&widget);
            const QImage quick = grabbed(widget);
            ASSERT_FALSE(own.isNull());
            EXPECT_EQ(own, quick) << "map " << map << ", " << c.size.width() << " x " << c.size.height();
        }
    }
}
