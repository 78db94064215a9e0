#pragma once

#include <cstddef>
#include <functional>

namespace Tessaly {

// Work over the items [0, count) cut into contiguous blocks that run at once on the global thread
// pool and on the calling thread, which takes part, so that a busy pool never stalls the caller.
// Block b covers [count * b / blocks, count * (b + 1) / blocks). Callers that combine per-block
// results do so in block order, so the outcome does not depend on which thread ran which block.

// How many blocks are worth it: one per pool thread, but none smaller than `minimumBlock` items;
// at least one.
std::size_t parallelBlockCount(std::size_t count, std::size_t minimumBlock);

// Runs work(block, first, last) for every block, [first, last) its items, and returns when all
// are done.
void runInBlocks(std::size_t count, std::size_t blocks,
    const std::function<void(std::size_t block, std::size_t first, std::size_t last)>& work);

// Runs two independent pieces of work, at once (one of them on the calling thread) when `atOnce`,
// else one after the other here: small work costs more to hand over than it saves. Returns when
// both are done.
void runBoth(const std::function<void()>& first, const std::function<void()>& second, bool atOnce = true);

} // namespace Tessaly
