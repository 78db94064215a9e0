#include "plot/TracePlot.h"

#include "core/FluorescenceChannels.h"
#include "plot/PseudoLogScaleEngine.h"

#include <QPointF>
#include <gtest/gtest.h>
#include <qwt_plot_curve.h>
#include <qwt_scale_div.h>
#include <qwt_text.h>

using namespace Tessaly;
namespace Text = Tessaly::TracePlotText;

namespace {

std::vector<QPointF> points(const QwtPlotCurve* curve)
{
    std::vector<QPointF> result;
    for (size_t i = 0; i < curve->dataSize(); ++i)
        result.push_back(curve->sample(static_cast<int>(i)));
    return result;
}

int attachedCurves(const QwtPlot& plot)
{
    return static_cast<int>(plot.itemList(QwtPlotItem::Rtti_PlotCurve).size());
}

// Three channels: 525 nm with a refined trace and an offset, an unnamed filter, and a red channel
// whose refined trace is missing.
void setUpThreeChannels(TracePlot& plot, double sampleRate)
{
    plot.setupChannels({ { 3, "FL3 700/75" }, { 1, "525/50" }, { 2, "unknown" } }, { { 1, 5.0 }, { 7, 9.0 } },
        sampleRate, { "fl1_median", "fl1_median_rf", "fl2_median", "fl3_median" }, true);
}

} // namespace

TEST(TracePlot, FixedAxesAndNoChannelsAtStart)
{
    TracePlot plot;
    EXPECT_FALSE(plot.hasChannels());
    EXPECT_EQ(plot.axisTitle(QwtPlot::xBottom).text(), QString::fromUtf8("Time [µs]"));
    EXPECT_EQ(plot.axisTitle(QwtPlot::yLeft).text(), "Fluorescence [a.u.]");
    const auto* engine = dynamic_cast<const PseudoLogScaleEngine*>(plot.axisScaleEngine(QwtPlot::yLeft));
    ASSERT_NE(engine, nullptr);
    EXPECT_EQ(engine->linearThreshold(), 100.0);
    EXPECT_EQ(engine->linearRange(), 0.5);
    EXPECT_FALSE(plot.axisAutoScale(QwtPlot::yLeft));
    EXPECT_TRUE(plot.axisAutoScale(QwtPlot::xBottom));

    // Samples without channels draw nothing and break nothing.
    plot.setTraces({ { "fl1_median", { 1.0f, 2.0f } } });
    EXPECT_EQ(attachedCurves(plot), 0);
}

TEST(TracePlot, ChannelsInRisingNumberWithColourTraceTitleAndOffset)
{
    TracePlot plot;
    setUpThreeChannels(plot, 1e6);
    ASSERT_TRUE(plot.hasChannels());
    const std::vector<TraceChannel>& channels = plot.traceChannels();
    ASSERT_EQ(channels.size(), 3u);
    ASSERT_EQ(plot.traceCurves().size(), 3u);

    EXPECT_EQ(channels[0].channel, 1);
    EXPECT_EQ(channels[0].channelName, "525/50");
    EXPECT_EQ(channels[0].traceName, "fl1_median_rf");
    EXPECT_TRUE(channels[0].refined);
    // 525 nm by hand: r = 15/70, g = 1, b = 0 at factor 1; floor(255 * (15/70)^0.8) = 74.
    EXPECT_EQ(channels[0].color, QColor(74, 255, 0));
    EXPECT_EQ(channels[0].offset, 5.0);

    EXPECT_EQ(channels[1].traceName, "fl2_median");
    EXPECT_EQ(channels[1].color, QColor(Qt::gray));
    EXPECT_EQ(channels[1].offset, 0.0); // no offset given for channel 2

    // Preferred but absent: the plain median trace, and a title without "refined".
    EXPECT_EQ(channels[2].traceName, "fl3_median");
    EXPECT_FALSE(channels[2].refined);
    EXPECT_EQ(channels[2].color, QColor(255, 0, 0)); // 700 nm: pure red at factor 1

    const std::vector<QwtPlotCurve*>& curves = plot.traceCurves();
    EXPECT_EQ(curves[0]->title().text(), "FL1 refined (525/50)");
    EXPECT_EQ(curves[1]->title().text(), "FL2 (unknown)");
    EXPECT_EQ(curves[2]->title().text(), "FL3 (FL3 700/75)");
    for (std::size_t c = 0; c < curves.size(); ++c) {
        EXPECT_FALSE(curves[c]->isVisible());
        EXPECT_EQ(curves[c]->plot(), &plot);
        EXPECT_EQ(curves[c]->pen().color(), channels[c].color);
    }
}

TEST(TracePlot, NewSetupReplacesTheCurves)
{
    TracePlot plot;
    setUpThreeChannels(plot, 1e6);
    plot.setupChannels({ { 4, "488" } }, {}, 1e6, {}, false);
    EXPECT_EQ(attachedCurves(plot), 1);
    ASSERT_EQ(plot.traceCurves().size(), 1u);
    EXPECT_EQ(plot.traceCurves()[0]->title().text(), "FL4 (488)");

    plot.setupChannels(std::map<int, std::string> {}, {}, 1e6, {}, false);
    EXPECT_FALSE(plot.hasChannels());
    EXPECT_EQ(attachedCurves(plot), 0);
}

TEST(TracePlot, SamplesOnAMicrosecondAxisWithOffsetsEachTraceItsOwnLength)
{
    TracePlot plot;
    setUpThreeChannels(plot, 2e6); // 2 MHz: one sample every 0.5 µs
    plot.setTraces({ { "fl1_median_rf", { 1.0f, 2.0f, 3.0f } }, { "fl3_median", { 10.0f, 20.0f } },
        { "fl1_median", { 99.0f } } });
    const std::vector<QwtPlotCurve*>& curves = plot.traceCurves();

    EXPECT_TRUE(curves[0]->isVisible());
    EXPECT_EQ(points(curves[0]),
        (std::vector<QPointF> { { 0.0, 6.0 }, { 0.5, 7.0 }, { 1.0, 8.0 } })); // offset 5 added
    EXPECT_FALSE(curves[1]->isVisible()); // fl2_median not given
    EXPECT_EQ(curves[1]->dataSize(), 0u);
    EXPECT_TRUE(curves[2]->isVisible());
    EXPECT_EQ(points(curves[2]), (std::vector<QPointF> { { 0.0, 10.0 }, { 0.5, 20.0 } }));

    // The next event lacks channel 3: its old samples must not stay on the plot.
    plot.setTraces({ { "fl1_median_rf", { 4.0f } }, { "fl3_median", {} } });
    EXPECT_EQ(points(curves[0]), (std::vector<QPointF> { { 0.0, 9.0 } }));
    EXPECT_FALSE(curves[2]->isVisible());
    EXPECT_EQ(curves[2]->dataSize(), 0u);
}

TEST(TracePlot, WithoutSampleRateTheAxisCountsSamples)
{
    for (const double rate : { 0.0, -5.0 }) {
        TracePlot plot;
        plot.setupChannels({ { 1, "525/50" } }, {}, rate, { "fl1_median" }, false);
        plot.setTraces({ { "fl1_median", { 7.0f, 8.0f, 9.0f } } });
        EXPECT_EQ(points(plot.traceCurves()[0]),
            (std::vector<QPointF> { { 0.0, 7.0 }, { 1.0, 8.0 }, { 2.0, 9.0 } }))
            << rate;
        EXPECT_EQ(plot.axisTitle(QwtPlot::xBottom).text(), QString::fromUtf8(Text::timeAxisTitle));
    }
}

TEST(TracePlot, TimeAxisFollowsTheTraceAndHighSamplesAreClipped)
{
    TracePlot plot;
    plot.resize(400, 220);
    plot.setupChannels({ { 1, "525/50" } }, {}, 1e6, { "fl1_median" }, false);
    std::vector<float> samples(160, 50.0f);
    samples[80] = 50000.0f;
    plot.setTraces({ { "fl1_median", samples } });
    plot.updateAxes();

    const QwtScaleDiv time = plot.axisScaleDiv(QwtPlot::xBottom);
    EXPECT_LE(time.lowerBound(), 0.0);
    EXPECT_GE(time.upperBound(), 159.0);
    const QwtScaleDiv fluorescence = plot.axisScaleDiv(QwtPlot::yLeft);
    EXPECT_EQ(fluorescence.lowerBound(), -10.0);
    EXPECT_EQ(fluorescence.upperBound(), 35000.0);
}

TEST(TracePlot, ClearingHidesAndEmptiesEveryCurve)
{
    TracePlot plot;
    setUpThreeChannels(plot, 1e6);
    const std::map<std::string, std::vector<float>> traces { { "fl1_median_rf", { 1.0f } },
        { "fl2_median", { 2.0f } }, { "fl3_median", { 3.0f } } };

    plot.setTraces(traces);
    plot.clearTraces();
    for (const QwtPlotCurve* curve : plot.traceCurves()) {
        EXPECT_FALSE(curve->isVisible());
        EXPECT_EQ(curve->dataSize(), 0u);
    }
    EXPECT_TRUE(plot.hasChannels()); // clearing samples keeps the channels

    plot.setTraces(traces);
    plot.setTraces({});
    for (const QwtPlotCurve* curve : plot.traceCurves()) {
        EXPECT_FALSE(curve->isVisible());
        EXPECT_EQ(curve->dataSize(), 0u);
    }
}

TEST(TracePlot, ChannelsFromMetadataSettings)
{
    TracePlot plot;
    plot.setupChannels(readFluorescenceChannelSettings({ { "channel_2_name", "FL2 593/46" },
                           { "baseline_2_offset", "100" }, { "sample_rate", "1000000" } }),
        { "fl2_median" }, false);
    ASSERT_EQ(plot.traceChannels().size(), 1u);
    EXPECT_EQ(plot.traceChannels()[0].channel, 2);
    EXPECT_EQ(plot.traceChannels()[0].offset, 100.0);
    EXPECT_EQ(plot.traceSampleRate(), 1e6);
    // 593 nm by hand: r = 1, g = 52/65 = 0.8, floor(255 * 0.8^0.8) = 213.
    EXPECT_EQ(plot.traceChannels()[0].color, QColor(255, 213, 0));
    plot.setTraces({ { "fl2_median", { 1.0f, 2.0f } } });
    EXPECT_EQ(points(plot.traceCurves()[0]), (std::vector<QPointF> { { 0.0, 101.0 }, { 1.0, 102.0 } }));
}
