#pragma once

#include <QRgb>
#include <QtConcurrent/QtConcurrentMap>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <numeric>
#include <utility>
#include <vector>

namespace Tessaly {

// One dot placed on a layer: the layer pixel of its sprite's top-left corner, which sprite it
// uses, and its colour with straight alpha (unused where the sprite has colours of its own).
struct DotStamp
{
    // Marks a dot that is not drawn (not finite, transparent or off the layer).
    static constexpr std::uint32_t none = 0xffffffffu;

    std::int32_t left;
    std::int32_t top;
    std::uint32_t sprite;
    QRgb color;
};

// Leaves new elements uninitialised: a million stamps are written by parallel chunks right after,
// and clearing them first would be a pass over 16 MB on one thread.
template <class T> struct UninitialisedAllocator : std::allocator<T>
{
    template <class U> struct rebind
    {
        using other = UninitialisedAllocator<U>;
    };
    UninitialisedAllocator() = default;
    template <class U> UninitialisedAllocator(const UninitialisedAllocator<U>&) noexcept { }
    template <class U> void construct(U* p) noexcept { ::new (static_cast<void*>(p)) U; }
    template <class U, class... Args> void construct(U* p, Args&&... args)
    {
        ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
    }
};

using DotStamps = std::vector<DotStamp, UninitialisedAllocator<DotStamp>>;

// Draws many small sprites onto a layer tile by tile. Points come in file order, scattered over
// the whole canvas, so blending them one after another onto a canvas-sized layer misses the cache
// at nearly every dot. Cut into tiles of 16 kB, each tile's dots are blended while the tile stays
// in the cache. A stable counting sort files every dot under each tile it touches, in series
// order, so every pixel receives the same blends in the same order as when the dots are drawn one
// after another: the result is the same to the bit. Tiles share no pixels, so they are drawn in
// parallel on the global thread pool.
class DotTiles
{
public:
    static constexpr int tileSize = 64;

    // Files the stamps of sprites `extent` pixels square under the tiles of a width x height
    // layer. Stamps marked none or entirely off the layer go into no tile.
    DotTiles(int width, int height, int extent, const DotStamps& stamps);

    std::size_t tileCount() const { return tileStart.size() - 1; }
    // How many (tile, stamp) pairs were filed: a stamp over a tile border counts in each tile.
    std::size_t filedCount() const { return filed.size(); }

    // Blends every stamp of every tile onto `layer`, in series order within a tile, tiles in
    // parallel. The layer provides
    //   void blend(const DotStamp&, int left, int top, int right, int bottom) const
    // which must touch only the pixels [left, right) x [top, bottom), and
    //   const std::uint32_t* coverRows(const DotStamp&) const
    //   const std::uint32_t* opaqueRows(const DotStamp&) const
    // which give per row of the sprite the columns it paints and the columns it leaves opaque (bit
    // c for column c), or null where the sprite is wider than 32 pixels (nothing is culled then).
    // A dot whose painted pixels are all made opaque by later dots is not blended: the later
    // blends overwrite those pixels whatever lies below them, so the result is the same.
    template <class Layer> void draw(const Layer& layer) const;

    // Calls work(begin, end) on consecutive ranges of [0, count) in parallel.
    template <class Work> static void forChunks(std::size_t count, std::size_t chunkSize, const Work& work);

    // A chunk size that cuts `count` items into equal chunks of at least `smallest` items, at most
    // `most` of them. Equal chunks, and several per thread, keep the threads busy to the end: two
    // chunks of 65536 and 34464 items take as long as two of 65536.
    static std::size_t evenChunkSize(std::size_t count, std::size_t smallest, std::size_t most = 64);

private:
    int width = 0;
    int height = 0;
    int columns = 0;
    int extent = 0;
    DotStamps filed; // grouped by tile, in series order within a tile
    std::vector<std::size_t> tileStart; // tile t holds filed[tileStart[t], tileStart[t + 1])
};

// A sprite row's 32 column bits placed in a tile row of 64 pixels, the sprite starting `shift`
// pixels from the tile's left edge (negative: left of it).
inline std::uint64_t placeBits(std::uint32_t bits, int shift)
{
    if (shift >= 0)
        return shift < 64 ? std::uint64_t { bits } << shift : 0;
    return shift > -32 ? std::uint64_t { bits } >> -shift : 0;
}

template <class Layer> void DotTiles::draw(const Layer& layer) const
{
    static_assert(tileSize == 64, "a tile row is one 64-bit word of flags");
    std::vector<std::size_t> tiles(tileCount());
    std::iota(tiles.begin(), tiles.end(), std::size_t { 0 });
    // See forChunks for the lock passed at both ends.
    std::mutex handOver;
    const auto pass = [&handOver] { const std::lock_guard<std::mutex> lock(handOver); };
    pass();
    QtConcurrent::blockingMap(tiles, [&](std::size_t tile) {
        pass();
        const int left = static_cast<int>(tile % static_cast<std::size_t>(columns)) * tileSize;
        const int top = static_cast<int>(tile / static_cast<std::size_t>(columns)) * tileSize;
        const int right = std::min(left + tileSize, width);
        const int bottom = std::min(top + tileSize, height);
        const DotStamp* first = filed.data() + tileStart[tile];
        const std::size_t count = tileStart[tile + 1] - tileStart[tile];

        // Back to front: a dot is needed while some pixel it paints is not yet opaque.
        thread_local std::vector<std::uint8_t> needed;
        needed.assign(count, 0);
        const std::uint64_t fullRow
            = right - left == 64 ? ~std::uint64_t { 0 } : (std::uint64_t { 1 } << (right - left)) - 1;
        const int tileRows = bottom - top;
        std::uint64_t opaque[tileSize] = {};
        int sinceOpaqueCheck = 0;
        for (std::size_t k = count; k-- > 0;) {
            const DotStamp& stamp = first[k];
            const std::uint32_t* cover = layer.coverRows(stamp);
            if (!cover) {
                needed[k] = 1;
                continue;
            }
            const std::uint32_t* fill = layer.opaqueRows(stamp);
            const int shift = stamp.left - left;
            const int rowBegin = std::max(0, top - stamp.top);
            const int rowEnd = std::min(extent, bottom - stamp.top);
            std::uint64_t* rows = opaque + (stamp.top + rowBegin - top);
            const int rowCount = rowEnd - rowBegin;
            cover += rowBegin;
            std::uint64_t uncovered = 0;
            // Most dots start within the tile, where their rows shift into place one way; the
            // rows are tested all at once, without stopping at the first that shows.
            if (shift >= 0 && shift <= 32) {
                for (int row = 0; row < rowCount; ++row)
                    uncovered |= (std::uint64_t { cover[row] } << shift) & ~rows[row];
            } else {
                for (int row = 0; row < rowCount; ++row)
                    uncovered |= placeBits(cover[row], shift) & ~rows[row];
            }
            if ((uncovered & fullRow) == 0)
                continue;
            needed[k] = 1;
            if (!fill)
                continue;
            fill += rowBegin;
            if (shift >= 0 && shift <= 32) {
                for (int row = 0; row < rowCount; ++row)
                    rows[row] |= std::uint64_t { fill[row] } << shift;
            } else {
                for (int row = 0; row < rowCount; ++row)
                    rows[row] |= placeBits(fill[row], shift);
            }
            // Once the whole tile is opaque, nothing drawn before shows. Checked now and then:
            // stopping later changes nothing but the time.
            if (++sinceOpaqueCheck == 16) {
                sinceOpaqueCheck = 0;
                std::uint64_t all = fullRow;
                for (int row = 0; row < tileRows; ++row)
                    all &= opaque[row];
                if (all == fullRow)
                    break;
            }
        }
        for (std::size_t k = 0; k < count; ++k) {
            if (needed[k])
                layer.blend(first[k], left, top, right, bottom);
        }
        pass();
    });
    pass();
}

template <class Work> void DotTiles::forChunks(std::size_t count, std::size_t chunkSize, const Work& work)
{
    if (count == 0)
        return;
    std::vector<std::size_t> chunks((count + chunkSize - 1) / chunkSize);
    std::iota(chunks.begin(), chunks.end(), std::size_t { 0 });
    if (chunks.size() == 1) {
        work(std::size_t { 0 }, count);
        return;
    }
    // The pool orders the chunks after the caller and the caller's return after the chunks under
    // its own locks, inside Qt where thread checkers can't see them. Passing through this lock at
    // both ends states the same order where they can: it costs a few uncontended locks per chunk.
    std::mutex handOver;
    const auto pass = [&handOver] { const std::lock_guard<std::mutex> lock(handOver); };
    pass();
    QtConcurrent::blockingMap(chunks, [&](std::size_t chunk) {
        pass();
        const std::size_t begin = chunk * chunkSize;
        work(begin, std::min(begin + chunkSize, count));
        pass();
    });
    pass();
}

} // namespace Tessaly
