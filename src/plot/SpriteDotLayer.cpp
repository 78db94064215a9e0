#include "plot/SpriteDotLayer.h"

#include "plot/PixelBlend.h"

#include <QGuiApplication>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <qwt_painter.h>
#include <qwt_symbol.h>

namespace Tessaly {

namespace {

bool isWholePixel(double value)
{
    return std::floor(value) == value && std::abs(value) < 1e9;
}

} // namespace

SpriteDotLayer::SpriteDotLayer(QPainter* painter_, const QwtSymbol& symbol, const QRectF& canvasRect)
    : painter(painter_)
{
    if (!painter || !painter->isActive() || !painter->paintEngine()
        || painter->paintEngine()->type() != QPaintEngine::Raster)
        return;
    // The library draws its cached pixmap only under these conditions; otherwise it paints each
    // symbol itself, and so does the caller.
    if (!QwtPainter::roundingAlignment(painter) || painter->transform().isScaling()
        || symbol.cachePolicy() == QwtSymbol::NoCache)
        return;
    if (painter->opacity() < 1.0 || painter->compositionMode() != QPainter::CompositionMode_SourceOver)
        return;
    // The library's pixmap has the application's pixel ratio; at any other than 1 it is scaled.
    if (qGuiApp && qGuiApp->devicePixelRatio() != 1.0)
        return;
    QPaintDevice* device = painter->paintEngine()->paintDevice();
    if (!device || device->devType() != QInternal::Image)
        return;
    const auto* image = static_cast<const QImage*>(device);
    if (image->devicePixelRatio() != 1.0
        || (image->format() != QImage::Format_RGB32
            && image->format() != QImage::Format_ARGB32_Premultiplied))
        return;
    const QTransform transform = painter->deviceTransform();
    if (transform.type() > QTransform::TxTranslate || !isWholePixel(transform.dx())
        || !isWholePixel(transform.dy()))
        return;
    deviceOffset = QPoint(static_cast<int>(transform.dx()), static_cast<int>(transform.dy()));

    // The symbol's own pixmap: drawn once onto a transparent image it comes out unchanged.
    const QRect symbolRect = symbol.boundingRect();
    QImage pixmap(symbolRect.size(), QImage::Format_ARGB32_Premultiplied);
    if (pixmap.isNull())
        return;
    pixmap.fill(Qt::transparent);
    {
        QPainter p(&pixmap);
        p.setRenderHints(painter->renderHints());
        p.translate(-symbolRect.topLeft());
        const QPointF origin(0.0, 0.0);
        symbol.drawSymbols(&p, &origin, 1);
    }
    spriteSize = std::max(pixmap.width(), pixmap.height());
    // Rows are stored with room for transparent pixels up to the next whole group of pixels that
    // are blended at once.
    wideRuns = PixelBlend::hasAvx2();
    const int group = wideRuns ? 8 : 4;
    spriteStride = (spriteSize + group - 1) / group * group;
    sprite.assign(static_cast<std::size_t>(spriteSize) * spriteStride, 0u);
    for (int row = 0; row < pixmap.height(); ++row) {
        const auto* line = reinterpret_cast<const std::uint32_t*>(pixmap.constScanLine(row));
        std::copy(
            line, line + pixmap.width(), sprite.begin() + static_cast<std::ptrdiff_t>(row) * spriteStride);
    }
    // A transparent pixel leaves the device as it is, so rows are blended from their first to
    // their last painted pixel only.
    spans.assign(static_cast<std::size_t>(spriteSize) * 2, 0);
    for (int row = 0; row < spriteSize; ++row) {
        const std::uint32_t* line = sprite.data() + static_cast<std::ptrdiff_t>(row) * spriteStride;
        int first = spriteSize;
        int last = -1;
        for (int col = 0; col < spriteSize; ++col) {
            if (line[col] >> 24 != 0) {
                first = std::min(first, col);
                last = col;
            }
        }
        spans[row * 2] = last < 0 ? 0 : first;
        spans[row * 2 + 1] = last + 1;
    }
    // Transparent pixels leave the device alone, so a symbol within its tile blends each row in
    // whole groups from its first painted pixel on, or up to the row's stored end.
    runs.assign(static_cast<std::size_t>(spriteSize) * 2, 0);
    firstRun = spriteSize;
    endRun = 0;
    for (int row = 0; row < spriteSize; ++row) {
        const int length = (spans[row * 2 + 1] - spans[row * 2] + group - 1) / group * group;
        runs[row * 2] = std::min(spans[row * 2], spriteStride - length);
        runs[row * 2 + 1] = length;
        if (length > 0) {
            firstRun = std::min(firstRun, row);
            endRun = row + 1;
        }
    }
    source16.resize(sprite.size() * 4);
    inverse16.resize(sprite.size() * 4);
    for (std::size_t i = 0; i < sprite.size(); ++i) {
        for (int channel = 0; channel < 4; ++channel) {
            source16[4 * i + channel] = static_cast<std::uint16_t>((sprite[i] >> (8 * channel)) & 0xffu);
            inverse16[4 * i + channel] = static_cast<std::uint16_t>(255u - (sprite[i] >> 24));
        }
    }
    // Without an opaque pixel no symbol ever hides another, and there is nothing to look for.
    const bool anyOpaque
        = std::any_of(sprite.begin(), sprite.end(), [](std::uint32_t p) { return p >> 24 == 255; });
    if (spriteSize <= 32 && anyOpaque) {
        coverBits.assign(static_cast<std::size_t>(spriteSize), 0u);
        opaqueBits.assign(coverBits.size(), 0u);
        for (int row = 0; row < spriteSize; ++row) {
            for (int col = 0; col < spriteSize; ++col) {
                const std::uint32_t alpha = sprite[static_cast<std::size_t>(row) * spriteStride + col] >> 24;
                if (alpha != 0)
                    coverBits[row] |= 1u << col;
                if (alpha == 255)
                    opaqueBits[row] |= 1u << col;
            }
        }
    }

    // Symbols are placed only for points within the canvas, so none reaches further than a
    // pixmap beyond it; the clip and the device's edges bound the rest.
    QRect area = transform.mapRect(canvasRect)
                     .toAlignedRect()
                     .adjusted(-spriteSize, -spriteSize, spriteSize, spriteSize);
    area &= image->rect();
    if (painter->hasClipping())
        area &= transform.mapRect(painter->clipBoundingRect()).toAlignedRect();
    const QRegion systemClip = painter->paintEngine()->systemClip();
    if (!systemClip.isEmpty())
        area &= systemClip.boundingRect();
    // A copy larger than this (in pixels) is not worth its memory; the library draws instead.
    constexpr double largestLayerArea = 64.0 * 1024 * 1024;
    if (static_cast<double>(area.width()) * area.height() > largestLayerArea)
        return;
    deviceRect = area;
    if (!deviceRect.isEmpty()) {
        layer = image->copy(deviceRect);
        if (layer.isNull())
            return;
        bits = reinterpret_cast<std::uint32_t*>(layer.bits());
        stride = static_cast<int>(layer.bytesPerLine() / 4);
    }
    offsetX = deviceOffset.x() + symbolRect.left() - deviceRect.left();
    offsetY = deviceOffset.y() + symbolRect.top() - deviceRect.top();
    active = true;
}

void SpriteDotLayer::blend(
    const DotStamp& stamp, int clipLeft, int clipTop, int clipRight, int clipBottom) const
{
    std::uint32_t* origin = bits + static_cast<std::ptrdiff_t>(stamp.top) * stride + stamp.left;
    // Most symbols lie wholly within their tile and take the runs prepared for them.
    if (stamp.left >= clipLeft && stamp.left + spriteStride <= clipRight && stamp.top >= clipTop
        && stamp.top + spriteSize <= clipBottom) {
#if defined(TESSALY_PIXELBLEND_AVX2)
        if (wideRuns) {
            for (int row = firstRun; row < endRun; ++row) {
                const std::size_t at = static_cast<std::size_t>(row) * spriteStride + runs[row * 2];
                PixelBlend::overRowPrepared8(
                    origin + static_cast<std::ptrdiff_t>(row) * stride + runs[row * 2],
                    source16.data() + 4 * at, inverse16.data() + 4 * at, runs[row * 2 + 1]);
            }
            return;
        }
#endif
        for (int row = firstRun; row < endRun; ++row) {
            const std::size_t at = static_cast<std::size_t>(row) * spriteStride + runs[row * 2];
            PixelBlend::overRowPrepared(origin + static_cast<std::ptrdiff_t>(row) * stride + runs[row * 2],
                source16.data() + 4 * at, inverse16.data() + 4 * at, runs[row * 2 + 1]);
        }
        return;
    }
    const int rowBegin = std::max(0, clipTop - stamp.top);
    const int rowEnd = std::min(spriteSize, clipBottom - stamp.top);
    const int low = std::max(0, clipLeft - stamp.left);
    const int high = std::min(spriteSize, clipRight - stamp.left);
    for (int row = rowBegin; row < rowEnd; ++row) {
        const int colBegin = std::max(spans[row * 2], low);
        const int colEnd = std::min(spans[row * 2 + 1], high);
        if (colBegin >= colEnd)
            continue;
        PixelBlend::overRow(origin + static_cast<std::ptrdiff_t>(row) * stride + colBegin,
            sprite.data() + static_cast<std::ptrdiff_t>(row) * spriteStride + colBegin, colEnd - colBegin);
    }
}

void SpriteDotLayer::addDots(const DotStamps& stamps)
{
    if (!active || layer.isNull())
        return;
    const DotTiles tiles(layer.width(), layer.height(), spriteSize, stamps);
    tiles.draw(*this);
}

void SpriteDotLayer::finish()
{
    if (!active)
        return;
    active = false;
    if (layer.isNull())
        return;
    // The layer holds the device's own pixels with the symbols blended in: copied back, through
    // the painter's clip, it leaves every pixel outside the clip alone.
    painter->save();
    painter->setCompositionMode(QPainter::CompositionMode_Source);
    painter->drawImage(deviceRect.topLeft() - deviceOffset, layer);
    painter->restore();
    layer = QImage();
    bits = nullptr;
}

} // namespace Tessaly
