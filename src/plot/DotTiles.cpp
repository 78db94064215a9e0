#include "plot/DotTiles.h"

#include <algorithm>

namespace Tessaly {

namespace {

// Chunks are large enough that a chunk's count of every tile is small beside its work, and few
// enough that their counts stay small beside the stamps.
constexpr std::size_t smallestChunk = 1 << 14;
constexpr std::size_t mostChunks = 64;

struct TileSpan
{
    int firstColumn, lastColumn, firstRow, lastRow; // inclusive; empty when first > last
};

} // namespace

DotTiles::DotTiles(int width_, int height_, int extent_, const DotStamps& stamps)
    : width(std::max(width_, 0))
    , height(std::max(height_, 0))
    , extent(std::max(extent_, 0))
{
    columns = (width + tileSize - 1) / tileSize;
    const int rows = (height + tileSize - 1) / tileSize;
    const std::size_t tiles = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    tileStart.assign(tiles + 1, 0);
    if (tiles == 0)
        return;

    const auto spanOf = [&](const DotStamp& stamp) {
        TileSpan span { 0, -1, 0, -1 };
        if (stamp.sprite == DotStamp::none)
            return span;
        const long long x0 = std::max<long long>(stamp.left, 0);
        const long long y0 = std::max<long long>(stamp.top, 0);
        const long long x1 = std::min<long long>(static_cast<long long>(stamp.left) + extent, width) - 1;
        const long long y1 = std::min<long long>(static_cast<long long>(stamp.top) + extent, height) - 1;
        if (x0 > x1 || y0 > y1)
            return span;
        span = { static_cast<int>(x0 / tileSize), static_cast<int>(x1 / tileSize),
            static_cast<int>(y0 / tileSize), static_cast<int>(y1 / tileSize) };
        return span;
    };

    // Each chunk of the series counts its stamps per tile; a tile's stamps from chunk c then go
    // after those of all earlier chunks, which keeps the series order within every tile.
    const std::size_t chunkSize = evenChunkSize(stamps.size(), smallestChunk, mostChunks);
    const std::size_t chunks = std::max<std::size_t>(1, (stamps.size() + chunkSize - 1) / chunkSize);
    std::vector<std::size_t> counts(chunks * tiles, 0);
    forChunks(stamps.size(), chunkSize, [&](std::size_t begin, std::size_t end) {
        std::size_t* count = counts.data() + (begin / chunkSize) * tiles;
        for (std::size_t i = begin; i < end; ++i) {
            const TileSpan span = spanOf(stamps[i]);
            for (int row = span.firstRow; row <= span.lastRow; ++row)
                for (int column = span.firstColumn; column <= span.lastColumn; ++column)
                    ++count[static_cast<std::size_t>(row) * columns + column];
        }
    });
    std::size_t total = 0;
    for (std::size_t tile = 0; tile < tiles; ++tile) {
        tileStart[tile] = total;
        for (std::size_t chunk = 0; chunk < chunks; ++chunk) {
            std::size_t& count = counts[chunk * tiles + tile];
            const std::size_t n = count;
            count = total; // from here on: where the chunk's next stamp for this tile goes
            total += n;
        }
    }
    tileStart[tiles] = total;

    filed.resize(total);
    forChunks(stamps.size(), chunkSize, [&](std::size_t begin, std::size_t end) {
        std::size_t* next = counts.data() + (begin / chunkSize) * tiles;
        for (std::size_t i = begin; i < end; ++i) {
            const TileSpan span = spanOf(stamps[i]);
            for (int row = span.firstRow; row <= span.lastRow; ++row)
                for (int column = span.firstColumn; column <= span.lastColumn; ++column)
                    filed[next[static_cast<std::size_t>(row) * columns + column]++] = stamps[i];
        }
    });
}

std::size_t DotTiles::evenChunkSize(std::size_t count, std::size_t smallest, std::size_t most)
{
    const std::size_t chunks = std::clamp<std::size_t>(
        count / std::max<std::size_t>(smallest, 1), 1, std::max<std::size_t>(most, 1));
    return std::max<std::size_t>(1, (count + chunks - 1) / chunks);
}

} // namespace Tessaly
