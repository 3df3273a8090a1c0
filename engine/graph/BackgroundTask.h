#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

namespace velmorak {

/// Work that may wait without end, because a file system does not answer. It has a thread of its own, which is left
/// behind where nobody wants to wait for it any longer.
/// Threads: every operation may be called on any thread.
class BackgroundTask {
public:
    /// Begins the work, which must own all that it uses and must not throw.
    static std::shared_ptr<BackgroundTask> begin(std::function<void(BackgroundTask&)> work);

    /// For the work: it has got hold of something.
    void advance();
    /// For the work: nobody wants the rest of it.
    bool isStopping() const { return isStopped; }

    void stop() { isStopped = true; }
    /// @return true when the work has ended, false when it has not advanced for so long.
    bool wait(std::chrono::milliseconds patience);

private:
    void end();

    std::mutex mutex;
    std::condition_variable changed;
    std::uint64_t steps = 0;
    bool isDone = false;
    std::atomic<bool> isStopped = false;
};

}  // namespace velmorak
