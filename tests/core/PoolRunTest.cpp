#include "core/PoolRun.h"

#include <atomic>
#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

using namespace Tessaly;

// Each piece of work runs exactly once with what its caller gave it, however many wait at once.
TEST(PoolRun, EveryQueuedWorkRunsOnceWithItsOwnData)
{
    constexpr int pieces = 64;
    std::vector<std::atomic<int>> sums(pieces);
    std::vector<QFuture<void>> futures;
    for (int i = 0; i < pieces; ++i) {
        std::vector<int> data(static_cast<std::size_t>(i + 1), i);
        futures.push_back(runOnPool([&sums, i, data = std::move(data)](QFutureInterface<void>&) {
            for (int value : data)
                sums[static_cast<std::size_t>(i)] += value;
        }));
    }
    for (QFuture<void>& future : futures)
        future.waitForFinished();
    for (int i = 0; i < pieces; ++i)
        EXPECT_EQ(sums[static_cast<std::size_t>(i)], i * (i + 1)) << "piece " << i;
}

// A waiter is never left hanging: a throwing work still finishes its future, and the progress it
// reported stays readable.
TEST(PoolRun, ThrowingWorkStillFinishesWithItsProgress)
{
    QFuture<void> future = runOnPool([](QFutureInterface<void>& progress) {
        progress.setProgressValue(3);
        throw std::runtime_error("column unreadable");
    });
    future.waitForFinished();
    EXPECT_TRUE(future.isFinished());
    EXPECT_EQ(future.progressValue(), 3);

    QFuture<void> after = runOnPool([](QFutureInterface<void>&) { throw 7; });
    after.waitForFinished();
    EXPECT_TRUE(after.isFinished());
}
