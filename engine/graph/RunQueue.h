#pragma once

#include "graph/EarlyStop.h"

#include "run/Runner.h"

#include <condition_variable>
#include <functional>
#include <mutex>

namespace velmorak {

/// Lets one run at a time through to the runner.
/// Threads: run on any number of worker threads, one executes and the others wait; stop and reset on any thread.
class RunQueue {
public:
    RunQueue();

    /// @param snapshot gives the pipeline at the moment when this run's turn has come.
    void run(const std::function<Pipeline()>& snapshot);
    void setThreads(std::size_t threads) { runner.setThreads(threads); }
    void setCache(const CacheConfig& cache) { runner.setCache(cache); }
    void explain(bool isAsked) { runner.explain(isAsked); }
    void tell(RunListener* listener) { runner.tell(listener); }

    /// Ends the run that is going on. Where none is, it counts for a run that was asked for but has not begun yet (see
    /// EarlyStop), and for no other.
    void stop();
    void reset() { runner.reset(); }

    /// Ends the run that is going on, turns those that wait away, and returns when none is left.
    void close();

    /// Of the last run that has ended.
    const RunReport& report() const { return lastReport; }

private:
    void executeTurn(const std::function<Pipeline()>& snapshot);
    bool begins();
    Pipeline look(const std::function<Pipeline()>& snapshot);

    Runner runner;
    std::mutex turn;
    std::mutex stateLock;
    std::condition_variable nobodyIsLeft;
    int callers = 0;           ///< Of run, waiting or executing.
    bool isClosed = false;     ///< No run begins any more.
    bool isGoingOn = false;    ///< A run has begun and not ended.
    bool isToEnd = false;      ///< That run was asked to end.
    EarlyStop stopWithoutRun;  ///< The last one.
    RunReport lastReport;
};

}  // namespace velmorak
