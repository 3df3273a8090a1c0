#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

/// Turns SIGINT and SIGTERM, and the end of the time that is allowed, into a stop of the run, on a thread of its own,
/// where any call is safe. While there is no run that could be stopped, the program ends at once, with the status of
/// one that was stopped; so it does at a second signal.
class StopOnSignal {
public:
    /// Keeps the signals from ending the program until an object of this class waits for them. Called on the main
    /// thread before any other is started.
    static void holdSignals();

    /// @param timeoutSeconds from now on; 0 for any time.
    explicit StopOnSignal(double timeoutSeconds);
    ~StopOnSignal();
    StopOnSignal(const StopOnSignal&) = delete;
    StopOnSignal& operator=(const StopOnSignal&) = delete;

    /// While it lives, a stop is a call and not the end of the program.
    class Stoppable {
    public:
        /// @param stop called when a signal comes, and again and again until this object goes: a run that is just about
        ///             to begin does not hear of the first call.
        Stoppable(StopOnSignal& signals, std::function<void()> stop);
        ~Stoppable();
        Stoppable(const Stoppable&) = delete;
        Stoppable& operator=(const Stoppable&) = delete;

    private:
        StopOnSignal& signals;
    };

    /// A signal has come, or the time is over.
    bool wasAsked() const { return asked; }

private:
    void watch();
    void stopUntilOver(bool isSignalled);
    void callStop();

    std::mutex mutex;            ///< Of stop, also while it is called.
    std::function<void()> stop;  ///< Empty where the program is to end.
    double timeoutSeconds;
    std::atomic<bool> asked = false;
    std::atomic<bool> isOver = false;
    std::thread watcher;
};
