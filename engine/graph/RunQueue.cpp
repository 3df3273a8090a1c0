#include "graph/RunQueue.h"

#include "graph/Log.h"

#include "run/messages/NodeError.h"

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
        const MutexLock lock(stateMutex);
        if (isClosed) {
            return;
        }
        ++callers;
    }
    executeTurn(snapshot);
    const MutexLock lock(stateMutex);
    --callers;
    isIdle.notifyAll();
}

void RunQueue::executeTurn(const std::function<Pipeline()>& snapshot) {
    const MutexLock turn(runMutex);
    if (!tryBegin()) {
        return;
    }
    try {
        lastReport = runner.run([&] { return takeSnapshot(snapshot); });
    } catch (const std::exception&) {
        printMessage("The run ended: " + errorOf(std::current_exception()).sentence + ".");
    }
    const MutexLock lock(stateMutex);
    isRunning = false;
}

bool RunQueue::tryBegin() {
    const MutexLock lock(stateMutex);
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
        const MutexLock lock(stateMutex);
        if (isStopRequested) {
            runner.stop();
        }
    }
    return snapshot();
}

void RunQueue::stop() {
    const MutexLock lock(stateMutex);
    if (!isRunning) {
        stopWithoutRun.note();
        return;
    }
    isStopRequested = true;
    runner.stop();
}

void RunQueue::close() {
    const MutexLock lock(stateMutex);
    isClosed = true;
    isStopRequested = true;
    runner.stop();
    while (callers > 0) {
        isIdle.wait(stateMutex);
    }
}

}  // namespace velmorak
