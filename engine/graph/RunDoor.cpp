#include "RunDoor.h"

#include "Say.h"

#include "../run/Problem.h"

#include <unistd.h>
#include <exception>
#include <iostream>

namespace velmorak {

RunDoor::RunDoor() : runner(std::cerr, isatty(STDERR_FILENO) == 1, storePlaceOfEnvironment()) {
    runner.explain(true);
    runner.leaveRecords();
}

void RunDoor::run(const std::function<Pipeline()>& snapshot) {
    {
        const std::lock_guard guard(stateLock);
        if (isClosed)
            return;
        ++callers;
    }
    executeTurn(snapshot);
    const std::lock_guard guard(stateLock);
    --callers;
    nobodyIsLeft.notify_all();
}

void RunDoor::executeTurn(const std::function<Pipeline()>& snapshot) {
    const std::lock_guard myTurn(turn);
    {
        const std::lock_guard guard(stateLock);
        if (isClosed)
            return;
    }
    try {
        lastReport = runner.run(snapshot);
    } catch (const std::exception&) {
        say("The run ended: " + problemOf(std::current_exception()).sentence + ".");
    }
}

/// A run may be between its turn and the runner, where a stop does not reach it yet; so it is asked until it has ended.
void RunDoor::close() {
    std::unique_lock guard(stateLock);
    isClosed = true;
    while (callers > 0) {
        guard.unlock();
        runner.stop();
        guard.lock();
        constexpr std::chrono::milliseconds betweenAsks(20);
        nobodyIsLeft.wait_for(guard, betweenAsks, [&] { return callers == 0; });
    }
}

}  // namespace velmorak
