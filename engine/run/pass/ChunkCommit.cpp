#include "run/pass/ChunkCommit.h"

#include <utility>

namespace velmorak {

using Clock = std::chrono::steady_clock;

ChunkCommit::ChunkCommit(RunState& state, SourceSet& sources, OperatorChain& chain)
    : state(state), sources(sources), chain(chain) {}

void ChunkCommit::commit(ChunkTask& task) {
    if (!sources.commit(task)) {
        return;
    }
    if (fileStates) {
        fileStates->enter(sources.filesBefore(task.segment) + task.chunk.file, task.chunk.rows, task.cost());
    }
    for (std::size_t i = 0; i < chain.size() && !state.isStopping(); ++i) {
        if (chain.at(i).sees(task.segment)) {
            commitOperator(i, task);
        }
    }
    if (!chain.needsMore(task)) {
        sources.close(task.segment);
    }
}

/// Files are counted from the first that the operator sees, whatever else the pass reads before.
ChunkPlace ChunkCommit::placeFor(const Operator& op, const ChunkTask& task) const {
    const std::uint64_t filesBefore =
        sources.filesBefore(task.segment) - sources.filesBefore(op.parents.front().firstSegment);
    return {filesBefore + task.chunk.file, task.chunk.number};
}

void ChunkCommit::commitOperator(std::size_t position, ChunkTask& task) {
    Operator& op = chain.at(position);
    if (op.isDropped) {
        return;
    }
    const Clock::time_point begin = Clock::now();
    OperatorOutput& output = task.outputs[position];
    std::optional<NodeError> error = std::move(output.error);
    if (!error && output.state) {
        error = state.call(op.node, [&] { op.merger->take(placeFor(op, task), std::move(output.state)); });
    }
    op.rowsIn += output.rowsIn;
    op.rowsOut += output.rowsOut;
    op.time += output.time + (Clock::now() - begin);
    if (error) {
        state.fail(op.node, *error);
        chain.drop(position);
    }
}

/// A node whose operators see different segments reports the sum of their rows.
void ChunkCommit::reportOperators() {
    for (std::size_t i = 0; i < chain.size(); ++i) {
        NodeReport& report = state.runs[chain.at(i).node].report;
        report.rowsIn = 0;
        report.rowsOut = 0;
    }
    for (std::size_t i = 0; i < chain.size(); ++i) {
        const Operator& op = chain.at(i);
        NodeReport& report = state.runs[op.node].report;
        report.rowsIn += op.rowsIn;
        report.rowsOut += op.rowsOut;
        state.addSeconds(op.node, op.time);
    }
}

bool ChunkCommit::finishPart() {
    reportOperators();
    return sources.finish() && !state.isStopping();
}

void ChunkCommit::finish() {
    if (fileStates && !sources.error() && !state.isStopping()) {
        fileStates->leave();
    }
    if (!finishPart() || !chain.hasWork()) {
        return;
    }
    sources.pass();
    for (std::size_t i = 0; i < chain.size(); ++i) {
        Operator& op = chain.at(i);
        if (op.isDropped) {
            continue;
        }
        state.pass(op.node);
        if (op.accumulation) {
            finishAccumulator(op);
        }
    }
}

void ChunkCommit::finishAccumulator(Operator& op) {
    if (state.isStopping()) {
        return;
    }
    const Stopwatch watch(state, op.node);
    NodeResults results(state.node(op.node).outputs);
    const std::optional<NodeError> error = state.call(op.node, [&] {
        const std::unique_ptr<AccumulatorState> whole = op.merger->whole();
        op.accumulation->finish(*whole, results);
    });
    if (error) {
        state.fail(op.node, *error);
    } else {
        state.finish(op.node, NodeStatus::Done, results.values());
    }
}

}  // namespace velmorak
