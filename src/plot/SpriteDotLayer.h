#pragma once

#include "plot/DotTiles.h"

#include <QImage>
#include <QRect>
#include <cstdint>
#include <vector>

class QPainter;
class QwtSymbol;

namespace Tessaly {

// Draws a symbol at many whole-pixel positions exactly as the library's cached symbol does (one
// drawPixmap of the symbol's pixmap per point, each blended onto the device in turn), but tile by
// tile in parallel. The device's pixels under the points are copied into a layer, the symbol's
// pixmap is blended there with the painter's own source-over arithmetic, and the layer is put back
// as it is, through the painter's clip: each pixel ends as it would have after the per-point
// drawing.
//
// It needs a raster image as the device (widgets, pixmaps and images all paint into one), in 32-bit
// RGB or premultiplied ARGB, painted at whole-pixel offsets without scaling, opacity or an unusual
// composition mode; isActive() is false otherwise and the caller leaves the drawing to the library.
class SpriteDotLayer
{
public:
    SpriteDotLayer(QPainter* painter, const QwtSymbol& symbol, const QRectF& canvasRect);

    bool isActive() const { return active; }

    // The stamp of a symbol whose centre the library places at the whole pixel (x, y) in the
    // painter's coordinates.
    DotStamp stampAt(int x, int y) const
    {
        DotStamp stamp;
        stamp.left = x + offsetX;
        stamp.top = y + offsetY;
        stamp.sprite = 0;
        stamp.color = 0;
        return stamp;
    }

    // Blends the symbols, later ones over earlier ones; stamps marked none are skipped.
    void addDots(const DotStamps& stamps);

    // Puts the layer back onto the device. Call once, after the last dot.
    void finish();

    // For DotTiles: blends one symbol within the layer pixels [clipLeft, clipRight) x [clipTop,
    // clipBottom), and tells per row of the pixmap which columns it paints and which it makes opaque.
    void blend(const DotStamp& stamp, int clipLeft, int clipTop, int clipRight, int clipBottom) const;
    const std::uint32_t* coverRows(const DotStamp&) const
    {
        return coverBits.empty() ? nullptr : coverBits.data();
    }
    const std::uint32_t* opaqueRows(const DotStamp&) const
    {
        return coverBits.empty() ? nullptr : opaqueBits.data();
    }

private:
    QPainter* painter = nullptr;
    bool active = false;
    QImage layer;
    std::uint32_t* bits = nullptr;
    int stride = 0; // in pixels
    QRect deviceRect; // the layer's pixels, in device pixels
    QPoint deviceOffset; // painter coordinate + deviceOffset = device pixel
    int offsetX = 0; // symbol centre in painter coordinates -> layer pixel of the pixmap's corner
    int offsetY = 0;
    int spriteSize = 0; // the pixmap, padded to a square of this size
    int spriteStride = 0; // stored row length, in pixels
    bool wideRuns = false; // runs in groups of eight, blended with AVX2, else of four
    std::vector<std::uint32_t> sprite; // premultiplied, spriteSize rows of spriteStride
    std::vector<int> spans; // per row, its first and one past its last painted column
    std::vector<int> runs; // per row, first column and length of its run in whole groups
    int firstRun = 0; // the rows with a run
    int endRun = 0;
    // The sprite's channels as 16-bit values, and 255 minus each pixel's alpha in four copies.
    std::vector<std::uint16_t> source16;
    std::vector<std::uint16_t> inverse16;
    // Per sprite row, bit c where column c is painted at all and where opaque; empty for sprites
    // wider than 32 pixels and for those without an opaque pixel.
    std::vector<std::uint32_t> coverBits;
    std::vector<std::uint32_t> opaqueBits;
};

} // namespace Tessaly
