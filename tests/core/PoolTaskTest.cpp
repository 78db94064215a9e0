#include "core/PoolTask.h"

#include <QThreadPool>
#include <atomic>
#include <condition_variable>
#include <gtest/gtest.h>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace Tessaly;

// Many tasks at once each run once, on what their caller gave them, and what they wrote is there
// after the wait.
TEST(PoolTask, EveryTaskRunsOnceAndItsResultIsThereAfterTheWait)
{
    constexpr int tasks = 48;
    std::vector<long> sums(tasks, 0);
    std::atomic<int> runs { 0 };
    {
        std::vector<std::unique_ptr<PoolTask>> running;
        for (int t = 0; t < tasks; ++t) {
            running.push_back(std::make_unique<PoolTask>([&sums, &runs, t] {
                ++runs;
                for (int i = 0; i <= t * 1000; ++i)
                    sums[static_cast<std::size_t>(t)] += i;
            }));
        }
        for (auto& task : running)
            task->wait();
        for (int t = 0; t < tasks; ++t)
            EXPECT_EQ(sums[static_cast<std::size_t>(t)], static_cast<long>(t) * 1000 * (t * 1000 + 1) / 2);
    }
    EXPECT_EQ(runs, tasks);
}

// With every pool thread held by longer work the waiter runs the task itself instead of waiting
// for a thread; the pool's turn comes later and finds nothing left to do.
TEST(PoolTask, WaiterRunsTheTaskWhenThePoolIsBusy)
{
    std::mutex mutex;
    std::condition_variable changed;
    int holding = 0;
    bool release = false;
    const int threads = QThreadPool::globalInstance()->maxThreadCount();
    std::vector<std::unique_ptr<PoolTask>> holders;
    for (int t = 0; t < threads; ++t) {
        holders.push_back(std::make_unique<PoolTask>([&] {
            std::unique_lock<std::mutex> lock(mutex);
            ++holding;
            changed.notify_all();
            changed.wait(lock, [&] { return release; });
        }));
    }
    {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return holding == threads; });
    }

    std::thread::id ranOn;
    int runs = 0;
    {
        PoolTask task([&] {
            ranOn = std::this_thread::get_id();
            ++runs;
        });
        task.wait();
        EXPECT_EQ(ranOn, std::this_thread::get_id());
    }
    {
        const std::lock_guard<std::mutex> lock(mutex);
        release = true;
    }
    changed.notify_all();
    for (auto& holder : holders)
        holder->wait();
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_EQ(runs, 1);
}

// An exception of the work reaches the waiter; a task destroyed unwaited waits for its work but
// throws nothing.
TEST(PoolTask, ExceptionReachesTheWaiter)
{
    PoolTask failing([] { throw std::runtime_error("no memory for the levels"); });
    EXPECT_THROW(failing.wait(), std::runtime_error);

    std::atomic<bool> finished { false };
    {
        PoolTask unwaited([&] {
            finished = true;
            throw 7;
        });
    }
    EXPECT_TRUE(finished);
}
