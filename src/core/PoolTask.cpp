#include "core/PoolTask.h"

#include "core/PoolRun.h"

namespace Tessaly {

PoolTask::PoolTask(std::function<void()> work)
    : state(std::make_shared<State>())
{
    state->work = std::move(work);
    // The pool's task keeps the state alive; it may run long after the wait, and then finds the
    // work started and leaves at once.
    startOnPool([state = state] { runIfFirst(*state); });
}

PoolTask::~PoolTask()
{
    if (waited)
        return;
    try {
        wait();
    } catch (...) {
        // Already reported by the work's own caller, or nobody asked: a destructor must not throw.
    }
}

void PoolTask::runIfFirst(State& state)
{
    {
        const std::lock_guard<std::mutex> lock(state.mutex);
        if (state.started)
            return;
        state.started = true;
    }
    std::exception_ptr error;
    try {
        state.work();
    } catch (...) {
        error = std::current_exception();
    }
    {
        const std::lock_guard<std::mutex> lock(state.mutex);
        state.error = error;
        state.done = true;
        // What the work captured may be gone once the waiter returns.
        state.work = nullptr;
    }
    state.finished.notify_all();
}

void PoolTask::wait()
{
    waited = true;
    runIfFirst(*state);
    std::unique_lock<std::mutex> lock(state->mutex);
    state->finished.wait(lock, [this] { return state->done; });
    if (state->error) {
        const std::exception_ptr error = state->error;
        state->error = nullptr;
        std::rethrow_exception(error);
    }
}

} // namespace Tessaly
