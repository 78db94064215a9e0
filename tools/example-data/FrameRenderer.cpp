#include "FrameRenderer.h"

#include <algorithm>
#include <cmath>

namespace Tessaly::ExampleData {

FrameRenderer::FrameRenderer(const ExampleSettings& s)
    : settings(s)
    , background(static_cast<std::size_t>(s.frameWidth) * s.frameHeight)
{
    // The channel is a bright band between two darker walls, with faint horizontal stripes of the
    // illumination and a slight gradient along the flow.
    const double centreRow = 0.5 * (s.frameHeight - 1);
    const double halfChannelPx = 0.5 * s.channelWidth / s.pixelSize;
    for (int y = 0; y < s.frameHeight; ++y) {
        const double distance = std::abs(y - centreRow);
        const double wall = 1.0 / (1.0 + std::exp((distance - halfChannelPx) / 1.5));
        const double stripes = 2.0 * std::sin(y * 0.9);
        for (int x = 0; x < s.frameWidth; ++x) {
            const double gradient = 4.0 * x / std::max(1, s.frameWidth - 1);
            background[static_cast<std::size_t>(y) * s.frameWidth + x]
                = static_cast<float>(55.0 + 50.0 * wall + stripes * wall + gradient);
        }
    }
}

void FrameRenderer::render(
    const CellShape& cell, std::mt19937_64& rng, std::uint8_t* image, std::uint8_t* mask) const
{
    std::normal_distribution<float> noise(0.0f, 2.5f);
    const int width = settings.frameWidth;
    const int height = settings.frameHeight;
    const double cx = cell.centreX / settings.pixelSize;
    const double cy = 0.5 * (height - 1) + cell.centreY / settings.pixelSize;
    const double ax = cell.semiAxisX / settings.pixelSize;
    const double ay = cell.semiAxisY / settings.pixelSize;
    const double bodyContrast = cell.brightness - 105.0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const std::size_t at = static_cast<std::size_t>(y) * width + x;
            const double dx = (x - cx) / ax;
            const double dy = (y - cy) / ay;
            // Normalised elliptic radius: 1 on the outline.
            const double r = std::sqrt(dx * dx + dy * dy);
            double value = background[at];
            if (r < 1.0)
                value += bodyContrast + 4.0 * std::cos(5.0 * dx) * std::sin(4.0 * dy);
            // A dark membrane ring and a faint bright halo outside it, as in bright-field images.
            value -= 35.0 * std::exp(-std::pow((r - 1.0) / 0.07, 2));
            value += 10.0 * std::exp(-std::pow((r - 1.2) / 0.12, 2));
            value += noise(rng);
            image[at] = static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
            mask[at] = r <= 1.0 ? 255 : 0;
        }
    }
}

void FrameRenderer::renderTraces(
    const CellShape& cell, std::mt19937_64& rng, std::vector<std::int16_t> traces[3]) const
{
    std::normal_distribution<double> noise(0.0, 6.0);
    const double dt = 1e6 / settings.traceSampleRate;
    for (int c = 0; c < 3; ++c) {
        traces[c].resize(static_cast<std::size_t>(settings.traceLength));
        // A full width at half maximum w belongs to a Gaussian of sigma w / 2.3548.
        const double sigma = std::max(0.5, cell.flWidth[c] / 2.3548);
        for (int i = 0; i < settings.traceLength; ++i) {
            const double t = i * dt - cell.flPosition[c];
            const double value = cell.flPeak[c] * std::exp(-0.5 * t * t / (sigma * sigma)) + noise(rng);
            traces[c][static_cast<std::size_t>(i)]
                = static_cast<std::int16_t>(std::clamp(std::lround(value), -32768L, 32767L));
        }
    }
}

} // namespace Tessaly::ExampleData
