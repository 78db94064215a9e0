#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Tessaly {

// Where a preload and the interface thread meet once the plot's columns are in: the interface
// thread says when it has drawn them, and the preload waits for that a bounded time before it
// starts the other probes, so that they don't take the processor from the drawing. Standard locks,
// whose order thread checkers can follow.
class FirstColumnsHandOff
{
public:
    // False when the limit passed first: the interface thread may be busy, or gone.
    bool waitUntilDrawn(std::chrono::milliseconds limit)
    {
        std::unique_lock<std::mutex> lock(mutex);
        return drawnCondition.wait_for(lock, limit, [this] { return drawn; });
    }

    void markDrawn()
    {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            drawn = true;
        }
        drawnCondition.notify_all();
    }

private:
    std::mutex mutex;
    std::condition_variable drawnCondition;
    bool drawn = false;
};

} // namespace Tessaly
