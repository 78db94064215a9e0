#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>

namespace Tessaly {

// Work that starts on the global thread pool now and is waited for later, while the caller does
// something else. Whoever comes first runs it: a pool thread, or the caller in wait() when every
// pool thread is still busy with longer work, so waiting never stalls behind a busy pool. What the
// work wrote is visible after wait(), which passes on an exception the work threw. The destructor
// waits too, so the work may use what the caller owns.
class PoolTask
{
public:
    explicit PoolTask(std::function<void()> work);
    ~PoolTask();
    PoolTask(const PoolTask&) = delete;
    PoolTask& operator=(const PoolTask&) = delete;

    void wait();

private:
    struct State
    {
        std::mutex mutex;
        std::condition_variable finished;
        bool started = false;
        bool done = false;
        std::function<void()> work;
        std::exception_ptr error;
    };

    // Runs the work if nobody has started it yet.
    static void runIfFirst(State& state);

    std::shared_ptr<State> state;
    bool waited = false;
};

} // namespace Tessaly
