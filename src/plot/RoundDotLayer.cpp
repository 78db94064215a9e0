#include "plot/RoundDotLayer.h"

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QTransform>
#include <mutex>

namespace Tessaly {

namespace {

// Dots wider than this (in device pixels) are rare enough to be drawn as ellipses.
constexpr double largestMaskedDiameter = 128.0;
// A layer larger than this (in pixels) is not worth its memory; the dots are drawn one by one.
constexpr double largestLayerArea = 64.0 * 1024 * 1024;

} // namespace

RoundDotLayer::RoundDotLayer(QPainter* painter_, const QRectF& canvasRect, double diameter)
    : painter(painter_)
{
    if (!painter || !painter->isActive() || !painter->paintEngine()
        || painter->paintEngine()->type() != QPaintEngine::Raster)
        return;
    if (painter->opacity() < 1.0 || painter->compositionMode() != QPainter::CompositionMode_SourceOver)
        return;
    const QTransform transform = painter->deviceTransform();
    if (transform.type() > QTransform::TxScale || transform.m11() <= 0.0
        || std::abs(transform.m11() - transform.m22()) > 1e-9 * transform.m11())
        return;
    const double deviceDiameter = diameter * transform.m11();
    if (!(deviceDiameter > 0.0 && deviceDiameter <= largestMaskedDiameter))
        return;

    const QRectF mapped = transform.mapRect(canvasRect);
    const double left = std::floor(mapped.left());
    const double top = std::floor(mapped.top());
    const double right = std::ceil(mapped.right());
    const double bottom = std::ceil(mapped.bottom());
    if (!(right > left && bottom > top) || (right - left) * (bottom - top) > largestLayerArea)
        return;
    deviceRect = QRectF(left, top, right - left, bottom - top);
    width = static_cast<int>(deviceRect.width());
    height = static_cast<int>(deviceRect.height());
    layer = QImage(width, height, QImage::Format_ARGB32_Premultiplied);
    if (layer.isNull())
        return;
    layer.fill(Qt::transparent);
    bits = reinterpret_cast<std::uint32_t*>(layer.bits());
    stride = static_cast<int>(layer.bytesPerLine() / 4);

    scaleX = transform.m11();
    offsetX = transform.dx() - left;
    scaleY = transform.m22();
    offsetY = transform.dy() - top;
    shape = masksFor(deviceDiameter);
    maskSize = shape->maskSize;
    maskCentre = shape->maskCentre;
    active = true;
}

std::shared_ptr<const RoundDotLayer::Masks> RoundDotLayer::masksFor(double deviceDiameter)
{
    // Each refresh paints dots of the same diameter again; the masks of the last diameter are kept.
    static std::mutex mutex;
    static double lastDiameter = 0.0;
    static std::shared_ptr<const Masks> last;
    const std::lock_guard<std::mutex> lock(mutex);
    if (!last || lastDiameter != deviceDiameter) {
        last = buildMasks(deviceDiameter);
        lastDiameter = deviceDiameter;
    }
    return last;
}

std::shared_ptr<const RoundDotLayer::Masks> RoundDotLayer::buildMasks(double deviceDiameter)
{
    auto made = std::make_shared<Masks>();
    Masks& m = *made;
    // Room for the antialiased rim and for shifts of up to a pixel.
    const int maskSize = static_cast<int>(std::ceil(deviceDiameter)) + 3;
    m.maskSize = maskSize;
    m.maskCentre = maskSize / 2;
    const std::size_t area = static_cast<std::size_t>(maskSize) * maskSize;
    const int maskCount = subpixelSteps * subpixelSteps;
    m.masks.assign(area * maskCount, 0);
    m.rowSpans.assign(static_cast<std::size_t>(maskSize) * 2 * maskCount, 0);
    const bool withBits = maskSize <= 32;
    m.coverBits.assign(withBits ? static_cast<std::size_t>(maskSize) * maskCount : 0, 0u);
    m.opaqueBits.assign(m.coverBits.size(), 0u);

    QImage canvas(maskSize, maskSize, QImage::Format_ARGB32_Premultiplied);
    const double radius = deviceDiameter * 0.5;
    for (int mask = 0; mask < maskCount; ++mask) {
        canvas.fill(Qt::transparent);
        {
            QPainter p(&canvas);
            p.setRenderHint(QPainter::Antialiasing, true);
            p.setPen(Qt::NoPen);
            p.setBrush(Qt::white);
            const double shiftX = static_cast<double>(mask % subpixelSteps) / subpixelSteps;
            const double shiftY = static_cast<double>(mask / subpixelSteps) / subpixelSteps;
            p.drawEllipse(QPointF(m.maskCentre + shiftX, m.maskCentre + shiftY), radius, radius);
        }
        std::uint8_t* coverage = m.masks.data() + area * mask;
        std::uint16_t* spans = m.rowSpans.data() + static_cast<std::size_t>(maskSize) * 2 * mask;
        for (int row = 0; row < maskSize; ++row) {
            const QRgb* line = reinterpret_cast<const QRgb*>(canvas.constScanLine(row));
            int first = maskSize;
            int last = -1;
            for (int col = 0; col < maskSize; ++col) {
                const int alpha = qAlpha(line[col]);
                coverage[row * maskSize + col] = static_cast<std::uint8_t>(alpha);
                if (withBits && alpha != 0)
                    m.coverBits[static_cast<std::size_t>(mask) * maskSize + row] |= 1u << col;
                if (withBits && alpha == 255)
                    m.opaqueBits[static_cast<std::size_t>(mask) * maskSize + row] |= 1u << col;
                if (alpha != 0) {
                    first = std::min(first, col);
                    last = col;
                }
            }
            spans[row * 2] = static_cast<std::uint16_t>(last < 0 ? 0 : first);
            spans[row * 2 + 1] = static_cast<std::uint16_t>(last + 1);
        }
    }
    prepareWideRuns(m);
    return made;
}

void RoundDotLayer::prepareWideRuns(Masks& m)
{
    constexpr int group = 8;
    const int maskSize = m.maskSize;
    // Larger masks would make the 16-bit coverage large and are rare.
    m.wideRuns = PixelBlend::hasAvx2() && maskSize >= group && maskSize <= 32;
    if (!m.wideRuns)
        return;
    const int maskCount = subpixelSteps * subpixelSteps;
    const std::size_t area = static_cast<std::size_t>(maskSize) * maskSize;
    m.rowRuns.assign(static_cast<std::size_t>(maskSize) * 2 * maskCount, 0);
    m.maskHasRuns.assign(maskCount, 1);
    m.wideCoverage.resize(area * 4 * maskCount);
    for (int mask = 0; mask < maskCount; ++mask) {
        const std::uint16_t* spans = m.rowSpans.data() + static_cast<std::size_t>(maskSize) * 2 * mask;
        std::uint16_t* runs = m.rowRuns.data() + static_cast<std::size_t>(maskSize) * 2 * mask;
        for (int row = 0; row < maskSize; ++row) {
            const int width = std::max(0, spans[row * 2 + 1] - spans[row * 2]);
            const int length = (width + group - 1) / group * group;
            if (length > maskSize) {
                m.maskHasRuns[mask] = 0;
                continue;
            }
            runs[row * 2] = static_cast<std::uint16_t>(std::min<int>(spans[row * 2], maskSize - length));
            runs[row * 2 + 1] = static_cast<std::uint16_t>(length);
        }
        for (std::size_t i = 0; i < area; ++i)
            std::fill_n(m.wideCoverage.begin() + static_cast<std::ptrdiff_t>((area * mask + i) * 4), 4,
                m.masks[area * mask + i]);
    }
}

void RoundDotLayer::addDots(const DotStamps& stamps)
{
    if (!active)
        return;
    const DotTiles tiles(width, height, maskSize, stamps);
    tiles.draw(*this);
}

void RoundDotLayer::finish()
{
    if (!active)
        return;
    active = false;
    // The target rectangle is the layer's device rectangle taken back to the painter's
    // coordinates, so that the image lands pixel for pixel.
    const QRectF target = painter->deviceTransform().inverted().mapRect(deviceRect);
    painter->drawImage(target, layer, QRectF(0, 0, width, height));
    layer = QImage();
    bits = nullptr;
}

} // namespace Tessaly
