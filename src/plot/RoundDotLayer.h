#pragma once

#include "plot/DotTiles.h"
#include "plot/PixelBlend.h"

#include <QImage>
#include <QRectF>
#include <QRgb>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

class QPainter;

namespace Tessaly {

// Paints many antialiased round dots of one diameter quickly: each dot is blended from a coverage
// mask, rendered once per sub-pixel offset, into a transparent layer over the canvas, and the
// layer is drawn onto the painter at the end. Many dots are blended tile by tile in parallel. Blending is the
// painter's own source-over with the coverage as constant alpha, so the result matches drawing each dot as an
// ellipse, later dots on top, up to placement to an eighth of a pixel and rounding in the last bit.
//
// It works only on raster devices under a transform of translation and equal scaling, without
// opacity or an unusual composition mode; isActive() is false otherwise (vector devices such as
// SVG and PDF keep real ellipses), and the caller draws the dots itself.
class RoundDotLayer
{
public:
    RoundDotLayer(QPainter* painter, const QRectF& canvasRect, double diameter);

    bool isActive() const { return active; }

    // Where a dot centred at (x, y) in the painter's coordinates, in a colour with straight alpha,
    // lands on the layer; false for dots that are transparent, not finite or entirely off the layer.
    // Safe to call from several threads at once.
    inline bool stampFor(double x, double y, QRgb color, DotStamp& stamp) const;

    // Blends the dots, later ones over earlier ones, tile by tile in parallel; stamps marked none
    // are skipped. The pixels are the same as from addDot on each dot in turn.
    void addDots(const DotStamps& stamps);

    // Blends one dot at once, pixel by pixel: the plain definition of what addDots does.
    inline void addDot(double x, double y, QRgb color);

    // Draws the layer onto the painter. Call once, after the last dot.
    void finish();

    // For DotTiles: blends one dot within the layer pixels [clipLeft, clipRight) x [clipTop,
    // clipBottom), and tells per row of its mask which columns it paints and which it makes opaque.
    inline void blend(const DotStamp& stamp, int clipLeft, int clipTop, int clipRight, int clipBottom) const;
    const std::uint32_t* coverRows(const DotStamp& stamp) const
    {
        return shape->coverBits.empty()
            ? nullptr
            : shape->coverBits.data() + static_cast<std::size_t>(stamp.sprite) * maskSize;
    }
    const std::uint32_t* opaqueRows(const DotStamp& stamp) const
    {
        if (shape->coverBits.empty() || qAlpha(stamp.color) != 255)
            return nullptr;
        return shape->opaqueBits.data() + static_cast<std::size_t>(stamp.sprite) * maskSize;
    }

private:
    // Dots are placed to 1/8 pixel, well below what the eye can tell at the edge of a dot.
    static constexpr int subpixelSteps = 8;

    QPainter* painter = nullptr;
    bool active = false;
    QImage layer;
    std::uint32_t* bits = nullptr;
    int stride = 0; // in pixels
    int width = 0;
    int height = 0;
    QRectF deviceRect; // the layer's pixels, in device pixels
    double scaleX = 1.0, offsetX = 0.0; // painter coordinate -> layer pixel
    double scaleY = 1.0, offsetY = 0.0;
    int maskSize = 0; // masks are maskSize x maskSize
    int maskCentre = 0; // pixel whose top-left corner is the centre of the unshifted mask

    // The dots' coverage masks and what is derived from them. They depend on the diameter alone,
    // so they are rendered once per diameter and shared by every layer of that diameter.
    struct Masks
    {
        int maskSize = 0;
        int maskCentre = 0;
        // Coverage masks, one per sub-pixel shift in x and y, and per mask row its first and one
        // past its last covered column.
        std::vector<std::uint8_t> masks;
        std::vector<std::uint16_t> rowSpans;
        // Per mask row, bit c where column c is covered at all and where fully; empty for masks
        // wider than 32 pixels.
        std::vector<std::uint32_t> coverBits;
        std::vector<std::uint32_t> opaqueBits;
        // Eight pixels are blended at once where the processor can: per mask row a run of whole
        // groups of eight that holds its covered columns and stays within the mask (start,
        // length; length 0 for an empty row), and the coverage four times per pixel as 16-bit
        // values. Masks with a row too wide for such a run are blended column by column.
        bool wideRuns = false;
        std::vector<std::uint16_t> rowRuns;
        std::vector<std::uint8_t> maskHasRuns;
        std::vector<std::uint16_t> wideCoverage;
    };
    static std::shared_ptr<const Masks> masksFor(double deviceDiameter);
    static std::shared_ptr<const Masks> buildMasks(double deviceDiameter);
    static void prepareWideRuns(Masks& masks);

    std::shared_ptr<const Masks> shape;
};

inline bool RoundDotLayer::stampFor(double x, double y, QRgb color, DotStamp& stamp) const
{
    if (qAlpha(color) == 0)
        return false;
    const double px = x * scaleX + offsetX;
    const double py = y * scaleY + offsetY;
    // Also false for NaN, which a log axis makes of values at or below zero.
    if (!(px > -maskSize && px < width + maskSize && py > -maskSize && py < height + maskSize))
        return false;
    const int qx = static_cast<int>(std::floor(px * subpixelSteps + 0.5));
    const int qy = static_cast<int>(std::floor(py * subpixelSteps + 0.5));
    const int shiftX = qx & (subpixelSteps - 1);
    const int shiftY = qy & (subpixelSteps - 1);
    stamp.left = (qx - shiftX) / subpixelSteps - maskCentre;
    stamp.top = (qy - shiftY) / subpixelSteps - maskCentre;
    stamp.sprite = static_cast<std::uint32_t>(shiftY * subpixelSteps + shiftX);
    stamp.color = color;
    return true;
}

inline void RoundDotLayer::addDot(double x, double y, QRgb color)
{
    DotStamp stamp;
    if (!stampFor(x, y, color, stamp))
        return;
    const int left = stamp.left;
    const int top = stamp.top;
    const std::uint8_t* coverage
        = shape->masks.data() + static_cast<std::size_t>(stamp.sprite) * maskSize * maskSize;
    const std::uint16_t* spans
        = shape->rowSpans.data() + static_cast<std::size_t>(stamp.sprite) * maskSize * 2;
    const std::uint32_t premultiplied = qPremultiply(color);
    const bool opaque = qAlpha(color) == 255;

    const int rowBegin = std::max(0, -top);
    const int rowEnd = std::min(maskSize, height - top);
    for (int row = rowBegin; row < rowEnd; ++row) {
        const int colBegin = std::max<int>(spans[row * 2], -left);
        const int colEnd = std::min<int>(spans[row * 2 + 1], width - left);
        std::uint32_t* dst = bits + static_cast<std::ptrdiff_t>(top + row) * stride + left;
        const std::uint8_t* cov = coverage + row * maskSize;
        for (int col = colBegin; col < colEnd; ++col) {
            const std::uint32_t c = cov[col];
            if (c == 0)
                continue;
            if (c == 255 && opaque) {
                dst[col] = premultiplied;
                continue;
            }
            const std::uint32_t src = c == 255 ? premultiplied : PixelBlend::byteMul(premultiplied, c);
            dst[col] = src + PixelBlend::byteMul(dst[col], 255u - (src >> 24));
        }
    }
}

inline void RoundDotLayer::blend(
    const DotStamp& stamp, int clipLeft, int clipTop, int clipRight, int clipBottom) const
{
    const std::uint8_t* coverage
        = shape->masks.data() + static_cast<std::size_t>(stamp.sprite) * maskSize * maskSize;
    const std::uint16_t* spans
        = shape->rowSpans.data() + static_cast<std::size_t>(stamp.sprite) * maskSize * 2;
    const std::uint32_t premultiplied = qPremultiply(stamp.color);
#if defined(TESSALY_PIXELBLEND_AVX2)
    // Most dots lie wholly within their tile and take the runs prepared for them.
    if (shape->wideRuns && stamp.left >= clipLeft && stamp.left + maskSize <= clipRight
        && stamp.top >= clipTop && stamp.top + maskSize <= clipBottom && shape->maskHasRuns[stamp.sprite]) {
        const std::uint16_t* runs
            = shape->rowRuns.data() + static_cast<std::size_t>(stamp.sprite) * maskSize * 2;
        const std::uint16_t* coverage16
            = shape->wideCoverage.data() + static_cast<std::size_t>(stamp.sprite) * maskSize * maskSize * 4;
        std::uint32_t* origin = bits + static_cast<std::ptrdiff_t>(stamp.top) * stride + stamp.left;
        for (int row = 0; row < maskSize; ++row) {
            const int start = runs[row * 2];
            if (runs[row * 2 + 1] != 0)
                PixelBlend::coverageOverRowPrepared8(
                    origin + static_cast<std::ptrdiff_t>(row) * stride + start,
                    coverage16 + (static_cast<std::size_t>(row) * maskSize + start) * 4, premultiplied,
                    runs[row * 2 + 1]);
        }
        return;
    }
#endif
    const int rowBegin = std::max(0, clipTop - stamp.top);
    const int rowEnd = std::min(maskSize, clipBottom - stamp.top);
    for (int row = rowBegin; row < rowEnd; ++row) {
        const int colBegin = std::max<int>(spans[row * 2], clipLeft - stamp.left);
        const int colEnd = std::min<int>(spans[row * 2 + 1], clipRight - stamp.left);
        if (colBegin >= colEnd)
            continue;
        std::uint32_t* dst = bits + static_cast<std::ptrdiff_t>(stamp.top + row) * stride + stamp.left;
        PixelBlend::coverageOverRow(
            dst + colBegin, coverage + row * maskSize + colBegin, premultiplied, colEnd - colBegin);
    }
}

} // namespace Tessaly
