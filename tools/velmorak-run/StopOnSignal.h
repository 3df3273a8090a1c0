#pragma once

#include <velmorak/Mutex.h>

#include <atomic>
#include <functional>
#include <thread>

/// Stops the run on SIGINT, SIGTERM, or when the time limit has passed. It waits for signals on a separate thread,
/// where any function may be called. Without a run that can be stopped, and at a second signal, the program ends at
/// once with the exit status of a stopped run.
class StopOnSignal {
public:
    /// Blocks the signals until an object of this class waits for them. Called on the main thread before any other
    /// thread is started.
    static void holdSignals();

    /// @param timeoutSeconds from now on; 0 for no limit.
    explicit StopOnSignal(double timeoutSeconds);
    ~StopOnSignal();
    StopOnSignal(const StopOnSignal&) = delete;
    StopOnSignal& operator=(const StopOnSignal&) = delete;

    /// While it lives, a signal calls a function instead of ending the program.
    class Stoppable {
    public:
        /// @param stop called when a signal comes, and repeatedly until this object is destroyed, because a run that is
        ///             about to begin misses the first call.
        Stoppable(StopOnSignal& signals, std::function<void()> stop);
        ~Stoppable();
        Stoppable(const Stoppable&) = delete;
        Stoppable& operator=(const Stoppable&) = delete;

    private:
        StopOnSignal& signals;
    };

    /// A signal has come, or the time limit has passed.
    bool wasAsked() const { return asked; }

private:
    void watch();
    void stopUntilOver(bool isSignalled);
    void callStop();

    velmorak::Mutex mutex;                                  ///< Held also while stop is called.
    std::function<void()> stop VELMORAK_GUARDED_BY(mutex);  ///< Empty when a signal must end the program.
    double timeoutSeconds;
    std::atomic<bool> asked = false;
    std::atomic<bool> isOver = false;
    std::thread watcher;
};
