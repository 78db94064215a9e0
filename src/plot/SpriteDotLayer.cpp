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
    sprite.assign(static_cast<std::size_t>(spriteSize) * spriteSize, 0u);
    for (int row = 0; row < pixmap.height(); ++row) {
        const auto* line = reinterpret_cast<const std::uint32_t*>(pixmap.constScanLine(row));
        std::copy(
            line, line + pixmap.width(), sprite.begin() + static_cast<std::ptrdiff_t>(row) * spriteSize);
    }
    // A transparent pixel leaves the device as it is, so rows are blended from their first to
    // their last painted pixel only.
    spans.assign(static_cast<std::size_t>(spriteSize) * 2, 0);
    for (int row = 0; row < spriteSize; ++row) {
        const std::uint32_t* line = sprite.data() + static_cast<std::ptrdiff_t>(row) * spriteSize;
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
    if (spriteSize <= 32) {
        coverBits.assign(static_cast<std::size_t>(spriteSize), 0u);
        opaqueBits.assign(coverBits.size(), 0u);
        for (int row = 0; row < spriteSize; ++row) {
            for (int col = 0; col < spriteSize; ++col) {
                const std::uint32_t alpha = sprite[static_cast<std::size_t>(row) * spriteSize + col] >> 24;
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
    const int rowBegin = std::max(0, clipTop - stamp.top);
    const int rowEnd = std::min(spriteSize, clipBottom - stamp.top);
    for (int row = rowBegin; row < rowEnd; ++row) {
        const int colBegin = std::max<int>(spans[row * 2], clipLeft - stamp.left);
        const int colEnd = std::min<int>(spans[row * 2 + 1], clipRight - stamp.left);
        if (colBegin >= colEnd)
            continue;
        std::uint32_t* dst = bits + static_cast<std::ptrdiff_t>(stamp.top + row) * stride + stamp.left;
        PixelBlend::overRow(dst + colBegin,
            sprite.data() + static_cast<std::ptrdiff_t>(row) * spriteSize + colBegin, colEnd - colBegin);
    }
}

void SpriteDotLayer::addDots(const std::vector<DotStamp>& stamps)
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
