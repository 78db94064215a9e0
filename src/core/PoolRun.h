#pragma once

#include <QFuture>
#include <QFutureInterface>
#include <functional>

namespace Tessaly {

// Runs `work` on the global thread pool and returns its future, which finishes when the work
// returns or throws (an exception is logged, never let loose on the pool thread). The work may
// report progress on the future it is given. It reaches the pool thread through a standard lock,
// so everything the caller wrote before is ordered before the work, in a way that thread checkers
// can follow too: the pool's own hand-over is hidden inside Qt.
QFuture<void> runOnPool(std::function<void(QFutureInterface<void>& future)> work);

// Runs `work` on the global thread pool, the same way, without a future: for callers that wait
// on their own terms. The work must not throw.
void startOnPool(std::function<void()> work);

} // namespace Tessaly
