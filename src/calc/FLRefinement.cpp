#include "calc/FLRefinement.h"

#include "calc/FluorescencePeaks.h"
#include "calc/RefinementSettings.h"
#include "core/FluorescenceChannels.h"
#include "io/VQDMetadata.h"
#include "io/VQDReader.h"

#include <QtConcurrent/QtConcurrentMap>
#include <algorithm>
#include <cstdint>
#include <limits>
#include <numeric>

namespace Tessaly {

namespace {

// Events per progress step, read from the file at once and refined in parallel.
constexpr std::int64_t progressStep = 256;

// Value i of a column, NaN where the column is missing or too short.
double at(const std::vector<double>& column, std::size_t i)
{
    return i < column.size() ? column[i] : std::numeric_limits<double>::quiet_NaN();
}

// Where the channel runs along the frame: the middle of the first image, in µm.
double channelCentre(VQDReader& reader, double pixelSize)
{
    if (!(pixelSize > 0.0) || !reader.hasImage())
        return 0.0;
    int width = 0;
    int height = 0;
    if (reader.getImage(0, &width, &height).empty())
        return 0.0;
    return width * 0.5 * pixelSize;
}

} // namespace

FLRefinement::FLRefinement(QObject* parent)
    : QObject(parent)
{
}

bool FLRefinement::refine(VQDReader* reader, const VQDMetadata& metadata, const FLRefinementParams& params)
{
    m_cancelled = false;
    if (!reader)
        return false;

    const FluorescenceSampling sampling = readFluorescenceSampling(metadata.fluorescence);
    const double dt = sampling.sampleTime;
    const double centreX = channelCentre(*reader, readPixelSize(metadata.imaging));
    const std::size_t traceLength = static_cast<std::size_t>(reader->traceLength());
    const double traceCentreTime = static_cast<double>(traceLength / 2) * dt;
    const std::vector<double>& posX = reader->getFeature("pos_x");
    const std::vector<double>& sizeX = reader->getFeature("size_x");

    const std::vector<int> channels = refinementChannels(reader->featureNames());
    const std::vector<std::string> traces = reader->traceNames();
    std::vector<bool> hasTrace(channels.size(), false);
    for (std::size_t c = 0; c < channels.size(); ++c) {
        const std::string raw = rawTraceName(channels[c]);
        if (std::find(traces.begin(), traces.end(), raw) != traces.end()) {
            reader->addTraceAlias(refinedTraceName(channels[c]), raw);
            hasTrace[c] = true;
        }
    }
    if (channels.empty())
        return false;
    reader->setTraceProcessing(params.traceProcessing());

    std::vector<ChannelPeaks> peaks;
    for (int channel : channels)
        peaks.push_back({ &reader->getFeature(channelFeature(channel, "_max")),
            &reader->getFeature(channelFeature(channel, "_pos")) });
    const SpeedEstimate speed
        = estimateSpeed(peaks, params.flMaxThreshold, posX, centreX, traceCentreTime, traceLength);
    if (m_cancelled)
        return false;
    const bool cellWindows = speed.speed > 0.0 && !posX.empty() && !sizeX.empty();
    const double defaultHalfWidth = 0.05 * static_cast<double>(traceLength);

    // The filters as the reader runs them for the alias, applied here instead so that they run on all
    // cores while the next block of traces is read.
    const TraceProcessing processing = reader->traceProcessing();
    const auto events = static_cast<std::int64_t>(reader->eventCount());
    const auto channelCount = static_cast<std::int64_t>(channels.size());
    std::vector<std::size_t> block;
    for (std::int64_t index = 0; index < channelCount; ++index) {
        const int channel = channels[static_cast<std::size_t>(index)];
        const auto offset = sampling.offsets.find(channel);
        const double baseline = offset == sampling.offsets.end() ? 0.0 : offset->second;
        const std::vector<double>& recorded = *peaks[static_cast<std::size_t>(index)].pos;
        const std::string alias = refinedTraceName(channel);
        const bool searchable = hasTrace[static_cast<std::size_t>(index)];

        std::vector<double> maxima(static_cast<std::size_t>(events));
        std::vector<double> positions(static_cast<std::size_t>(events));
        std::vector<double> widths(static_cast<std::size_t>(events));
        const auto refineEvent = [&](std::size_t i, const std::vector<float>& raw) {
            // An event whose trace can't be searched keeps the instrument's position, with no height.
            PeakResult peak { 0.0, at(recorded, i), 0.0 };
            PeakWindow window;
            const bool placed = (cellWindows
                                    && cellWindow(at(posX, i), at(sizeX, i), centreX, speed.speed,
                                        speed.spread, dt, traceLength, window))
                || recordedWindow(at(recorded, i), defaultHalfWidth, dt, traceLength, window);
            PeakResult found;
            if (placed && !raw.empty()
                && findPeak(applyTraceProcessing(raw, processing), window, baseline, dt, found))
                peak = found;
            maxima[i] = peak.max;
            positions[i] = peak.pos;
            widths[i] = peak.width;
        };

        for (std::int64_t begin = 0; begin < events; begin += progressStep) {
            if (m_cancelled)
                return false;
            emit progressChanged(
                static_cast<int>(index * 100 / channelCount + (100 / channelCount) * begin / events));
            const auto first = static_cast<std::size_t>(begin);
            const auto count = static_cast<std::size_t>(std::min(progressStep, events - begin));
            const std::vector<std::vector<float>> rows
                = searchable ? reader->getRawTraces(alias, first, count) : std::vector<std::vector<float>>();
            block.resize(count);
            std::iota(block.begin(), block.end(), std::size_t { 0 });
            const std::vector<float> none;
            QtConcurrent::blockingMap(block, [&](std::size_t k) {
                if (!m_cancelled)
                    refineEvent(first + k, k < rows.size() ? rows[k] : none);
            });
        }
        if (m_cancelled)
            return false;
        reader->setFeature(channelFeature(channel, "_max_rf"), std::move(maxima));
        reader->setFeature(channelFeature(channel, "_pos_rf"), std::move(positions));
        reader->setFeature(channelFeature(channel, "_width_rf"), std::move(widths));
    }
    emit progressChanged(100);
    return true;
}

} // namespace Tessaly
