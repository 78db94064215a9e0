#include "core/ParallelBlocks.h"

#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <vector>

using namespace Tessaly;

// Every item falls into exactly one block, blocks are contiguous and in order, and each block has
// the bounds that callers rely on when they merge per-block results.
TEST(ParallelBlocks, BlocksCoverEveryItemOnceInOrder)
{
    for (const std::size_t count : { 0u, 1u, 7u, 1000u, 100003u }) {
        for (const std::size_t blocks : { 1u, 2u, 3u, 8u }) {
            std::vector<std::atomic<int>> visits(count);
            std::vector<std::pair<std::size_t, std::size_t>> bounds(blocks, { 1, 0 });
            std::mutex guard;
            runInBlocks(count, blocks, [&](std::size_t block, std::size_t first, std::size_t last) {
                for (std::size_t i = first; i < last; ++i)
                    ++visits[i];
                const std::lock_guard<std::mutex> lock(guard);
                bounds[block] = { first, last };
            });
            for (std::size_t i = 0; i < count; ++i)
                ASSERT_EQ(visits[i], 1) << count << " items, " << blocks << " blocks, item " << i;
            for (std::size_t b = 0; b < blocks; ++b) {
                EXPECT_EQ(bounds[b].first, count * b / blocks) << count << " / " << blocks;
                EXPECT_EQ(bounds[b].second, count * (b + 1) / blocks) << count << " / " << blocks;
            }
        }
    }
}

TEST(ParallelBlocks, SmallWorkStaysInOneBlock)
{
    EXPECT_EQ(parallelBlockCount(0, 1000), 1u);
    EXPECT_EQ(parallelBlockCount(1999, 1000), 1u);
    EXPECT_GE(parallelBlockCount(1000000, 1000), 1u);
    EXPECT_LE(parallelBlockCount(1000000, 1000), 1000u);
    EXPECT_EQ(parallelBlockCount(5, 0), parallelBlockCount(5, 1));
}

TEST(ParallelBlocks, BothPiecesRunOnceEach)
{
    std::atomic<int> first { 0 };
    std::atomic<int> second { 0 };
    runBoth([&] { first += 1; }, [&] { second += 10; });
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 10);
}
