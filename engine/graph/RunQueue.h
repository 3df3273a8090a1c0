#pragma once

#include "graph/EarlyStop.h"

#include "run/Runner.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

namespace velmorak {

/// Executes one run at a time; further ones wait for their turn.
/// Threads: run on any number of worker threads; stop and reset on any thread; all others while no run is going on.
class RunQueue {
public:
    /// @param cache where results are kept for later programs.
    explicit RunQueue(const CacheConfig& cache);

    /// @param snapshot gives the pipeline at the moment when this run's turn has come.
    void run(const std::function<Pipeline()>& snapshot);
    void explain(bool isAsked) { runner->explain(isAsked); }
    void setListener(RunListener* listener) { runner->tell(listener); }
    /// @param count 0 for as many as the environment says.
    void setThreads(int count) { runner->setThreads(count); }
    /// From now on, no run reuses an earlier result or keeps its own. Forgets the settings above.
    void forgetResults();

    /// Ends the run that is going on. Where none is, it counts for a run that was asked for but has not begun yet (see
    /// EarlyStop), and for no other.
    void stop();
    void reset() { runner->reset(); }

    /// Ends the run that is going on, turns those that wait away, and returns when none is left.
    void close();

    /// Of the last run that has ended.
    const RunReport& report() const { return lastReport; }

private:
    void executeTurn(const std::function<Pipeline()>& snapshot);
    bool begins();
    Pipeline takeSnapshot(const std::function<Pipeline()>& snapshot);

    std::unique_ptr<Runner> runner;
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
