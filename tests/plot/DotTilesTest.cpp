#include "plot/DotTiles.h"

#include "plot/PixelBlend.h"

#include <gtest/gtest.h>
#include <random>
#include <set>
#include <tuple>
#include <vector>

using namespace Tessaly;

namespace {

// Source-over as the raster painter defines it, channel by channel: x * a / 255 rounded as
// (t + (t >> 8) + 0x80) >> 8 with t = x * a.
std::uint32_t referenceOver(std::uint32_t src, std::uint32_t dst)
{
    const std::uint32_t inverse = 255u - (src >> 24);
    std::uint32_t out = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t t = ((dst >> shift) & 0xffu) * inverse;
        out |= (((src >> shift) & 0xffu) + ((t + (t >> 8) + 0x80u) >> 8)) << shift;
    }
    return out;
}

std::uint32_t premultiplied(std::mt19937& rng)
{
    const std::uint32_t alpha = std::uniform_int_distribution<std::uint32_t>(0, 255)(rng);
    // The extremes are the painter's shortcuts: transparent and opaque pixels.
    const std::uint32_t a = alpha < 40 ? 0 : alpha > 215 ? 255 : alpha;
    std::uint32_t pixel = a << 24;
    for (int shift = 0; shift < 24; shift += 8)
        pixel |= std::uniform_int_distribution<std::uint32_t>(0, a)(rng) << shift;
    return pixel;
}

// A layer of one sprite, a square of `extent` pixels, whose blends are recorded per pixel.
struct RecordingLayer
{
    int width;
    int extent;
    std::vector<std::uint32_t> cover;
    std::vector<std::uint32_t> opaque;
    mutable std::vector<std::vector<std::uint32_t>> blendsAt; // per layer pixel, the dots' colours

    void blend(const DotStamp& stamp, int left, int top, int right, int bottom) const
    {
        for (int y = std::max(top, int(stamp.top)); y < std::min(bottom, stamp.top + extent); ++y) {
            for (int x = std::max(left, int(stamp.left)); x < std::min(right, stamp.left + extent); ++x) {
                if (cover[y - stamp.top] & (1u << (x - stamp.left)))
                    blendsAt[static_cast<std::size_t>(y) * width + x].push_back(stamp.color);
            }
        }
    }
    const std::uint32_t* coverRows(const DotStamp&) const { return cover.data(); }
    const std::uint32_t* opaqueRows(const DotStamp& stamp) const
    {
        return stamp.color & 0x80000000u ? opaque.data() : nullptr;
    }
};

} // namespace

TEST(PixelBlend, RowsBlendExactlyAsThePainter)
{
    std::mt19937 rng(3);
    // Lengths around the groups of four and eight, including none.
    for (const int n : { 0, 1, 3, 4, 5, 8, 11, 16, 21 }) {
        SCOPED_TRACE(n);
        std::vector<std::uint32_t> src(n), dst(n), coverage32(n);
        std::vector<std::uint8_t> coverage(n);
        for (int i = 0; i < n; ++i) {
            src[i] = premultiplied(rng);
            dst[i] = premultiplied(rng);
            coverage[i] = static_cast<std::uint8_t>(premultiplied(rng) >> 24);
        }
        std::vector<std::uint16_t> src16(4 * n), inverse16(4 * n);
        for (int i = 0; i < n; ++i) {
            for (int c = 0; c < 4; ++c) {
                src16[4 * i + c] = static_cast<std::uint16_t>((src[i] >> (8 * c)) & 0xff);
                inverse16[4 * i + c] = static_cast<std::uint16_t>(255 - (src[i] >> 24));
            }
        }
        std::vector<std::uint32_t> expected(n);
        for (int i = 0; i < n; ++i)
            expected[i] = referenceOver(src[i], dst[i]);

        std::vector<std::uint32_t> out = dst;
        PixelBlend::overRow(out.data(), src.data(), n);
        EXPECT_EQ(out, expected);
        out = dst;
        PixelBlend::overRowPrepared(out.data(), src16.data(), inverse16.data(), n);
        EXPECT_EQ(out, expected);
#if defined(TESSALY_PIXELBLEND_AVX2)
        if (PixelBlend::hasAvx2() && n % 8 == 0) {
            out = dst;
            PixelBlend::overRowPrepared8(out.data(), src16.data(), inverse16.data(), n);
            EXPECT_EQ(out, expected);
        }
#endif
        const std::uint32_t color = premultiplied(rng) | 0x40000000u;
        for (int i = 0; i < n; ++i)
            expected[i] = referenceOver(PixelBlend::byteMul(color, coverage[i]), dst[i]);
        out = dst;
        PixelBlend::coverageOverRow(out.data(), coverage.data(), color, n);
        EXPECT_EQ(out, expected);
#if defined(TESSALY_PIXELBLEND_AVX2)
        if (PixelBlend::hasAvx2() && n % 8 == 0) {
            std::vector<std::uint16_t> coverage16(4 * n);
            for (int i = 0; i < 4 * n; ++i)
                coverage16[i] = coverage[i / 4];
            out = dst;
            PixelBlend::coverageOverRowPrepared8(out.data(), coverage16.data(), color, n);
            EXPECT_EQ(out, expected);
        }
#endif
    }
}

TEST(DotTiles, EveryPixelGetsItsDotsInSeriesOrder)
{
    // A layer of 3 x 2 tiles with a ragged right and bottom edge; dots of 5 x 5 pixels straddle
    // tile borders, the layer's edges and lie beyond them; some are marked as not drawn. A long
    // series is sorted in several chunks on the pool.
    const int width = 150;
    const int height = 100;
    const int extent = 5;
    for (const std::size_t count : { 3000, 150000 }) {
        SCOPED_TRACE(count);
        std::mt19937 rng(5);
        std::uniform_int_distribution<int> x(-8, width + 3);
        std::uniform_int_distribution<int> y(-8, height + 3);
        DotStamps stamps(count);
        for (std::size_t i = 0; i < stamps.size(); ++i) {
            stamps[i].left = x(rng);
            stamps[i].top = y(rng);
            stamps[i].sprite = i % 17 == 0 ? DotStamp::none : 0;
            stamps[i].color = static_cast<QRgb>(i); // translucent: nothing is culled
        }
        RecordingLayer layer { width, extent, std::vector<std::uint32_t>(extent, 0x1f),
            std::vector<std::uint32_t>(extent), std::vector<std::vector<std::uint32_t>>(width * height) };

        const DotTiles tiles(width, height, extent, stamps);
        EXPECT_EQ(tiles.tileCount(), 6u);
        tiles.draw(layer);

        std::vector<std::vector<std::uint32_t>> expected(width * height);
        for (std::size_t i = 0; i < stamps.size(); ++i) {
            if (stamps[i].sprite == DotStamp::none)
                continue;
            for (int py = std::max(0, int(stamps[i].top)); py < std::min(height, stamps[i].top + extent);
                 ++py)
                for (int px = std::max(0, int(stamps[i].left)); px < std::min(width, stamps[i].left + extent);
                     ++px)
                    expected[static_cast<std::size_t>(py) * width + px].push_back(
                        static_cast<std::uint32_t>(i));
        }
        EXPECT_TRUE(layer.blendsAt == expected);
    }
}

TEST(DotTiles, DotsHiddenByLaterOpaqueDotsAreSkipped)
{
    // Colours with the top bit set are opaque in the recording layer. Dots are 3 x 3 with a
    // painted ring whose centre pixel is left out, and opaque where painted.
    const int extent = 3;
    const std::vector<std::uint32_t> ring { 0b111, 0b101, 0b111 };
    struct Row
    {
        const char* what;
        std::vector<std::tuple<int, int, std::uint32_t>> dots; // left, top, colour
        std::set<std::uint32_t> blended;
    };
    const std::vector<Row> rows {
        { "an opaque dot on the same place hides an earlier one", { { 10, 10, 1 }, { 10, 10, 0x80000002 } },
            { 0x80000002 } },
        { "a translucent dot on top hides nothing", { { 10, 10, 1 }, { 10, 10, 2 } }, { 1, 2 } },
        { "an earlier dot on top hides nothing", { { 10, 10, 0x80000001 }, { 10, 10, 2 } },
            { 0x80000001, 2 } },
        { "a shift of one pixel leaves part of the earlier dot showing",
            { { 10, 10, 1 }, { 11, 10, 0x80000002 } }, { 1, 0x80000002 } },
        { "the ring's open centre does not hide what lies under it",
            { { 11, 11, 1 }, { 10, 10, 0x80000002 } }, { 1, 0x80000002 } },
        { "the centre is hidden once another dot covers it",
            { { 11, 11, 0x80000001 }, { 10, 10, 0x80000002 }, { 11, 11, 0x80000003 },
                { 10, 10, 0x80000004 } },
            { 0x80000003, 0x80000004 } },
        { "a dot across a tile border is hidden in both tiles",
            { { 62, 10, 1 }, { 62, 10, 0x80000002 }, { 140, 10, 3 } }, { 0x80000002, 3 } },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        DotStamps stamps;
        for (const auto& [left, top, color] : row.dots) {
            DotStamp stamp;
            stamp.left = left;
            stamp.top = top;
            stamp.sprite = 0;
            stamp.color = color;
            stamps.push_back(stamp);
        }
        RecordingLayer layer { 150, extent, ring, ring, std::vector<std::vector<std::uint32_t>>(150 * 40) };
        DotTiles(150, 40, extent, stamps).draw(layer);
        std::set<std::uint32_t> blended;
        for (const auto& pixel : layer.blendsAt)
            blended.insert(pixel.begin(), pixel.end());
        EXPECT_EQ(blended, row.blended);
    }
}
