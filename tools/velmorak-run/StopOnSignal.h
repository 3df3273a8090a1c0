#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

/// Turns SIGINT and SIGTERM into a call on a thread of its own, where any call is safe.
class StopOnSignal {
public:
    /// Keeps the signals from ending the program until an object of this class waits for them. Called on the main
    /// thread before any other is started.
    static void holdSignals();

    /// @param stop called when a signal comes, and again and again until this object goes: a run that is just about
    ///             to begin does not hear of the first call.
    explicit StopOnSignal(std::function<void()> stop);
    ~StopOnSignal();
    StopOnSignal(const StopOnSignal&) = delete;
    StopOnSignal& operator=(const StopOnSignal&) = delete;

    /// A signal has come.
    bool wasAsked() const { return asked; }

private:
    void watch();
    void stopUntilOver();

    std::function<void()> stop;
    std::atomic<bool> asked = false;
    std::mutex mutex;
    std::condition_variable over;
    bool isOver = false;
    std::thread watcher;
};
