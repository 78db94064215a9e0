#pragma once

#include "calc/FLRefinementParams.h"
#include "io/IoTestBase.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Tessaly::Testing {

// A measurement of four cells whose refined peaks are worked out by hand. Samples are 1 µs apart
// (1 MHz), traces 20 samples long, so the trace centre is sample 10. The first image is 40 pixels of
// 0.5 µm wide: the channel centre lies at 10 µm.
//
// Channel 1 has a raw trace and a baseline offset of 10; channel 2 has peak features only. Every cell
// is 8 µm long. Of channel 1's events above 400, the one farthest from the channel centre (event 3,
// 8 µm in 4 µs) sets the speed, 2 µm/µs, with no spread: each cell's window is then 2 samples either
// side of (pos_x - 10) / 2 + 10.
//
//   event  pos_x  fl1_max  fl1_pos  window   trace samples (0 elsewhere)
//   0      14     1000     12       10..14   3: 900, 10: 20, 11: 150, 12: 200, 13: 120, 14: 30
//   1      6      900      8        6..10    5: 1000, 6: 300, 7: 100, 8: 50
//   2      10     300      10       8..12    none
//   3      18     800      14       12..16   13: 240, 14: 260, 15: 500, 16: 480, 17: 600
//
// Without a speed, each window is 0.05 * 20 = 1 sample either side of the recorded position.
class RefinementTest : public IoTest
{
protected:
    struct Layout
    {
        bool images = true;
        bool pixelSize = true;
        bool rawTrace = true;
    };

    std::string writeCells() { return writeCells(Layout {}); }
    std::string writeCells(const Layout& layout)
    {
        const std::string path = pathFor("cells.vqd");
        FixtureWriter writer(path);
        writer.column<double>("pos_x", { 14, 6, 10, 18 })
            .column<double>("size_x", { 8, 8, 8, 8 })
            .column<double>("deform", { 0.01, 0.02, 0.03, 0.04 })
            .column<double>("fl1_max", { 1000, 900, 300, 800 })
            .column<double>("fl1_pos", { 12, 8, 10, 14 })
            .column<double>("fl1_max_ctc", { -1, -1, -1, -1 })
            .column<double>("fl2_max", { 100, 100, 100, 100 })
            .column<double>("fl2_pos", { 3, 4, 5, 6 })
            .column<double>("fl3_max_rf", { 7, 7, 7, 7 })
            .stringAttribute("fluorescence:sample rate", "1000000")
            .stringAttribute("fluorescence:baseline 1 offset", "10");
        if (layout.pixelSize)
            writer.floatAttribute("imaging:pixel size", 0.5);
        if (layout.images)
            writer.imageStack("image", 4, 2, 40, std::vector<std::uint8_t>(4 * 2 * 40, 100));
        if (layout.rawTrace)
            writer.trace<std::int16_t>("fl1_raw", rawTraces());
        writer.trace<std::int16_t>(
            "fl2_median", std::vector<std::vector<std::int16_t>>(4, std::vector<std::int16_t>(20, 1)));
        writer.close();
        return path;
    }

    static std::vector<std::vector<std::int16_t>> rawTraces()
    {
        std::vector<std::vector<std::int16_t>> traces(4, std::vector<std::int16_t>(20, 0));
        const auto set = [&](int event, std::vector<std::pair<int, std::int16_t>> samples) {
            for (const auto& [i, value] : samples)
                traces[static_cast<std::size_t>(event)][static_cast<std::size_t>(i)] = value;
        };
        set(0, { { 3, 900 }, { 10, 20 }, { 11, 150 }, { 12, 200 }, { 13, 120 }, { 14, 30 } });
        set(1, { { 5, 1000 }, { 6, 300 }, { 7, 100 }, { 8, 50 } });
        set(3, { { 13, 240 }, { 14, 260 }, { 15, 500 }, { 16, 480 }, { 17, 600 } });
        return traces;
    }

    // Every filter off, so that the refined traces are the raw ones.
    static FLRefinementParams unfiltered()
    {
        FLRefinementParams params;
        params.hampel1 = params.hampel2 = params.savitzkyGolay = false;
        return params;
    }
};

} // namespace Tessaly::Testing
