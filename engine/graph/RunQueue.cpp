#include "graph/RunQueue.h"

#include "graph/Log.h"

#include "run/NodeError.h"

#include <unistd.h>
#include <exception>
#include <iostream>

namespace velmorak {
RunQueue::RunQueue(const RunConfig& config) : runner(std::cerr, isatty(STDERR_FILENO) == 1, config) {
    runner.explain(true);
    runner.leaveRecords();
}

void RunQueue::run(const std::function<Pipeline()>& snapshot) {
    {
        const std::lock_guard guard(stateMutex);
        if (isClosed) {
            return;
        }
        ++callers;
    }
    executeTurn(snapshot);
    const std::lock_guard guard(stateMutex);
    --callers;
    isIdle.notify_all();
}

void RunQueue::executeTurn(const std::function<Pipeline()>& snapshot) {
    const std::lock_guard guardOfRun(runMutex);
    if (!tryBegin()) {
        return;
    }
    try {
        lastReport = runner.run([&] { return takeSnapshot(snapshot); });
    } catch (const std::exception&) {
        printMessage("The run ended: " + errorOf(std::current_exception()).sentence + ".");
    }
    const std::lock_guard guard(stateMutex);
    isRunning = false;
}

bool RunQueue::tryBegin() {
    const std::lock_guard guard(stateMutex);
    if (isClosed) {
        return false;
    }
    isRunning = true;
    isStopRequested = stopWithoutRun.consumeForThisRun();
    return true;
}

/// When the runner takes its snapshot, a stop already reaches it: a stop that came earlier is passed on here.
Pipeline RunQueue::takeSnapshot(const std::function<Pipeline()>& snapshot) {
    {
        const std::lock_guard guard(stateMutex);
        if (isStopRequested) {
            runner.stop();
        }
    }
    return snapshot();
}

void RunQueue::stop() {
    const std::lock_guard guard(stateMutex);
    if (!isRunning) {
        stopWithoutRun.note();
        return;
    }
    isStopRequested = true;
    runner.stop();
}

void RunQueue::close() {
    std::unique_lock guard(stateMutex);
    isClosed = true;
    isStopRequested = true;
    runner.stop();
    isIdle.wait(guard, [this] { return callers == 0; });
}

}  // namespace velmorak
