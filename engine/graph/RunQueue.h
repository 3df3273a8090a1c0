#pragma once

#include "graph/EarlyStop.h"

#include "run/Runner.h"

#include <velmorak/Mutex.h>

#include <functional>
#include <memory>

namespace velmorak {

/// Executes one run at a time; further ones wait for their turn.
/// Threads: run on any number of worker threads; stop and reset on any thread; all others while no run is going on.
class RunQueue {
public:
    /// @param config of every run, until it is changed below.
    explicit RunQueue(const RunConfig& config);

    /// @param snapshot called when this run's turn has come; returns the pipeline as it is then.
    void run(const std::function<Pipeline()>& snapshot);
    void explain(bool isWanted) { runner.explain(isWanted); }
    void setListener(RunListener* listener) { runner.setListener(listener); }
    void setPassRunner(PassRunner* passRunner) { runner.passWith(passRunner); }
    void setThreads(std::size_t threads) { runner.setThreads(threads); }
    void setCache(const CacheConfig& cache) { runner.setCache(cache); }

    /// Stops the current run. Without one, the stop applies to a run that was requested but has not begun (see
    /// EarlyStop), and to no other.
    void stop();
    void reset() { runner.reset(); }

    /// Stops the current run, rejects the waiting ones, and returns when none is left.
    void close();

    /// Report of the last run that has ended.
    const RunReport& report() const { return lastReport; }

private:
    void executeTurn(const std::function<Pipeline()>& snapshot);
    bool tryBegin();
    Pipeline takeSnapshot(const std::function<Pipeline()>& snapshot);

    Runner runner;
    Mutex runMutex;  ///< Held by the run that executes.
    Mutex stateMutex;
    ConditionVariable isIdle;
    int callers VELMORAK_GUARDED_BY(stateMutex) = 0;               ///< Threads in run(), waiting or executing.
    bool isClosed VELMORAK_GUARDED_BY(stateMutex) = false;         ///< Further runs are rejected.
    bool isRunning VELMORAK_GUARDED_BY(stateMutex) = false;        ///< A run has begun and has not ended.
    bool isStopRequested VELMORAK_GUARDED_BY(stateMutex) = false;  ///< For the current run.
    EarlyStop stopWithoutRun VELMORAK_GUARDED_BY(stateMutex);  ///< The last stop that came while no run was going on.
    RunReport lastReport;
};

}  // namespace velmorak
