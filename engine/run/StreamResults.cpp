#include "run/StreamTypes.h"
#include "run/Summary.h"

#include <algorithm>
#include <utility>

/// What is taken in of a stream's chunks, one after the other, and what remains when all have passed.
namespace velmorak {

using Instant = std::chrono::steady_clock;

/// How far the rows that some plug-in still wants have passed; nothing when the source cannot say.
std::optional<double> StreamPass::fractionOf(const Leg& leg) {
    std::optional<double> read;
    sourceProblem = state.call(leg.source, [&] { read = leg.reader->fraction(); });
    double least = 1.0;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (steps[i]->hasChild || !steps[i]->sees(legBeingRead) || steps[i]->isOut) {
            continue;
        }
        double furthest = read.value_or(-1.0);
        for (std::optional<std::size_t> at = i; at; at = steps[*at]->parentFor(legBeingRead).step) {
            if (steps[*at]->rowsWanted > 0) {
                const auto rows = static_cast<double>(steps[*at]->rowsCounted.load(std::memory_order_relaxed));
                furthest = std::max(furthest, rows / static_cast<double>(steps[*at]->rowsWanted));
            }
        }
        if (furthest < 0.0) {
            return std::nullopt;
        }
        least = std::min(least, furthest);
    }
    return steps.empty() ? read : std::optional(least);
}

void StreamPass::showProgress() {
    const bool isLineDue = state.messages.isProgressDue();
    const bool isListening = state.listener && state.listener->isProgressDue();
    if (!isLineDue && !isListening) {
        return;
    }
    const Leg& leg = *legs[legBeingRead];
    ProgressNow now{state.node(leg.source).name, state.passes, leg.rows, fractionOf(leg), 0.0};
    if (now.fraction) {
        const double done = static_cast<double>(legBeingRead) + std::clamp(*now.fraction, 0.0, 1.0);
        fractionShown = std::max(fractionShown, done / static_cast<double>(legs.size()));
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

void StreamPass::takeIn(Work& work) {
    legs[work.leg]->timeCompleting += work.timeCompleting;
    if (work.problem && !chunkProblem) {
        chunkProblem = std::move(work.problem);
        legOfChunkProblem = work.leg;
        hasWork = false;
    }
    if (chunkProblem) {
        return;
    }
    for (std::size_t i = 0; i < steps.size() && !state.isStopping(); ++i) {
        if (steps[i]->sees(work.leg)) {
            takeInStep(i, work);
        }
    }
    closeLeg(work);
}

void StreamPass::takeInStep(std::size_t position, Work& work) {
    Step& step = *steps[position];
    if (step.isDropped) {
        return;
    }
    const Instant::time_point begin = Instant::now();
    Work::Made& made = work.made[position];
    std::optional<Problem> problem = std::move(made.problem);
    if (!problem && made.state) {
        problem = state.call(step.node, [&] { step.merger->take(std::move(made.state)); });
    }
    step.rowsIn += made.rowsIn;
    step.rowsOut += made.rowsOut;
    step.time += made.time + (Instant::now() - begin);
    if (problem) {
        state.fail(step.node, *problem);
        drop(position);
    }
}

void StreamPass::closeLeg(const Work& work) {
    bool isWanted = steps.empty();
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step& step = *steps[i];
        isWanted = isWanted || (!step.hasChild && step.sees(work.leg) && !step.isDropped && !work.made[i].isOver);
    }
    if (!isWanted) {
        legs[work.leg]->isOver = true;
    }
}

void StreamPass::drop(std::size_t position) {
    bool isWorking = false;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        Step& step = *steps[i];
        const bool hasLostParent =
            std::any_of(step.parents.begin(), step.parents.end(),
                        [&](const Step::Parent& parent) { return parent.step && steps[*parent.step]->isDropped; });
        if (i == position || hasLostParent) {
            step.isDropped = true;
            step.isOut = true;
            step.failedAt = 0;
            step.merger.reset();
        }
        isWorking = isWorking || !step.isDropped;
    }
    hasWork = isWorking;
}

void StreamPass::reportSteps() {
    for (const auto& leg : legs) {
        state.runs[leg->source].report.rowsOut = leg->rows;
        state.addSeconds(leg->source, leg->time + leg->timeCompleting);
    }
    for (const auto& step : steps) {
        NodeReport& report = state.runs[step->node].report;
        report.rowsIn = 0;
        report.rowsOut = 0;
    }
    for (const auto& step : steps) {
        NodeReport& report = state.runs[step->node].report;
        report.rowsIn += step->rowsIn;
        report.rowsOut += step->rowsOut;
        state.addSeconds(step->node, step->time);
    }
}

void StreamPass::finish() {
    reportSteps();
    if (chunkProblem) {
        state.fail(legs[legOfChunkProblem]->source, *chunkProblem);
        return;
    }
    if (sourceProblem) {
        state.fail(legs[std::min(legBeingRead, legs.size() - 1)]->source, *sourceProblem);
        return;
    }
    if (state.isStopping() || !hasWork) {
        return;
    }
    for (const auto& leg : legs) {
        state.pass(leg->source);
    }
    for (const auto& step : steps) {
        if (step->isDropped) {
            continue;
        }
        state.pass(step->node);
        if (step->accumulation) {
            finishAccumulator(*step);
        }
    }
}

void StreamPass::finishAccumulator(Step& step) {
    if (state.isStopping()) {
        return;
    }
    const Stopwatch watch(state, step.node);
    NodeResults results(state.node(step.node).outputs);
    const std::optional<Problem> problem = state.call(step.node, [&] {
        const std::unique_ptr<AccumulatorState> whole = step.merger->whole();
        step.accumulation->finish(*whole, results);
    });
    if (problem) {
        state.fail(step.node, *problem);
    } else {
        state.finish(step.node, Outcome::Done, results.values());
    }
}

}  // namespace velmorak
