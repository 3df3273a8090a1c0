#pragma once

#include "run/RunConfig.h"
#include "run/plan/Pipeline.h"

#include <velmorak/Mutex.h>

#include <chrono>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

enum class NodeStatus {
    NotRequested,  ///< Not downstream of the start plug-in, and not needed by one that is.
    Done,          ///< Executed.
    Reused,        ///< Its cached result is still valid.
    Failed,        ///< See the sentence.
    Skipped,       ///< Not run because something upstream failed.
    Unfinished,    ///< The run was stopped before.
};

struct NodeReport {
    NodeStatus status = NodeStatus::NotRequested;
    std::string sentence;  ///< Of a failed or skipped plug-in, without its name.
    std::uint64_t rowsIn = 0;
    std::uint64_t rowsOut = 0;
    double seconds = 0.0;
    std::vector<Value> outputs;  ///< Parallel to the node's outputs; monostate for a table and for a missing value.
    std::string reason{};        ///< Why it was executed or reused.
    std::vector<RecordedFile> written{};  ///< Complete files that it left, in this run or before it.
    bool takesTable = false;              ///< Some input is a table.
    std::vector<std::string> files{};     ///< Names of the files that it read, now or for a result that was reused.
};

struct RunReport {
    std::vector<NodeReport> nodes;  ///< Parallel to Pipeline::nodes.
    bool wasStopped = false;
    std::vector<RecordedFile> files{};   ///< Files that were read, now or for a result that was reused.
    std::vector<SkippedFile> skipped{};  ///< Files that should have been read.
    std::vector<FormerFile> former{};    ///< Files of earlier runs in the folder "former".
    std::vector<FormerFile> missing{};   ///< Those of them that this run should have made and did not.
    int threads = 0;
    std::chrono::system_clock::time_point began{};
    double seconds = 0.0;

    bool hasFailure() const;
};

class Executor;
class PassRunner;
class RunListener;

/// Executes pipelines, one at a time, and caches results. A plug-in that does not stop within a grace period of three
/// seconds after the run was asked to end is left behind with its thread; its kind is refused from then on.
/// Threads: run on one thread at a time; stop and reset on any thread at any time.
/// Errors:  nothing is thrown; failures are in the report and among the messages.
class Runner {
public:
    /// @param messages receives progress, one line for each plug-in, and failures.
    Runner(std::ostream& messages, bool isTerminal, const RunConfig& config = {});
    ~Runner();

    RunReport run(const Pipeline& pipeline);

    /// Whether runs first print for each plug-in whether it is executed or reused, and why. Off by default. Not called
    /// during a run.
    void explain(bool isWanted);

    /// Number of threads of each run from now on, at least 1. Called while no run is going on.
    void setThreads(std::size_t threads);

    /// Where results are cached on disk. Called before the first run.
    void setCache(const CacheConfig& cache);

    /// Who works from now on, in place of threads of the runner's own. Called while no run is going on.
    void setExecutor(std::unique_ptr<Executor> executor);

    /// Makes later runs write run.json to their results folders. Not called during a run.
    void leaveRecords();

    /// Waits for a run that was asked to end, until isOver or the end of the grace period.
    using Grace = std::function<void(Mutex& mutex, ConditionVariable& change, const std::function<bool()>& isOver)>;
    /// Replaces the grace period of three seconds. Not called during a run.
    void waitWith(Grace grace);

    /// Sets the observer of later runs. Not called during a run.
    /// @param listener outlives the runs; null for none.
    void setListener(RunListener* listener);

    /// Who carries out the passes of later runs over rows. Not called during a run.
    /// @param passRunner outlives the runs; null: each reads all rows.
    void passWith(PassRunner* passRunner);

    /// As above, but takes the snapshot when a stop already counts, so that none is lost in between.
    RunReport run(const std::function<Pipeline()>& snapshot);

    /// Asks the current run to end. Without one it has no effect, also not on the next run.
    void stop();

    /// Clears the cache and asks the current run to end.
    void reset();

private:
    struct Impl;
    std::shared_ptr<Impl> part;  ///< Shared with runs that are left behind.
};

}  // namespace velmorak
