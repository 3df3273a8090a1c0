#include "run/StreamTypes.h"
#include "run/Summary.h"

#include <algorithm>
#include <utility>

/// What is taken in of a stream's chunks, one after the other, and what remains when all have passed.
namespace velmorak {

using Instant = std::chrono::steady_clock;

/// How far the rows that some plug-in still wants have passed; nothing when the source cannot say.
std::optional<double> StreamPass::fractionOf(const Segment& segment) {
    std::optional<double> read;
    sourceError = state.call(segment.source, [&] { read = segment.reader->fraction(); });
    double least = 1.0;
    for (std::size_t i = 0; i < operators.size(); ++i) {
        if (operators[i]->hasChild || !operators[i]->sees(segmentBeingRead) || operators[i]->isOut) {
            continue;
        }
        double furthest = read.value_or(-1.0);
        for (std::optional<std::size_t> at = i; at; at = operators[*at]->parentFor(segmentBeingRead).op) {
            if (const std::optional<std::uint64_t> limit = operators[*at]->rowLimit) {
                const auto rows = static_cast<double>(operators[*at]->rowsCounted.load(std::memory_order_relaxed));
                furthest = std::max(furthest, *limit > 0 ? rows / static_cast<double>(*limit) : 1.0);
            }
        }
        if (furthest < 0.0) {
            return std::nullopt;
        }
        least = std::min(least, furthest);
    }
    return operators.empty() ? read : std::optional(least);
}

void StreamPass::showProgress() {
    const bool isLineDue = state.messages.isProgressDue();
    const bool isListening = state.listener && state.listener->isProgressDue();
    if (!isLineDue && !isListening) {
        return;
    }
    const Segment& segment = *segments[segmentBeingRead];
    ProgressNow now{state.node(segment.source).name, state.passes, segment.rows, fractionOf(segment), 0.0};
    if (now.fraction) {
        const double done = static_cast<double>(segmentBeingRead) + std::clamp(*now.fraction, 0.0, 1.0);
        fractionShown = std::max(fractionShown, done / static_cast<double>(segments.size()));
        now.fraction = fractionShown;
    }
    const std::chrono::duration<double> elapsed = Instant::now() - began;
    now.seconds = elapsed.count();
    if (isLineDue) {
        state.messages.showProgress(progressText(now));
    }
    if (isListening) {
        state.listener->progressed(now);
    }
}

void StreamPass::commitChunk(ChunkTask& task) {
    segments[task.segment]->timeCompleting += task.timeCompleting;
    if (task.error && !chunkError) {
        chunkError = std::move(task.error);
        segmentOfChunkError = task.segment;
        hasWork = false;
    }
    if (chunkError) {
        return;
    }
    for (std::size_t i = 0; i < operators.size() && !state.isStopping(); ++i) {
        if (operators[i]->sees(task.segment)) {
            commitOperator(i, task);
        }
    }
    closeSegment(task);
}

void StreamPass::commitOperator(std::size_t position, ChunkTask& task) {
    Operator& op = *operators[position];
    if (op.isDropped) {
        return;
    }
    const Instant::time_point begin = Instant::now();
    ChunkTask::OperatorOutput& made = task.made[position];
    std::optional<NodeError> error = std::move(made.error);
    if (!error && made.state) {
        error = state.call(op.node, [&] { op.merger->take(std::move(made.state)); });
    }
    op.rowsIn += made.rowsIn;
    op.rowsOut += made.rowsOut;
    op.time += made.time + (Instant::now() - begin);
    if (error) {
        state.fail(op.node, *error);
        drop(position);
    }
}

void StreamPass::closeSegment(const ChunkTask& task) {
    bool isWanted = operators.empty();
    for (std::size_t i = 0; i < operators.size(); ++i) {
        const Operator& op = *operators[i];
        isWanted = isWanted || (!op.hasChild && op.sees(task.segment) && !op.isDropped && !task.made[i].isOver);
    }
    if (!isWanted) {
        segments[task.segment]->isOver = true;
    }
}

void StreamPass::drop(std::size_t position) {
    bool isWorking = false;
    for (std::size_t i = 0; i < operators.size(); ++i) {
        Operator& op = *operators[i];
        const bool hasLostParent =
            std::any_of(op.parents.begin(), op.parents.end(),
                        [&](const Operator::Parent& parent) { return parent.op && operators[*parent.op]->isDropped; });
        if (i == position || hasLostParent) {
            op.isDropped = true;
            op.isOut = true;
            op.failedAt = 0;
            op.merger.reset();
        }
        isWorking = isWorking || !op.isDropped;
    }
    hasWork = isWorking;
}

void StreamPass::reportOperators() {
    for (const auto& segment : segments) {
        state.runs[segment->source].report.rowsOut = segment->rows;
        state.addSeconds(segment->source, segment->time + segment->timeCompleting);
    }
    for (const auto& op : operators) {
        NodeReport& report = state.runs[op->node].report;
        report.rowsIn = 0;
        report.rowsOut = 0;
    }
    for (const auto& op : operators) {
        NodeReport& report = state.runs[op->node].report;
        report.rowsIn += op->rowsIn;
        report.rowsOut += op->rowsOut;
        state.addSeconds(op->node, op->time);
    }
}

void StreamPass::finish() {
    reportOperators();
    if (chunkError) {
        state.fail(segments[segmentOfChunkError]->source, *chunkError);
        return;
    }
    if (sourceError) {
        state.fail(segments[std::min(segmentBeingRead, segments.size() - 1)]->source, *sourceError);
        return;
    }
    if (state.isStopping() || !hasWork) {
        return;
    }
    for (const auto& segment : segments) {
        state.pass(segment->source);
    }
    for (const auto& op : operators) {
        if (op->isDropped) {
            continue;
        }
        state.pass(op->node);
        if (op->accumulation) {
            finishAccumulator(*op);
        }
    }
}

void StreamPass::finishAccumulator(Operator& op) {
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
