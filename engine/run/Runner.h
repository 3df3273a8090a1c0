#pragma once

#include "run/Pipeline.h"
#include "run/RunConfig.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace velmorak {

enum class NodeStatus {
    NotRequested,  ///< Shares nothing with the start plug-in.
    Done,          ///< Executed.
    Reused,        ///< Its stored result was still right.
    Failed,        ///< See the sentence.
    Skipped,       ///< Not run because of something upstream.
    Unfinished,    ///< The run was stopped first.
};

struct NodeReport {
    NodeStatus status = NodeStatus::NotRequested;
    std::string sentence;  ///< Of a failed or skipped plug-in, without its name.
    std::uint64_t rowsIn = 0;
    std::uint64_t rowsOut = 0;
    double seconds = 0.0;
    std::vector<Value> outputs;  ///< Parallel to the node's outputs; monostate for a table and for what is missing.
    std::string reason{};        ///< Of one that was executed or reused: why.
    std::vector<RecordedFile> written{};  ///< Complete files that it left, in this run or before it.
    bool takesTable = false;              ///< Some input is a table.
};

struct RunReport {
    std::vector<NodeReport> nodes;  ///< Parallel to Pipeline::nodes.
    bool wasStopped = false;
    std::vector<RecordedFile> files{};  ///< Files that were read, now or for a result that was reused.
    int threads = 0;
    std::chrono::system_clock::time_point began{};
    double seconds = 0.0;

    bool hasFailure() const;
};

inline constexpr int maxThreads = 1024;  ///< Of one run.

class Executor;
class RunListener;

/// Executes pipelines, one at a time, on all cores, and keeps what may be used again. A plug-in that does not stop when
/// the run is asked to end is left behind after a grace of three seconds, with its thread; its kind is refused from
/// then on. Threads: run on one thread at a time; stop and reset on any thread at any time. Errors:  nothing is thrown;
/// what fails is in the report and on the stream of messages.
class Runner {
public:
    /// @param messages progress, one line a plug-in, and failures. On a terminal the progress line redraws.
    Runner(std::ostream& messages, bool isTerminal, const RunConfig& config = {});
    ~Runner();

    RunReport run(const Pipeline& pipeline);

    /// Before a run executes anything, it says for each plug-in whether it is executed or reused, and why. Not at
    /// first. Called while no run is going on.
    void explain(bool isWanted);

    /// Number of threads of each run from now on, at least 1. Called while no run is going on.
    void setThreads(std::size_t threads);

    /// Where results are cached on disk. Called before the first run.
    void setCache(const CacheConfig& cache);

    /// Who works from now on, in place of threads of the runner's own. Called while no run is going on.
    void setExecutor(std::unique_ptr<Executor> executor);

    /// From now on, each run leaves a record of itself in its results folder. Called while no run is going on.
    void leaveRecords();

    /// Waits on a run that was asked to end, until isOver or for as long as a plug-in may take to hear of it.
    using Grace = std::function<void(std::unique_lock<std::mutex>& lock, std::condition_variable& change,
                                     const std::function<bool()>& isOver)>;
    /// Takes the place of three seconds of the clock. Called while no run is going on.
    void waitWith(Grace grace);

    /// From now on, this is told what runs do. Called while no run is going on.
    /// @param listener outlives the runs; null for none.
    void tell(RunListener* listener);

    /// As above. The snapshot is taken when a stop already counts, so that none gets lost between the two.
    RunReport run(const std::function<Pipeline()>& snapshot);

    /// Asks the run that is going on to end. Without one, nothing happens and the next run is not affected.
    void stop();

    /// Forgets all kept results and asks a run that is going on to end.
    void reset();

private:
    struct Impl;
    std::shared_ptr<Impl> part;  ///< Also of runs that are left behind.
};

}  // namespace velmorak
