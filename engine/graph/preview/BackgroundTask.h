#pragma once

#include <velmorak/Mutex.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

namespace velmorak {

/// Work that may block for ever, because a file system does not answer. Its thread is detached: the kernel gives no way
/// to end a thread that it holds, so nobody can be made to join it.
/// Lifetime: the work owns everything that it uses, because it may outlive whoever started it.
/// Threads:  every operation may be called on any thread.
class BackgroundTask {
public:
    using Work = std::function<void(BackgroundTask&)>;

    /// @param work must not throw.
    explicit BackgroundTask(Work work) : work(std::move(work)) {}

    /// Runs the work on a new thread.
    static std::shared_ptr<BackgroundTask> begin(Work work);

    /// Runs the work on this thread, unless stop came first. Called once.
    void run();

    /// For the work: reports progress.
    void advance();
    /// For the work: nobody wants the rest of it.
    bool isStopping() const { return isStopped; }

    void stop() { isStopped = true; }
    /// @return true when the work has ended, false when it has made no progress for so long.
    bool wait(std::chrono::milliseconds patience);

private:
    Work work;
    Mutex mutex;
    ConditionVariable changed;
    std::uint64_t steps VELMORAK_GUARDED_BY(mutex) = 0;
    bool isDone VELMORAK_GUARDED_BY(mutex) = false;
    std::atomic<bool> isStopped = false;
};

}  // namespace velmorak
