#include "core/ParallelBlocks.h"

#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>
#include <algorithm>
#include <mutex>
#include <numeric>
#include <vector>

namespace Tessaly {

std::size_t parallelBlockCount(std::size_t count, std::size_t minimumBlock)
{
    const auto threads
        = static_cast<std::size_t>(std::max(1, QThreadPool::globalInstance()->maxThreadCount()));
    return std::max<std::size_t>(1, std::min(threads, count / std::max<std::size_t>(1, minimumBlock)));
}

void runInBlocks(std::size_t count, std::size_t blocks,
    const std::function<void(std::size_t block, std::size_t first, std::size_t last)>& work)
{
    const auto bounds = [&](std::size_t b) { return count * b / blocks; };
    if (blocks <= 1) {
        work(0, 0, count);
        return;
    }
    std::vector<std::size_t> indices(blocks);
    std::iota(indices.begin(), indices.end(), std::size_t { 0 });
    // The pool orders the blocks after the caller and the caller's return after the blocks under
    // its own locks, inside Qt where thread checkers can't see them. Passing through this lock at
    // both ends states the same order where they can: it costs a few uncontended locks per block.
    std::mutex handOver;
    const auto pass = [&handOver] { const std::lock_guard<std::mutex> lock(handOver); };
    pass();
    QtConcurrent::blockingMap(indices, [&](std::size_t b) {
        pass();
        work(b, bounds(b), bounds(b + 1));
        pass();
    });
    pass();
}

void runBoth(const std::function<void()>& first, const std::function<void()>& second, bool atOnce)
{
    if (!atOnce) {
        first();
        second();
        return;
    }
    runInBlocks(2, 2, [&](std::size_t block, std::size_t, std::size_t) { (block == 0 ? first : second)(); });
}

} // namespace Tessaly
