#include "run/RunScheduler.h"

#include "run/ChunkCheck.h"
#include "run/MakeRunRecord.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace velmorak {

RunScheduler::RunScheduler(RunState& state, RunMemory& memory, bool explains, Executor& executor)
    : state(state),
      memory(memory),
      explains(explains),
      poll([&state] { return state.isStopping(); }),
      executor(executor),
      cache(state, memory.store, memory.digests),
      prefetchHasher(memory.digests) {
    state.environment.recorder = [this](const PipelineNode& node) {
        const auto position = static_cast<std::size_t>(&node - this->state.pipeline.nodes.data());
        return this->state.plan.isRunReporter(position) ? makeReporterRecord(this->state, this->cache, position)
                                                        : makeRunRecord(this->state, this->cache, position);
    };
    state.environment.asked = [this](const std::filesystem::path& file, const FileStamp& stamp) {
        prefetchHasher.begin(file, stamp);
    };
}

void RunScheduler::run(RunReport& report) {
    findNeeded();
    failInvalidNodes();
    memory.history.explain(state, cache);
    sayReasons();
    memory.writeDown(memory.history.ifInterrupted(state));
    do {
        takeInFinished();
        evaluateReady();
        takeInFinished();
    } while (!state.isStopping() && passNext());
    finalizeRemaining();
    evaluateReporters();
    takeInFinished();
    memory.history.remember(state, cache);
    memory.writeDown(memory.history);
    reportTo(report);
}

/// Keeps and tells what has become complete.
void RunScheduler::takeInFinished() {
    const std::vector<std::size_t> finished = state.takeFinished();
    cache.keep(finished);
    for (const std::size_t position : finished) {
        for (const std::size_t consumer : state.plan.consumers(position)) {
            agenda.insert(state.plan.rank(consumer));
        }
    }
    for (const std::size_t position : finished) {
        NodeRun& run = state.runs[position];
        if (!run.isFinal || run.isReported) {
            continue;
        }
        run.isReported = true;
        state.ledger.finalize(position, run.report);
        if (state.listener) {
            state.listener->nodeFinished(state.node(position), run.report);
        }
    }
}

void RunScheduler::reportTo(RunReport& report) {
    std::vector<std::size_t> needed;
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        NodeRun& run = state.runs[i];
        report.wasStopped = report.wasStopped || run.report.status == NodeStatus::Unfinished;
        if (run.isNeeded) {
            needed.push_back(i);
            run.report.written = recordFiles(cache.writtenFiles(i));
        }
    }
    report.files = recordFiles(cache.filesOf(needed));
    for (NodeRun& run : state.runs) {
        report.nodes.push_back(std::move(run.report));
    }
}

void RunScheduler::findNeeded() {
    // What is downstream decides first, because a plug-in upstream is only needed by one that is executed. Where
    // plug-ins feed themselves there is no such order, so it is gone through until nothing more is needed.
    bool isMore = true;
    while (isMore) {
        isMore = false;
        for (const std::size_t position : state.plan.reverseOrder()) {
            poll.step();
            if (!state.runs[position].isNeeded && (state.plan.isInScope(position) || isWanted(position))) {
                state.runs[position].isNeeded = true;
                state.ledger.expect(position);
                isMore = true;
                reuse(position);
            }
        }
    }
}

/// A plug-in that takes something from this one is executed.
bool RunScheduler::isWanted(std::size_t position) const {
    const std::vector<std::size_t>& consumers = state.plan.consumers(position);
    return std::any_of(consumers.begin(), consumers.end(), [this](std::size_t consumer) {
        return state.runs[consumer].isNeeded && !state.runs[consumer].isFinal;
    });
}

bool RunScheduler::reuse(std::size_t position) {
    if (state.plan.isRunReporter(position)) {
        return false;
    }
    const bool isStream = state.plan.isStream(position);
    if (isStream && isWanted(position)) {
        return false;  // Its rows are not kept.
    }
    if (!cache.reuse(position) && isStream && !state.plan.consumers(position).empty()) {
        state.finish(position, NodeStatus::Reused, state.runs[position].report.outputs);
        // All that was made from its rows is still right.
    }
    return state.runs[position].isFinal;
}

void RunScheduler::sayReasons() {
    for (std::size_t i = 0; explains && i < state.runs.size(); ++i) {
        const NodeRun& run = state.runs[i];
        if (!run.report.reason.empty() && run.report.status != NodeStatus::Failed) {
            const bool isReused = run.report.status == NodeStatus::Reused;
            state.messages.line(titleOf(state.node(i)) + (isReused ? ": reused, " : ": executed, ") +
                                run.report.reason);
        }
    }
}

void RunScheduler::failInvalidNodes() {
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        poll.step();
        if (!state.runs[i].isNeeded || state.runs[i].isFinal) {
            continue;
        }
        if (memory.refused.contains(state.node(i).kind)) {
            state.fail(i, {"its kind did not stop in a run before, and is refused until the program is started anew"});
        } else if (const std::string sentence = state.plan.validate(i); !sentence.empty()) {
            state.fail(i, {sentence});
        }
    }
}

/// Goes to the plug-ins that something new has come to since the last time, each after those that feed it.
void RunScheduler::evaluateReady() {
    if (!hasSwept) {
        hasSwept = true;
        for (const std::size_t position : state.plan.order()) {
            agenda.insert(state.plan.rank(position));
        }
    }
    while (!agenda.empty()) {
        const std::size_t position = state.plan.order()[*agenda.begin()];
        agenda.erase(agenda.begin());
        if (state.runs[position].isNeeded && !state.runs[position].isFinal) {
            evaluateIfReady(position);
            takeInFinished();  // What comes next may take long, and the program may be killed.
        }
    }
}

void RunScheduler::evaluateIfReady(std::size_t position) {
    if (state.plan.isRunReporter(position)) {
        return;
    }
    const std::vector<std::size_t>& upstream = state.plan.upstream(position);
    const auto isStream = [this](std::size_t feeder) { return state.plan.isStream(feeder); };
    // Until all values are there, because which of two failures is known first depends on what is reused.
    if (!std::all_of(upstream.begin(), upstream.end(),
                     [&](std::size_t feeder) { return isStream(feeder) || state.runs[feeder].isFinal; })) {
        return;
    }
    if (const std::optional<std::size_t> failed = failedUpstream(position)) {
        state.skip(position, state.runs[*failed].cause);
        return;
    }
    const bool isValueOnly = !state.plan.isStream(position) && !state.plan.tableInput(position);
    if (isValueOnly && state.hasArguments(position) && !state.isStopping()) {
        evaluate(position);
    }
}

/// The first that gives a value, or else the first that gives rows.
std::optional<std::size_t> RunScheduler::failedUpstream(std::size_t position) const {
    const std::vector<std::size_t>& upstream = state.plan.upstream(position);
    for (const bool givesRows : {false, true}) {
        const auto failed = std::find_if(upstream.begin(), upstream.end(), [&](std::size_t feeder) {
            return state.plan.isStream(feeder) == givesRows && state.hasFailed(feeder);
        });
        if (failed != upstream.end()) {
            return *failed;
        }
    }
    return std::nullopt;
}

/// Those that tell of the run come when all else has ended, in whatever way.
void RunScheduler::evaluateReporters() {
    for (const std::size_t position : state.plan.order()) {
        if (!state.runs[position].isNeeded || state.runs[position].isFinal) {
            continue;
        }
        if (state.isStopping()) {
            state.stopFirst(position);
        } else {
            evaluate(position);
            takeInFinished();
        }
    }
}

void RunScheduler::evaluate(std::size_t position) {
    const Stopwatch watch(state, position);
    const Kind* kind = state.node(position).kind;
    NodeResults results(state.node(position).outputs);
    const std::optional<NodeError> error = state.call(position, [&] {
        if (const auto* function = dynamic_cast<const Function*>(kind)) {
            evaluateFunction(*function, position, results);
        } else if (const auto* accumulator = dynamic_cast<const Accumulator*>(kind)) {
            evaluateUnfilled(*accumulator, position, results);
        }
    });
    if (error) {
        state.fail(position, *error);
    } else {
        state.finish(position, NodeStatus::Done, results.values());
    }
}

void RunScheduler::evaluateFunction(const Function& function, std::size_t position, NodeResults& results) {
    function.evaluate(state.arguments(position), results, *state.runs[position].context);
}

void RunScheduler::evaluateUnfilled(const Accumulator& accumulator, std::size_t position, NodeResults& results) {
    const NodeArguments arguments = state.arguments(position);
    const auto accumulation =
        mustBe(accumulator.prepare(arguments, nullptr, *state.runs[position].context), "accumulation");
    const auto empty = mustBe(accumulation->newState(), "state");
    accumulation->finish(*empty, results);
}

bool RunScheduler::isTarget(std::size_t position) const {
    const NodeRun& run = state.runs[position];
    if (!run.isNeeded || run.isFinal) {
        return false;
    }
    if (!state.plan.isStream(position)) {
        return state.plan.tableInput(position).has_value();
    }
    // The rows of a table that nothing takes are passed for the sake of what is said about them.
    return !run.hasStreamed && state.plan.isInScope(position) && state.plan.consumers(position).empty();
}

/// @param known of plug-ins that were asked about before, at the same moment.
bool RunScheduler::isReady(std::size_t target, std::unordered_map<std::size_t, bool>& known) const {
    std::vector<std::size_t> open{target};
    while (!open.empty()) {
        const std::size_t at = open.back();
        const std::vector<std::size_t>& upstream = state.plan.tableInputs(at);
        bool isThis = !state.hasFailed(at) && state.hasArguments(at);
        std::optional<std::size_t> unknown;
        for (std::size_t i = 0; i < upstream.size() && isThis && !unknown; ++i) {
            const auto found = known.find(upstream[i]);
            if (found == known.end()) {
                unknown = upstream[i];
            } else {
                isThis = found->second;
            }
        }
        if (unknown) {
            open.push_back(*unknown);
        } else {
            known.emplace(at, isThis);
            open.pop_back();
        }
    }
    return known.at(target);
}

/// The sources, or rows of sources, that some target waits for; in the order of the first of them.
void RunScheduler::findTables() {
    std::vector<std::vector<std::size_t>> targets(state.plan.segmentListCount());
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        if (state.plan.segmentListOf(i) != 0 && isTarget(i)) {
            targets[state.plan.segmentListOf(i)].push_back(i);
        }
    }
    for (std::vector<std::size_t>& each : targets) {
        if (!each.empty()) {
            tables.push_back(std::move(each));
        }
    }
    const auto placeOf = [this](const std::vector<std::size_t>& table) {
        return std::pair(state.plan.rank(state.plan.segments(table.front()).front()), table.front());
    };
    tables.sort([&](const auto& one, const auto& other) { return placeOf(one) < placeOf(other); });
}

bool RunScheduler::passNext() {
    if (!hasTables) {
        hasTables = true;
        findTables();
    }
    // A table whose plug-ins all can take part goes first: those of the others may become ready meanwhile, which
    // saves a pass.
    std::vector<std::size_t> best;
    std::size_t fewestWaiting = SIZE_MAX;
    std::unordered_map<std::size_t, bool> known;
    for (auto table = tables.begin(); table != tables.end() && fewestWaiting > 0;) {
        std::erase_if(*table, [this](std::size_t target) { return !isTarget(target); });
        if (table->empty()) {
            table = tables.erase(table);
            continue;
        }
        std::vector<std::size_t> ready;
        std::copy_if(table->begin(), table->end(), std::back_inserter(ready),
                     [&](std::size_t target) { return isReady(target, known); });
        if (const std::size_t waiting = table->size() - ready.size(); !ready.empty() && waiting < fewestWaiting) {
            best = std::move(ready);
            fewestWaiting = waiting;
        }
        ++table;
    }
    if (best.empty()) {
        return false;
    }
    StreamPass(state, state.plan.segments(best.front()), operatorsFor(best)).execute(executor);
    return true;
}

/// The targets, and what passes rows on to them, each after what feeds it.
std::vector<OperatorInstance> RunScheduler::operatorsFor(const std::vector<std::size_t>& targets) const {
    std::set<OperatorInstance> wanted;
    std::vector<OperatorInstance> open;
    open.reserve(targets.size());
    for (const std::size_t target : targets) {
        open.push_back({target, 0});
    }
    while (!open.empty()) {
        const OperatorInstance place = open.back();
        open.pop_back();
        if (state.plan.category(place.node) == KindCategory::Source || !wanted.insert(place).second) {
            continue;
        }
        std::size_t segment = place.firstSegment;
        for (const std::size_t feeder : state.plan.tableInputs(place.node)) {
            open.push_back({feeder, segment});
            segment += state.plan.segments(feeder).size();
        }
    }
    std::vector<OperatorInstance> operators(wanted.begin(), wanted.end());
    std::stable_sort(operators.begin(), operators.end(),
                     [this](const OperatorInstance& one, const OperatorInstance& other) {
                         return state.plan.rank(one.node) < state.plan.rank(other.node);
                     });
    return operators;
}

void RunScheduler::finalizeRemaining() {
    // What is downstream first, because it is known there whether the rows are in a result that is reused.
    std::vector<bool> isInReused(state.runs.size(), false);
    for (const std::size_t position : state.plan.reverseOrder()) {
        const std::vector<std::size_t>& consumers = state.plan.consumers(position);
        isInReused[position] = std::any_of(consumers.begin(), consumers.end(), [&](std::size_t consumer) {
            const NodeStatus status = state.runs[consumer].report.status;
            return status == NodeStatus::Reused || (status == NodeStatus::NotRequested && isInReused[consumer]);
        });
        const NodeRun& run = state.runs[position];
        if (run.isNeeded && !run.isFinal && !state.plan.isRunReporter(position)) {
            finalize(position, isInReused[position]);
        }
    }
}

/// Ends a stream: where all that could take its rows ended without, a result that was made from them in a former run
/// tells that they are right.
void RunScheduler::finalize(std::size_t position, bool isInReused) {
    NodeRun& run = state.runs[position];
    state.finalize(position);
    if (state.isStopping()) {
        state.stopFirst(position);
    } else if (run.hasStreamed) {
        run.report.status = NodeStatus::Done;
    } else if (isInReused) {
        run.report.status = NodeStatus::Reused;
    } else {
        run.report.status = NodeStatus::Skipped;
        run.report.sentence = run.report.rowsOut > 0 ? "not read to its end because nothing that it feeds could go on"
                                                     : "not run because nothing that it feeds could run";
    }
}

}  // namespace velmorak
