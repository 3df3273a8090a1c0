#include "Execution.h"

#include "Recorder.h"

#include <algorithm>
#include <set>
#include <utility>

namespace velmorak {

Execution::Execution(RunState& state, RunMemory& memory, bool explains, Workers& workers)
    : state(state),
      memory(memory),
      explains(explains),
      workers(workers),
      keeper(state, memory.store, memory.digests),
      ahead(memory.digests) {
    state.around.recorder = [this](const PipelineNode& node) {
        const auto position = static_cast<std::size_t>(&node - this->state.pipeline.nodes.data());
        return this->state.plan.tellsOfRun(position) ? recordOfRun(this->state, this->keeper, position)
                                                     : recordOf(this->state, this->keeper, position);
    };
    state.around.asked = [this](const std::filesystem::path& file, const FileStamp& stamp) {
        ahead.begin(file, stamp);
    };
}

void Execution::run(RunReport& report) {
    findNeeded();
    settleObjections();
    memory.history.explain(state, keeper);
    sayReasons();
    memory.writeDown(memory.history.ifInterrupted(state));
    do {
        tellSettled();
        sweep();
        keeper.keepFinished();
        tellSettled();
    } while (!state.isStopping() && passNext());
    settleRest();
    evaluateTellers();
    keeper.keepFinished();
    tellSettled();
    memory.history.remember(state, keeper);
    memory.writeDown(memory.history);
    reportTo(report);
}

void Execution::tellSettled() {
    for (std::size_t i = 0; state.listener && i < state.runs.size(); ++i) {
        NodeRun& run = state.runs[i];
        if (run.isSettled && !run.isTold) {
            run.isTold = true;
            state.listener->settled(state.node(i), run.report);
        }
    }
}

void Execution::reportTo(RunReport& report) {
    std::vector<std::size_t> needed;
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        NodeRun& run = state.runs[i];
        report.wasStopped = report.wasStopped || run.report.outcome == Outcome::Unfinished;
        if (run.isNeeded) {
            needed.push_back(i);
            run.report.written = recorded(keeper.writtenFiles(i));
        }
    }
    report.files = recorded(keeper.filesOf(needed));
    for (NodeRun& run : state.runs) {
        report.nodes.push_back(std::move(run.report));
    }
}

void Execution::findNeeded() {
    // What is downstream decides first, because a plug-in upstream is only needed by one that is executed. Where
    // plug-ins feed themselves there is no such order, so it is gone through until nothing more is needed.
    bool isMore = true;
    while (isMore) {
        isMore = false;
        for (const std::size_t position : state.plan.orderUpstream()) {
            if (!state.runs[position].isNeeded && (state.plan.isAsked(position) || isWanted(position))) {
                state.runs[position].isNeeded = true;
                isMore = true;
                reuse(position);
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
    if (state.plan.tellsOfRun(position)) {
        return false;
    }
    const bool isStream = state.plan.isStream(position);
    if (isStream && isWanted(position)) {
        return false;  // Its rows are not kept.
    }
    if (!keeper.reuse(position) && isStream && !state.plan.consumers(position).empty()) {
        state.finish(position, Outcome::Reused, state.runs[position].report.outputs);
        // All that was made from its rows is still right.
    }
    return state.runs[position].isSettled;
}

void Execution::sayReasons() {
    for (std::size_t i = 0; explains && i < state.runs.size(); ++i) {
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
    if (state.plan.tellsOfRun(position)) {
        return;
    }
    const std::vector<std::size_t>& feeders = state.plan.feeders(position);
    const auto isStream = [this](std::size_t feeder) { return state.plan.isStream(feeder); };
    // Until all values are there, because which of two failures is known first depends on what is reused.
    if (!std::all_of(feeders.begin(), feeders.end(),
                     [&](std::size_t feeder) { return isStream(feeder) || state.runs[feeder].isSettled; })) {
        return;
    }
    if (const std::optional<std::size_t> failed = failedFeeder(position)) {
        state.skip(position, state.runs[*failed].cause);
        return;
    }
    const bool isValueOnly = !state.plan.isStream(position) && !state.plan.tableFeeder(position);
    if (isValueOnly && state.hasArguments(position) && !state.isStopping()) {
        evaluate(position);
        tellSettled();
    }
}

/// The first that gives a value, or else the first that gives rows.
std::optional<std::size_t> Execution::failedFeeder(std::size_t position) const {
    const std::vector<std::size_t>& feeders = state.plan.feeders(position);
    for (const bool givesRows : {false, true}) {
        const auto failed = std::find_if(feeders.begin(), feeders.end(), [&](std::size_t feeder) {
            return state.plan.isStream(feeder) == givesRows && state.hasFailed(feeder);
        });
        if (failed != feeders.end()) {
            return *failed;
        }
    }
    return std::nullopt;
}

/// Those that tell of the run come when all else has ended, in whatever way.
void Execution::evaluateTellers() {
    for (const std::size_t position : state.plan.order()) {
        if (!state.runs[position].isNeeded || state.runs[position].isSettled) {
            continue;
        }
        if (state.isStopping()) {
            state.stopFirst(position);
        } else {
            evaluate(position);
        }
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
    keeper.keepFinished();  // What comes next may take long, and the program may be killed.
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

bool Execution::isReady(std::size_t target) const {
    std::vector<std::size_t> open{target};
    while (!open.empty()) {
        const std::size_t at = open.back();
        open.pop_back();
        if (state.hasFailed(at) || !state.hasArguments(at)) {
            return false;
        }
        const std::vector<std::size_t>& feeders = state.plan.tableFeeders(at);
        open.insert(open.end(), feeders.begin(), feeders.end());
    }
    return true;
}

/// The sources, or rows of sources, that some target still waits for; in the order of the first of them.
std::vector<std::vector<std::size_t>> Execution::waitingTables() const {
    std::vector<std::vector<std::size_t>> tables;
    for (const std::size_t source : state.plan.order()) {
        for (std::size_t i = 0; i < state.runs.size(); ++i) {
            const std::vector<std::size_t>& legs = state.plan.legs(i);
            const bool isNew = std::find(tables.begin(), tables.end(), legs) == tables.end();
            if (isTarget(i) && !legs.empty() && legs.front() == source && isNew) {
                tables.push_back(legs);
            }
        }
    }
    return tables;
}

bool Execution::passNext() {
    // A table whose plug-ins all can take part goes first: those of the others may become ready meanwhile, which
    // saves a pass.
    std::optional<std::vector<std::size_t>> best;
    std::size_t fewestWaiting = 0;
    for (const std::vector<std::size_t>& legs : waitingTables()) {
        std::size_t ready = 0;
        std::size_t waiting = 0;
        for (std::size_t i = 0; i < state.runs.size(); ++i) {
            if (isTarget(i) && state.plan.legs(i) == legs) {
                ++(isReady(i) ? ready : waiting);
            }
        }
        if (ready > 0 && (!best || waiting < fewestWaiting)) {
            best = legs;
            fewestWaiting = waiting;
        }
    }
    if (!best) {
        return false;
    }
    StreamPass(state, *best, stepsFor(*best)).execute(workers);
    return true;
}

std::vector<StepPlace> Execution::stepsFor(const std::vector<std::size_t>& legs) const {
    std::set<StepPlace> wanted;
    std::vector<StepPlace> open;
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        if (isTarget(i) && state.plan.legs(i) == legs && isReady(i)) {
            open.push_back({i, 0});
        }
    }
    while (!open.empty()) {
        const StepPlace place = open.back();
        open.pop_back();
        if (state.plan.shape(place.node) == Shape::Source || !wanted.insert(place).second) {
            continue;
        }
        std::size_t leg = place.firstLeg;
        for (const std::size_t feeder : state.plan.tableFeeders(place.node)) {
            open.push_back({feeder, leg});
            leg += state.plan.legs(feeder).size();
        }
    }
    std::vector<StepPlace> steps;
    for (const std::size_t node : state.plan.order()) {
        std::copy_if(wanted.begin(), wanted.end(), std::back_inserter(steps),
                     [&](const StepPlace& place) { return place.node == node; });
    }
    return steps;
}

void Execution::settleRest() {
    // What is downstream first, because it is known there whether the rows are in a result that is reused.
    std::vector<bool> isInReused(state.runs.size(), false);
    for (const std::size_t position : state.plan.orderUpstream()) {
        const std::vector<std::size_t>& consumers = state.plan.consumers(position);
        isInReused[position] = std::any_of(consumers.begin(), consumers.end(), [&](std::size_t consumer) {
            const Outcome outcome = state.runs[consumer].report.outcome;
            return outcome == Outcome::Reused || (outcome == Outcome::NotAsked && isInReused[consumer]);
        });
        const NodeRun& run = state.runs[position];
        if (run.isNeeded && !run.isSettled && !state.plan.tellsOfRun(position)) {
            settle(position, isInReused[position]);
        }
    }
}

/// Ends a stream: where all that could take its rows ended without, a result that was made from them in a former run
/// tells that they are right.
void Execution::settle(std::size_t position, bool isInReused) {
    NodeRun& run = state.runs[position];
    run.isSettled = true;
    if (state.isStopping()) {
        state.stopFirst(position);
    } else if (run.hasPassed) {
        run.report.outcome = Outcome::Done;
    } else if (isInReused) {
        run.report.outcome = Outcome::Reused;
    } else {
        run.report.outcome = Outcome::Skipped;
        run.report.sentence = run.report.rowsOut > 0 ? "not read to its end because nothing that it feeds could go on"
                                                     : "not run because nothing that it feeds could run";
    }
}

}  // namespace velmorak
