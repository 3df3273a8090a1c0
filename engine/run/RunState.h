#pragma once

#include "run/NodeArguments.h"
#include "run/NodeContext.h"
#include "run/NodeError.h"
#include "run/Plan.h"
#include "run/RunLedger.h"
#include "run/RunListener.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

/// Where one plug-in stands in a run.
struct NodeRun {
    bool isNeeded = false;
    bool isFinal = false;      ///< Its outcome stands.
    bool isReported = false;   ///< The listener knows the outcome.
    bool hasStreamed = false;  ///< Of a stream: at least one pass went through to its end.
    NodeReport report;
    std::string cause;  ///< Of a failed or skipped plug-in: the one that failed.
    std::unique_ptr<NodeContext> context;
};

/// Everything that one run knows. Used by one thread at a time, but for what the contexts do.
class RunState {
public:
    /// @param pipeline, stopping, messages, ledger and listener outlive this.
    /// @throws Stopped when the run is asked to end during the planning.
    RunState(const Pipeline& pipeline, const std::atomic<bool>& stopping, Messages& messages, RunLedger& ledger,
             RunListener* listener);

    const PipelineNode& node(std::size_t position) const { return pipeline.nodes[position]; }
    bool isStopping() const { return stopping; }
    /// Executed, or taken from the store.
    bool isDone(std::size_t position) const;
    bool hasFailed(std::size_t position) const;
    /// All that feeds the plug-in with values is done.
    bool hasArguments(std::size_t position) const;
    /// @throws Failure when a value is not what the input takes.
    NodeArguments arguments(std::size_t position) const;

    /// Sets the outcome of a plug-in that could not do its work; a failure is said at once.
    void fail(std::size_t position, const NodeError& error);
    void finalize(std::size_t position);
    void skip(std::size_t position, const std::string& cause);
    /// Sets the outcome of a plug-in that the end of the run came before.
    void stopFirst(std::size_t position);
    void finish(std::size_t position, NodeStatus status, std::vector<Value> outputs);
    void addSeconds(std::size_t position, std::chrono::nanoseconds time);
    /// The rows of a stream have passed to their end.
    void pass(std::size_t position);

    /// Calls a piece of the plug-in's kind, as RunLedger does.
    template <typename Work>
    std::optional<NodeError> call(std::size_t position, Work&& work) const {
        return ledger.call(position, std::forward<Work>(work));
    }

    /// Plug-ins that were settled, or that passed, since the last call, in the plan's order.
    std::vector<std::size_t> takeFinished();

    const Pipeline& pipeline;
    const std::atomic<bool>& stopping;
    Messages& messages;
    RunLedger& ledger;
    RunListener* listener;  ///< Null for none.
    unsigned passes = 0;    ///< Passages of rows that have begun.
    Plan plan;
    ResultFolder results;
    RunEnvironment environment;
    std::vector<NodeRun> runs;  ///< Parallel to the pipeline's nodes.

private:
    /// @param mayMiss the plug-in takes what has no value because something failed.
    Arrival arrival(const PipelineInput& input, bool mayMiss) const;

    std::vector<std::size_t> finished;  ///< Since the last takeFinished; perhaps twice.
};

/// Times what a plug-in does on the run's own thread, into its seconds.
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
