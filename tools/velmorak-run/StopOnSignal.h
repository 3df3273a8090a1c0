#pragma once

#include <atomic>
#include <functional>
#include <thread>

/// Turns SIGINT and SIGTERM, and the end of the time that is allowed, into a call on a thread of its own, where any
/// call is safe. A second signal ends the program at once, with the status of one that was stopped.
class StopOnSignal {
public:
    /// Keeps the signals from ending the program until an object of this class waits for them. Called on the main
    /// thread before any other is started.
    static void holdSignals();

    /// @param stop called when a signal comes, and again and again until this object goes: a run that is just about
    ///             to begin does not hear of the first call.
    /// @param timeoutSeconds 0 for any time.
    StopOnSignal(std::function<void()> stop, double timeoutSeconds);
    ~StopOnSignal();
    StopOnSignal(const StopOnSignal&) = delete;
    StopOnSignal& operator=(const StopOnSignal&) = delete;

    /// A signal has come, or the time is over.
    bool wasAsked() const { return asked; }

private:
    void watch();
    void stopUntilOver(bool isSignalled);

    std::function<void()> stop;
    double timeoutSeconds;
    std::atomic<bool> asked = false;
    std::atomic<bool> isOver = false;
    std::thread watcher;
};
