#include "graph/RunQueue.h"

#include "graph/Log.h"

#include "run/NodeError.h"

#include <unistd.h>
#include <exception>
#include <iostream>

namespace velmorak {
namespace {

std::unique_ptr<Runner> makeRunner(const CacheConfig& cache) {
    auto runner = std::make_unique<Runner>(std::cerr, isatty(STDERR_FILENO) == 1, cache);
    runner->explain(true);
    runner->leaveRecords();
    return runner;
}

}  // namespace

RunQueue::RunQueue(const CacheConfig& cache) : runner(makeRunner(cache)) {}

void RunQueue::forgetResults() {
    runner = makeRunner({});
}

void RunQueue::run(const std::function<Pipeline()>& snapshot) {
    {
        const std::lock_guard guard(stateLock);
        if (isClosed) {
            return;
        }
        ++callers;
    }
    executeTurn(snapshot);
    const std::lock_guard guard(stateLock);
    --callers;
    nobodyIsLeft.notify_all();
}

void RunQueue::executeTurn(const std::function<Pipeline()>& snapshot) {
    const std::lock_guard myTurn(turn);
    if (!begins()) {
        return;
    }
    try {
        lastReport = runner->run([&] { return takeSnapshot(snapshot); });
    } catch (const std::exception&) {
        printMessage("The run ended: " + errorOf(std::current_exception()).sentence + ".");
    }
    const std::lock_guard guard(stateLock);
    isGoingOn = false;
}

bool RunQueue::begins() {
    const std::lock_guard guard(stateLock);
    if (isClosed) {
        return false;
    }
    isGoingOn = true;
    isToEnd = stopWithoutRun.takesBeginningRun();
    return true;
}

/// When the runner takes its snapshot, a stop already reaches it: a stop that came earlier is passed on here.
Pipeline RunQueue::takeSnapshot(const std::function<Pipeline()>& snapshot) {
    {
        const std::lock_guard guard(stateLock);
        if (isToEnd) {
            runner->stop();
        }
    }
    return snapshot();
}

void RunQueue::stop() {
    const std::lock_guard guard(stateLock);
    if (!isGoingOn) {
        stopWithoutRun.note();
        return;
    }
    isToEnd = true;
    runner->stop();
}

void RunQueue::close() {
    std::unique_lock guard(stateLock);
    isClosed = true;
    isToEnd = true;
    runner->stop();
    nobodyIsLeft.wait(guard, [this] { return callers == 0; });
}

}  // namespace velmorak
