#include "plot/TracePlot.h"

#include "core/FluorescenceChannels.h"
#include "plot/PseudoLogScaleEngine.h"

#include <QFont>
#include <QPen>
#include <QPointF>
#include <QVector>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_text.h>

namespace Tessaly {

namespace {

QwtText smallTitle(const char* text)
{
    QwtText title(QString::fromUtf8(text));
    QFont font = title.font();
    font.setPointSize(8);
    title.setFont(font);
    return title;
}

QColor channelColor(const std::string& channelName)
{
    const int wavelength = parseWavelength(channelName);
    if (wavelength < 1)
        return QColor(Qt::gray);
    const RgbColor rgb = wavelengthColor(wavelength);
    return QColor(rgb.r, rgb.g, rgb.b);
}

} // namespace

TracePlot::TracePlot(QWidget* parent)
    : QwtPlot(parent)
{
    setCanvasBackground(Qt::white);
    setMinimumHeight(180);
    setMaximumHeight(260);
    setMinimumWidth(260);

    QFont tickFont = axisFont(QwtPlot::xBottom);
    tickFont.setPointSize(7);
    for (const int axis : { QwtPlot::xBottom, QwtPlot::yLeft })
        setAxisFont(axis, tickFont);
    setAxisTitle(QwtPlot::xBottom, smallTitle(TracePlotText::timeAxisTitle));
    setAxisTitle(QwtPlot::yLeft, smallTitle(TracePlotText::fluorescenceAxisTitle));

    // Fluorescence spans a baseline near zero and peaks of tens of thousands: linear up to 100, then
    // logarithmic, so that both show.
    setAxisScaleEngine(QwtPlot::yLeft, new PseudoLogScaleEngine(100.0, 0.5));
    setAxisScale(QwtPlot::yLeft, fluorescenceMin, fluorescenceMax);
    setAxisAutoScale(QwtPlot::xBottom, true);

    auto* grid = new QwtPlotGrid;
    grid->setPen(QPen(Qt::gray, 0.0, Qt::DotLine));
    grid->attach(this);
}

TracePlot::~TracePlot() = default;

void TracePlot::setupChannels(const std::map<int, std::string>& channelNames,
    const std::map<int, double>& offsets, double sampleRateHz, const std::vector<std::string>& traceNames,
    bool preferRefined)
{
    removeCurves();
    channels.clear();
    sampleRate = sampleRateHz;

    // A std::map hands the channels out in rising number.
    for (const auto& [number, name] : channelNames) {
        TraceChannel channel;
        channel.channel = number;
        channel.channelName = name;
        channel.color = channelColor(name);
        const auto offset = offsets.find(number);
        channel.offset = offset != offsets.end() ? offset->second : 0.0;
        const ChannelTrace trace = chooseChannelTrace(number, traceNames, preferRefined);
        channel.traceName = trace.traceName;
        channel.refined = trace.refined;

        const char* format = trace.refined ? TracePlotText::refinedCurveTitle : TracePlotText::curveTitle;
        auto* curve
            = new QwtPlotCurve(QString::fromUtf8(format).arg(number).arg(QString::fromStdString(name)));
        curve->setPen(QPen(channel.color, 2.0, Qt::SolidLine));
        curve->setRenderHint(QwtPlotItem::RenderAntialiased, true);
        curve->attach(this);
        curve->hide();

        channels.push_back(std::move(channel));
        curves.push_back(curve);
    }
    replot();
}

void TracePlot::setupChannels(const FluorescenceChannelSettings& settings,
    const std::vector<std::string>& traceNames, bool preferRefined)
{
    setupChannels(settings.channelNames, settings.offsets, settings.sampleRate, traceNames, preferRefined);
}

void TracePlot::setTraces(const std::map<std::string, std::vector<float>>& traces)
{
    if (channels.empty() || traces.empty()) {
        hideAllCurves();
        replot();
        return;
    }

    // Without a usable rate the axis counts samples; its title stays, as the rate is a setting of the
    // file and not of the event.
    const double dt = sampleRate > 0.0 ? 1000000.0 / sampleRate : 1.0;
    for (std::size_t c = 0; c < channels.size(); ++c) {
        QwtPlotCurve* curve = curves[c];
        const auto trace = traces.find(channels[c].traceName);
        if (trace == traces.end() || trace->second.empty()) {
            curve->setSamples(QVector<QPointF>());
            curve->hide();
            continue;
        }
        const std::vector<float>& samples = trace->second;
        QVector<double> x(static_cast<int>(samples.size()));
        QVector<double> y(static_cast<int>(samples.size()));
        for (int i = 0; i < x.size(); ++i) {
            x[i] = i * dt;
            y[i] = samples[static_cast<std::size_t>(i)] + channels[c].offset;
        }
        curve->setSamples(x, y);
        curve->show();
    }

    setAxisAutoScale(QwtPlot::xBottom, true);
    setAxisScale(QwtPlot::yLeft, fluorescenceMin, fluorescenceMax);
    replot();
}

void TracePlot::clearTraces()
{
    hideAllCurves();
    replot();
}

void TracePlot::removeCurves()
{
    // Deleting a plot item detaches it.
    for (QwtPlotCurve* curve : curves)
        delete curve;
    curves.clear();
}

void TracePlot::hideAllCurves()
{
    for (QwtPlotCurve* curve : curves) {
        curve->setSamples(QVector<QPointF>());
        curve->hide();
    }
}

} // namespace Tessaly
