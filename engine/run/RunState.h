#pragma once

#include "run/NodeArguments.h"
#include "run/NodeContext.h"
#include "run/RunLedger.h"
#include "run/RunListener.h"
#include "run/messages/NodeError.h"
#include "run/plan/Plan.h"
#include "run/results/FormerResults.h"
#include "store/FileHashes.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

class StoredTable;

/// The state of one plug-in in a run.
struct NodeRun {
    bool isNeeded = false;
    bool isFinal = false;      ///< The status does not change any more.
    bool isReported = false;   ///< The listener has been called.
    bool hasStreamed = false;  ///< Of a stream: at least one pass came to its end.
    NodeReport report;
    std::string cause;                         ///< Of a failed or skipped plug-in: name of the one that failed.
    std::shared_ptr<const StoredTable> table;  ///< That it has made, until nobody reads it any more.
    std::vector<Value> remains;  ///< Of a failed plug-in: what it has got, parallel to its outputs; may be empty.
    std::unique_ptr<NodeContext> context;
};

/// The state of one run.
/// Threads: one at a time, except for the contexts and call.
class RunState {
public:
    /// @param pipeline, stopping, messages, ledger and listener outlive this.
    /// @throws Stopped when the run is asked to end during the planning.
    RunState(const Pipeline& pipeline, const std::atomic<bool>& stopping, Messages& messages, RunLedger& ledger,
             RunListener* listener);

    const PipelineNode& node(std::size_t position) const { return pipeline.nodes[position]; }
    bool isStopping() const { return stopping; }
    /// Executed or reused.
    bool isDone(std::size_t position) const;
    bool hasFailed(std::size_t position) const;
    /// All values that the plug-in takes are available, or have failed where they may.
    bool hasArguments(std::size_t position) const;
    /// The plug-in is executed although this one, which feeds it, has failed.
    bool mayGoWithout(std::size_t position, std::size_t producer) const;
    /// Some plug-in that feeds this one has failed.
    bool isIncomplete(std::size_t position) const;
    /// @throws Failure if a value does not suit its input.
    NodeArguments arguments(std::size_t position) const;

    /// Sets the status of a plug-in that ended with an error, and prints a failure.
    void fail(std::size_t position, const NodeError& error);
    void finalize(std::size_t position);
    void skip(std::size_t position, const std::string& cause);
    /// Sets the status of a plug-in that was not finished when the run was stopped.
    void stopFirst(std::size_t position);
    /// Marks the objects if the results are partial. A stored table is kept apart from the outputs, of which there are
    /// copies.
    void finish(std::size_t position, NodeStatus status, std::vector<Value> outputs);
    /// @return the table that the plug-in has stored; null without one.
    std::shared_ptr<const StoredTable> storedTable(std::size_t position) const { return runs[position].table; }
    /// Frees the stored table of the plug-in, when nobody reads it any more.
    void freeTable(std::size_t position) { runs[position].table.reset(); }
    void addSeconds(std::size_t position, std::chrono::nanoseconds time);
    /// A pass of the stream came to its end.
    void pass(std::size_t position);

    /// Calls code of the plug-in's kind; see RunLedger::call.
    template <typename Work>
    std::optional<NodeError> call(std::size_t position, Work&& work) const {
        return ledger.call(position, std::forward<Work>(work));
    }

    /// @return plug-ins that became final, or whose stream ended, since the last call, in the plan's order.
    std::vector<std::size_t> takeFinished();

    const Pipeline& pipeline;
    const std::atomic<bool>& stopping;
    Messages& messages;
    RunLedger& ledger;
    RunListener* listener;  ///< Null for none.
    unsigned passes = 0;    ///< Number of passes begun.
    Plan plan;
    ResultFolder results;
    FormerResults* former = nullptr;  ///< Files of earlier runs; null for a run that makes no result files.
    RunEnvironment environment;
    const std::int64_t beganNs = nowNs();
    std::vector<NodeRun> runs;  ///< Parallel to the pipeline's nodes.

private:
    /// @param mayMiss a value may be missing because its plug-in failed.
    Arrival arrival(const PipelineInput& input, bool mayMiss) const;
    Value remainsOf(const PipelineWire& wire) const;
    bool hasValueFor(const PipelineInput& input) const;

    std::vector<std::size_t> finished;  ///< Since the last takeFinished; may contain duplicates.
};

/// Adds the time of its scope to the seconds of a plug-in.
class Stopwatch {
public:
    Stopwatch(RunState& state, std::size_t node) : state(state), node(node) {}
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;
    ~Stopwatch() { state.addSeconds(node, std::chrono::steady_clock::now() - begin); }

private:
    RunState& state;
    std::size_t node;
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
};

}  // namespace velmorak
