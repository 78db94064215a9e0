#include "calc/FLCompensation.h"

#include "calc/RefinementSettings.h"
#include "io/VQDReader.h"

#include <algorithm>
#include <cstdint>
#include <iostream>

namespace Tessaly {

namespace {

void report(const std::string& line)
{
    std::cerr << ("FLCompensation: " + line + '\n') << std::flush;
}

} // namespace

FLCompensation::FLCompensation(QObject* parent)
    : QObject(parent)
{
}

bool FLCompensation::compensate(
    VQDReader* reader, const std::vector<int>& channels, const SquareMatrix& matrix)
{
    if (!reader || channels.size() < 2 || !isSquare(matrix, channels.size()) || reader->eventCount() == 0)
        return false;
    SquareMatrix inverse;
    if (!invertMatrix(matrix, inverse)) {
        report("spillover matrix is singular");
        return false;
    }

    // Refined heights are better than the instrument's once they exist, so they are preferred.
    std::vector<const std::vector<double>*> sources;
    for (int channel : channels) {
        const std::string refined = channelFeature(channel, "_max_rf");
        const std::string name
            = reader->isComputedFeature(refined) ? refined : channelFeature(channel, "_max");
        const std::vector<double>& column = reader->getFeature(name);
        if (column.empty()) {
            report("no peak heights \"" + name + "\" to compensate");
            return false;
        }
        sources.push_back(&column);
    }

    const auto events = static_cast<std::int64_t>(reader->eventCount());
    std::vector<std::vector<double>> outputs(
        channels.size(), std::vector<double>(static_cast<std::size_t>(events)));
    constexpr std::int64_t progressStep = 256;
    for (std::int64_t begin = 0; begin < events; begin += progressStep) {
        emit progressChanged(static_cast<int>(begin * 100 / events));
        const std::int64_t end = std::min(begin + progressStep, events);
        compensateEvents(
            sources, inverse, static_cast<std::size_t>(begin), static_cast<std::size_t>(end), outputs);
    }
    // Stored only when all are done, so that a failure above leaves no feature behind.
    for (std::size_t c = 0; c < channels.size(); ++c)
        reader->setFeature(channelFeature(channels[c], "_max_ctc"), std::move(outputs[c]));
    emit progressChanged(100);
    return true;
}

} // namespace Tessaly
