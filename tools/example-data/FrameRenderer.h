#pragma once

#include "ExampleEvents.h"

#include <cstdint>
#include <random>
#include <vector>

namespace Tessaly::ExampleData {

// Draws camera frames, segmentation masks and fluorescence traces of single cells. The channel
// background is computed once; every frame adds its own sensor noise.
class FrameRenderer
{
public:
    explicit FrameRenderer(const ExampleSettings& settings);

    // Frame and mask of one cell, row by row (height x width). The mask is 255 inside, 0 outside.
    void render(const CellShape& cell, std::mt19937_64& rng, std::uint8_t* image, std::uint8_t* mask) const;

    // One raw trace per fluorescence channel: a Gaussian peak on a noisy baseline, in 16-bit counts.
    void renderTraces(const CellShape& cell, std::mt19937_64& rng, std::vector<std::int16_t> traces[3]) const;

private:
    ExampleSettings settings;
    std::vector<float> background;
};

} // namespace Tessaly::ExampleData
