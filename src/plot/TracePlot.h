#pragma once

#include <QColor>
#include <map>
#include <qwt_plot.h>
#include <string>
#include <vector>

class QwtPlotCurve;

namespace Tessaly {

struct FluorescenceChannelSettings;

// The trace plot's own texts, for the widget and for its tests.
namespace TracePlotText {
inline constexpr char timeAxisTitle[] = "Time [µs]";
inline constexpr char fluorescenceAxisTitle[] = "Fluorescence [a.u.]";
// %1 the channel number, %2 the channel's text.
inline constexpr char curveTitle[] = "FL%1 (%2)";
inline constexpr char refinedCurveTitle[] = "FL%1 refined (%2)";
} // namespace TracePlotText

// One fluorescence channel as the trace plot shows it.
struct TraceChannel
{
    std::string traceName; // the trace to show
    std::string channelName; // the channel's text from the metadata, such as "525/50"
    int channel = 0; // its number
    QColor color;
    double offset = 0.0; // added to every sample
    bool refined = false; // traceName is the refined trace
};

// The fluorescence traces of the selected event, one curve per channel in the colour of the channel's
// wavelength. The left axis is fixed: traces of different events stay comparable at a glance, and a
// peak beyond the scale is clipped rather than squeezing the others.
class TracePlot : public QwtPlot
{
    Q_OBJECT

public:
    // The fixed range of the fluorescence axis, in a.u.
    static constexpr double fluorescenceMin = -10.0;
    static constexpr double fluorescenceMax = 35000.0;

    explicit TracePlot(QWidget* parent = nullptr);
    ~TracePlot() override;

    // Replaces the channels and their curves, which start hidden. `channelNames` maps a channel
    // number to its text, `offsets` a channel number to the offset added to its samples (0.0 for a
    // channel that is missing), `sampleRateHz` is the sampling rate of the traces and `traceNames`
    // lists the traces of the dataset. A channel shows its refined trace when `preferRefined` is set
    // and the dataset has one.
    void setupChannels(const std::map<int, std::string>& channelNames, const std::map<int, double>& offsets,
        double sampleRateHz, const std::vector<std::string>& traceNames, bool preferRefined);
    // The same with the settings read from a file's metadata.
    void setupChannels(const FluorescenceChannelSettings& settings,
        const std::vector<std::string>& traceNames, bool preferRefined);

    // Shows one event's samples, by trace name. A channel whose trace is missing or empty is hidden.
    void setTraces(const std::map<std::string, std::vector<float>>& traces);
    // Empties and hides all curves.
    void clearTraces();

    bool hasChannels() const { return !channels.empty(); }
    const std::vector<TraceChannel>& traceChannels() const { return channels; }
    // One curve per channel, in the order of traceChannels().
    const std::vector<QwtPlotCurve*>& traceCurves() const { return curves; }
    double traceSampleRate() const { return sampleRate; }

private:
    void removeCurves();
    void hideAllCurves();

    double sampleRate = 0.0; // Hz
    std::vector<TraceChannel> channels;
    std::vector<QwtPlotCurve*> curves;
};

} // namespace Tessaly
