#include "core/PoolRun.h"

#include <QRunnable>
#include <QThreadPool>
#include <QtGlobal>
#include <deque>
#include <exception>
#include <mutex>

namespace Tessaly {

namespace {

// Work waiting for a pool thread, first in first out. Every call to runOnPool queues one piece and
// starts one pool task that takes one, so a task never finds the queue empty. Never destroyed:
// pool threads may outlive the statics at exit.
struct PoolQueue
{
    std::mutex mutex;
    std::deque<std::function<void()>> waiting;
};

PoolQueue& poolQueue()
{
    static auto* queue = new PoolQueue;
    return *queue;
}

void runNextQueued()
{
    PoolQueue& queue = poolQueue();
    std::function<void()> next;
    {
        const std::lock_guard<std::mutex> lock(queue.mutex);
        next = std::move(queue.waiting.front());
        queue.waiting.pop_front();
    }
    next();
}

// The task handed to the pool for every queued piece. It carries nothing itself, and it is made
// once and never deleted, so the pool may hold it several times at once and nothing of it passes
// from one thread to another behind the pool's own lock.
class TakeNextQueued final : public QRunnable
{
public:
    TakeNextQueued() { setAutoDelete(false); }
    void run() override { runNextQueued(); }
};

QRunnable* takeNextQueued()
{
    static auto* task = new TakeNextQueued;
    return task;
}

} // namespace

QFuture<void> runOnPool(std::function<void(QFutureInterface<void>& future)> work)
{
    QFutureInterface<void> future;
    future.reportStarted();
    auto run = [future, work = std::move(work)]() mutable {
        // The future finishes whatever happens, or whoever waits on it would wait for ever.
        struct Finish
        {
            QFutureInterface<void>& future;
            ~Finish() { future.reportFinished(); }
        } finish { future };
        try {
            work(future);
        } catch (const std::exception& error) {
            qWarning("A background task stopped: %s", error.what());
        } catch (...) {
            qWarning("A background task stopped on an unknown error");
        }
    };
    startOnPool(std::move(run));
    return future.future();
}

void startOnPool(std::function<void()> work)
{
    PoolQueue& queue = poolQueue();
    {
        const std::lock_guard<std::mutex> lock(queue.mutex);
        queue.waiting.push_back(std::move(work));
    }
    // What the task runs comes through the lock above.
    QThreadPool::globalInstance()->start(takeNextQueued());
}

} // namespace Tessaly
