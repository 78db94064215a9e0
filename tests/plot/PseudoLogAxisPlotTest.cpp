#include "plot/PseudoLogScaleEngine.h"

#include <QImage>
#include <QLocale>
#include <QVector>
#include <cmath>
#include <gtest/gtest.h>
#include <qwt_plot.h>
#include <qwt_plot_curve.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>
#include <qwt_text.h>

using namespace Tessaly;

namespace {

// Labels are formatted by the default locale; the C locale has no group separators.
class CLocale
{
public:
    CLocale() { QLocale::setDefault(QLocale::c()); }
    ~CLocale() { QLocale::setDefault(previous); }

private:
    QLocale previous;
};

void layOut(QwtPlot& plot)
{
    plot.resize(480, 320);
    plot.replot();
    plot.updateLayout();
}

// Position of a value on the canvas as a fraction of the axis length.
double axisFraction(const QwtPlot& plot, double value)
{
    const QwtScaleMap map = plot.canvasMap(QwtPlot::xBottom);
    return (map.transform(value) - map.p1()) / (map.p2() - map.p1());
}

} // namespace

TEST(PseudoLogAxisPlot, FixedAxisHasTheLadderTicksAndLabels)
{
    const CLocale locale;
    QwtPlot plot;
    plot.setAxisScaleEngine(QwtPlot::xBottom, new PseudoLogScaleEngine(100.0, 0.5));
    plot.setAxisScale(QwtPlot::xBottom, -5000.0, 5000.0, 1000.0);
    layOut(plot);

    const QList<double> ticks = plot.axisScaleDiv(QwtPlot::xBottom).ticks(QwtScaleDiv::MajorTick);
    ASSERT_EQ(ticks, (QList<double> { -5000.0, -100.0, 0.0, 100.0, 1000.0, 5000.0 }));
    QStringList labels;
    for (const double tick : ticks)
        labels << plot.axisScaleDraw(QwtPlot::xBottom)->label(tick).text();
    EXPECT_EQ(labels, (QStringList { "-5000", "-100", "0", "100", "1000", "5000" }));

    // The axis draws in transformed space: t(±5000) = ±(log10(5000) - 1.5) = ±2.19897 and
    // t(100) = 0.5, so 100 lies at (0.5 + 2.19897) / 4.39794 = 0.61369 of the axis, zero in the middle.
    EXPECT_NEAR(axisFraction(plot, 100.0), 0.61369, 1e-4);
    EXPECT_NEAR(axisFraction(plot, 0.0), 0.5, 1e-9);
}

TEST(PseudoLogAxisPlot, AutoScaledAxisFollowsTheData)
{
    QwtPlot plot;
    plot.setAxisScaleEngine(QwtPlot::xBottom, new PseudoLogScaleEngine(100.0, 0.5));
    auto* curve = new QwtPlotCurve;
    curve->setSamples(QVector<QPointF> { QPointF(0.0, 1.0), QPointF(250.0, 2.0), QPointF(5000.0, 3.0) });
    curve->attach(&plot);
    layOut(plot);

    // Data from 0 to 5000 with QwtPlot's 8 major steps: step 1000, bounds already aligned.
    const QwtScaleDiv div = plot.axisScaleDiv(QwtPlot::xBottom);
    EXPECT_EQ(div.lowerBound(), 0.0);
    EXPECT_EQ(div.upperBound(), 5000.0);
    EXPECT_EQ(div.ticks(QwtScaleDiv::MajorTick), (QList<double> { 0.0, 100.0, 1000.0, 5000.0 }));
    EXPECT_FALSE(div.ticks(QwtScaleDiv::MinorTick).isEmpty());
    // t(5000) = 2.19897, so 100 (at 0.5) lies at 0.5 / 2.19897 = 0.22738 of the axis.
    EXPECT_NEAR(axisFraction(plot, 100.0), 0.22738, 1e-4);
}

TEST(PseudoLogAxisPlot, RenderedAxisHasTickMarksAtTheDecadesOnly)
{
    QwtPlot plot;
    plot.setAxisScaleEngine(QwtPlot::xBottom, new PseudoLogScaleEngine(100.0, 0.5));
    plot.setAxisScale(QwtPlot::xBottom, -5000.0, 5000.0, 1000.0);
    plot.setAxisMaxMinor(QwtPlot::xBottom, 0);
    layOut(plot);
    const QImage image = plot.grab().toImage();
    ASSERT_FALSE(image.isNull());

    const QwtScaleWidget* axis = plot.axisWidget(QwtPlot::xBottom);
    const QwtScaleDraw* draw = axis->scaleDraw();
    const QPoint origin = axis->geometry().topLeft();
    const int backbone = qRound(draw->pos().y());
    const int tickLength = qRound(draw->tickLength(QwtScaleDiv::MajorTick));
    ASSERT_GE(tickLength, 4);

    // Rows inside the tick length below the backbone; a column has a mark there if it differs from
    // the background, taken between the ticks -100 and 0 (where neither ticks nor labels are).
    const auto columnOf = [&](double value) { return qRound(draw->scaleMap().transform(value)); };
    const QPoint background
        = origin + QPoint((columnOf(-100.0) + columnOf(0.0)) / 2, backbone + tickLength / 2);
    const int backgroundGray = qGray(image.pixel(background));
    const auto markedRows = [&](double value) {
        int marked = 0;
        for (int row = backbone + 2; row < backbone + tickLength - 1; ++row) {
            bool differs = false;
            for (int dx = -1; dx <= 1; ++dx) {
                const QPoint p = origin + QPoint(columnOf(value) + dx, row);
                differs = differs || std::abs(qGray(image.pixel(p)) - backgroundGray) > 60;
            }
            marked += differs ? 1 : 0;
        }
        return marked;
    };
    const int rows = tickLength - 3;
    for (const double tick : { -5000.0, -100.0, 0.0, 100.0, 1000.0, 5000.0 })
        EXPECT_EQ(markedRows(tick), rows) << tick;
    // Where a linear axis with step 1000 would mark, this one does not.
    for (const double value : { -3000.0, -1000.0, 2000.0, 3000.0 })
        EXPECT_EQ(markedRows(value), 0) << value;
}
