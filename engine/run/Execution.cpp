#include "Execution.h"

#include "StreamPass.h"

#include <algorithm>
#include <set>
#include <utility>

namespace velmorak {

Execution::Execution(RunState& state, const Memory& memory, std::size_t threads)
    : state(state), memory(memory), threads(threads), keeper(state, memory.store, memory.digests) {}

RunReport Execution::run() {
    findNeeded();
    settleObjections();
    memory.history.explain(state, keeper);
    sayReasons();
    do {
        sweep();
        keeper.keepFinished();
    } while (!state.isStopping() && passNext());
    settleRest();
    keeper.keepFinished();
    memory.history.remember(state, keeper);
    RunReport report;
    for (NodeRun& run : state.runs) {
        report.wasStopped = report.wasStopped || run.report.outcome == Outcome::Unfinished;
        report.nodes.push_back(std::move(run.report));
    }
    return report;
}

void Execution::findNeeded() {
    // What is downstream decides first, because a plug-in upstream is only needed by one that is executed. Where
    // plug-ins feed themselves there is no such order, so it is gone through until nothing more is needed.
    bool isMore = true;
    while (isMore) {
        isMore = false;
        for (auto position = state.plan.order().rbegin(); position != state.plan.order().rend(); ++position) {
            if (!state.runs[*position].isNeeded && (state.plan.isAsked(*position) || isWanted(*position))) {
                state.runs[*position].isNeeded = true;
                isMore = true;
                reuse(*position);
            }
        }
    }
}

/// A plug-in that takes something from this one is executed.
bool Execution::isWanted(std::size_t position) const {
    const std::vector<std::size_t>& consumers = state.plan.consumers(position);
    return std::any_of(consumers.begin(), consumers.end(), [this](std::size_t consumer) {
        return state.runs[consumer].isNeeded && !state.runs[consumer].isSettled;
    });
}

bool Execution::reuse(std::size_t position) {
    const bool isStream = state.plan.isStream(position);
    if (isStream && isWanted(position)) {
        return false;  // Its rows are not kept.
    }
    if (isStream && !state.plan.consumers(position).empty()) {
        state.finish(position, Outcome::Reused, state.runs[position].report.outputs);
        return true;  // All that was made from its rows is still right.
    }
    return keeper.reuse(position);
}

void Execution::sayReasons() {
    for (std::size_t i = 0; memory.explains && i < state.runs.size(); ++i) {
        const NodeRun& run = state.runs[i];
        if (!run.report.reason.empty() && run.report.outcome != Outcome::Failed) {
            const bool isReused = run.report.outcome == Outcome::Reused;
            state.messages.line(titleOf(state.node(i)) + (isReused ? ": reused, " : ": executed, ") +
                                run.report.reason);
        }
    }
}

void Execution::settleObjections() {
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        if (!state.runs[i].isNeeded || state.runs[i].isSettled) {
            continue;
        }
        if (const std::string sentence = state.plan.objection(i); !sentence.empty()) {
            state.fail(i, {sentence});
        }
    }
}

void Execution::sweep() {
    for (const std::size_t position : state.plan.order()) {
        if (state.runs[position].isNeeded && !state.runs[position].isSettled) {
            visit(position);
        }
    }
}

void Execution::visit(std::size_t position) {
    for (const std::size_t feeder : state.plan.feeders(position)) {
        if (state.hasFailed(feeder)) {
            state.skip(position, state.runs[feeder].cause);
            return;
        }
    }
    const bool isValueOnly = !state.plan.isStream(position) && !state.plan.tableFeeder(position);
    if (isValueOnly && state.hasArguments(position) && !state.isStopping()) {
        evaluate(position);
    }
}

void Execution::evaluate(std::size_t position) {
    const Stopwatch watch(state, position);
    const Kind* kind = state.node(position).kind;
    NodeResults results(state.node(position).outputs);
    const std::optional<Problem> problem = problemIn([&] {
        if (const auto* function = dynamic_cast<const Function*>(kind)) {
            evaluateFunction(*function, position, results);
        } else if (const auto* accumulator = dynamic_cast<const Accumulator*>(kind)) {
            evaluateUnfilled(*accumulator, position, results);
        }
    });
    if (problem) {
        state.fail(position, *problem);
    } else {
        state.finish(position, Outcome::Done, results.values());
    }
}

void Execution::evaluateFunction(const Function& function, std::size_t position, NodeResults& results) {
    function.evaluate(state.arguments(position), results, *state.runs[position].context);
}

void Execution::evaluateUnfilled(const Accumulator& accumulator, std::size_t position, NodeResults& results) {
    const NodeArguments arguments = state.arguments(position);
    const auto accumulation = accumulator.prepare(arguments, nullptr, *state.runs[position].context);
    const auto empty = accumulation->newState();
    accumulation->finish(*empty, results);
}

bool Execution::isTarget(std::size_t position) const {
    const NodeRun& run = state.runs[position];
    if (!run.isNeeded || run.isSettled) {
        return false;
    }
    if (!state.plan.isStream(position)) {
        return state.plan.tableFeeder(position).has_value();
    }
    // The rows of a table that nothing takes are passed for the sake of what is said about them.
    return !run.hasPassed && state.plan.isAsked(position) && state.plan.consumers(position).empty();
}

std::optional<std::size_t> Execution::sourceOf(std::size_t position) const {
    std::optional<std::size_t> at = position;
    while (at && state.plan.shape(*at) != Shape::Source) {
        at = state.plan.tableFeeder(*at);
    }
    return at;
}

bool Execution::isReady(std::size_t target) const {
    for (std::optional<std::size_t> at = target; at; at = state.plan.tableFeeder(*at)) {
        if (state.hasFailed(*at) || !state.hasArguments(*at)) {
            return false;
        }
    }
    return true;
}

bool Execution::passNext() {
    // A source whose plug-ins all can take part goes first: those of the others may become ready meanwhile, which
    // saves a pass.
    std::optional<std::size_t> best;
    std::size_t fewestWaiting = 0;
    for (const std::size_t source : state.plan.order()) {
        std::size_t ready = 0;
        std::size_t waiting = 0;
        for (std::size_t i = 0; i < state.runs.size(); ++i) {
            if (isTarget(i) && sourceOf(i) == source) {
                ++(isReady(i) ? ready : waiting);
            }
        }
        if (ready > 0 && (!best || waiting < fewestWaiting)) {
            best = source;
            fewestWaiting = waiting;
        }
    }
    if (!best) {
        return false;
    }
    StreamPass(state, *best, stepsFor(*best)).execute(threads);
    return true;
}

std::vector<std::size_t> Execution::stepsFor(std::size_t source) const {
    std::set<std::size_t> wanted;
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        if (isTarget(i) && sourceOf(i) == source && isReady(i)) {
            for (std::size_t at = i; at != source; at = *state.plan.tableFeeder(at)) {
                wanted.insert(at);
            }
        }
    }
    std::vector<std::size_t> steps;
    std::copy_if(state.plan.order().begin(), state.plan.order().end(), std::back_inserter(steps),
                 [&](std::size_t node) { return wanted.count(node) > 0; });
    return steps;
}

void Execution::settleRest() {
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        NodeRun& run = state.runs[i];
        if (!run.isNeeded || run.isSettled) {
            continue;
        }
        run.isSettled = true;
        if (run.hasPassed && !state.isStopping()) {
            run.report.outcome = Outcome::Done;
        } else if (state.isStopping()) {
            state.stopFirst(i);
        } else {
            run.report.outcome = Outcome::Skipped;
            run.report.sentence = run.report.rowsOut > 0
                                      ? "not read to its end because nothing that it feeds could go on"
                                      : "not run because nothing that it feeds could run";
        }
    }
}

}  // namespace velmorak
