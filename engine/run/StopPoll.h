#pragma once

#include <velmorak/Failure.h>

#include <functional>
#include <utility>

namespace velmorak {

/// Polls for a stop in a loop whose steps are too short to ask in each. Used by one thread.
class StopPoll {
public:
    /// Calls of step between two polls.
    static constexpr unsigned interval = 1024;

    /// @param isStopping empty: never.
    explicit StopPoll(std::function<bool()> isStopping = {}) : isStopping(std::move(isStopping)) {}

    /// @throws Stopped
    void step() {
        if (++steps % interval == 0 && isStopping && isStopping()) {
            throw Stopped();
        }
    }

private:
    std::function<bool()> isStopping;
    unsigned steps = 0;
};

}  // namespace velmorak
