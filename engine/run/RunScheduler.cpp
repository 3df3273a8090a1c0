#include "run/RunScheduler.h"

#include "run/pass/ChunkCheck.h"
#include "run/record/MakeRunRecord.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace velmorak {

RunScheduler::RunScheduler(RunState& state, RunMemory& memory, bool explains, Executor& executor,
                           PassRunner* passRunner)
    : state(state),
      memory(memory),
      explains(explains),
      poll([&state] { return state.isStopping(); }),
      executor(executor),
      cache(state, memory.store, memory.digests,
            [passRunner](const std::filesystem::path& file) {
                return passRunner == nullptr || passRunner->makesResults() || passRunner->readsFile(file);
            }),
      prefetchHasher(memory.digests),
      passPlanner(state),
      passRunner(passRunner) {
    state.environment.recorder = [this](const PipelineNode& node) {
        const auto position = static_cast<std::size_t>(&node - this->state.pipeline.nodes.data());
        return this->state.plan.isRunReporter(position) ? makeReporterRecord(this->state, this->cache, position)
                                                        : makeRunRecord(this->state, this->cache, position);
    };
    state.environment.asked = [this](const std::filesystem::path& file, const FileStamp& stamp) {
        if (!this->passRunner || this->passRunner->readsFile(file)) {
            prefetchHasher.begin(file, stamp);
        }
    };
    if (passRunner) {
        passRunner->begin(state, cache, memory.digests);
    }
}

void RunScheduler::run(RunReport& report) {
    findNeeded();
    failInvalidNodes();
    memory.history.explain(state, cache);
    printReasons();
    memory.writeDown(memory.history.ifInterrupted(state));
    setFormerAside();
    do {
        commitFinished();
        evaluateReady();
        commitFinished();
    } while (!state.isStopping() && passNext());
    finalizeRemaining();
    evaluateReporters();
    commitFinished();
    memory.history.remember(state, cache);
    memory.writeDown(memory.history);
    if (passRunner) {
        passRunner->end();
    }
    reportTo(report);
    finishFormer(report);
}

/// Files of earlier runs stay only where this run confirms them: by reusing the result, or, for a plug-in that it does
/// not need, because the stored result is still right.
void RunScheduler::setFormerAside() {
    if (!state.former) {
        return;
    }
    std::set<std::string> kept;
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        const bool isConfirmed = state.runs[i].isNeeded
                                     ? state.runs[i].report.status == NodeStatus::Reused
                                     : state.former->hasFilesOf(state.node(i).name) && cache.confirm(i);
        if (isConfirmed) {
            for (const FileContent& file : cache.writtenFiles(i)) {
                kept.insert(plainFileName(file.file.value_or("")));
            }
        }
    }
    for (const std::string& complaint : state.former->setAside(kept)) {
        state.messages.line(complaint);
    }
}

void RunScheduler::finishFormer(RunReport& report) {
    if (state.former) {
        report.missing = state.former->missing();
        report.former = state.former->finish(!report.wasStopped && !report.hasFailure());
    }
}

/// Caches and reports what became final.
void RunScheduler::commitFinished() {
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
        run.report.written = recordFiles(cache.writtenFiles(position));
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
        run.report.written = recordFiles(cache.writtenFiles(i));
        if (run.isNeeded) {
            needed.push_back(i);
            run.report.files = cache.filesInOrder(i);
            run.context->warnOfMoreSkipped();
        }
    }
    warnOfLostRows();
    report.files = recordFiles(cache.filesOf(needed));
    report.skipped = skippedFiles(state);
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        state.freeTable(i);
    }
    for (NodeRun& run : state.runs) {
        report.nodes.push_back(std::move(run.report));
    }
}

/// A condition that no row passes is more often a mistake than an answer.
void RunScheduler::warnOfLostRows() {
    for (std::size_t i = 0; i < state.runs.size() && (!passRunner || passRunner->makesResults()); ++i) {
        const NodeRun& run = state.runs[i];
        const bool isRowWise = state.plan.category(i) == KindCategory::RowWise;
        if (isRowWise && run.report.status == NodeStatus::Done && run.report.rowsIn > 0 && run.report.rowsOut == 0) {
            run.context->warn("keeps none of its " + std::to_string(run.report.rowsIn) + " rows");
        }
    }
}

void RunScheduler::findNeeded() {
    // Downstream nodes first, because an upstream node is needed only by one that is executed. Cycles have no such
    // order, so this repeats until nothing changes.
    bool isMore = true;
    while (isMore) {
        isMore = false;
        for (const std::size_t position : state.plan.reverseOrder()) {
            poll.step();
            if (!state.runs[position].isNeeded && !isLeftOut(position) && isAskedFor(position)) {
                state.runs[position].isNeeded = true;
                state.ledger.expect(position);
                isMore = true;
                reuse(position);
            }
        }
    }
}

/// Some consumer of the node is executed.
bool RunScheduler::isWanted(std::size_t position) const {
    const std::vector<std::size_t>& consumers = state.plan.consumers(position);
    return std::any_of(consumers.begin(), consumers.end(), [this](std::size_t consumer) {
        return state.runs[consumer].isNeeded && !state.runs[consumer].isFinal;
    });
}

bool RunScheduler::isLeftOut(std::size_t position) const {
    return passRunner != nullptr && !passRunner->needs(position);
}

bool RunScheduler::isAskedFor(std::size_t position) const {
    return state.plan.isInScope(position) || isWanted(position) ||
           (passRunner != nullptr && passRunner->asksFor(position));
}

bool RunScheduler::reuse(std::size_t position) {
    if (state.plan.isRunReporter(position)) {
        return false;
    }
    const bool isStream = state.plan.isStream(position) || state.plan.storesTable(position);
    if (isStream && isWanted(position)) {
        return false;  // Its rows are not kept.
    }
    if (!cache.reuse(position) && isStream && !state.plan.consumers(position).empty()) {
        state.finish(position, NodeStatus::Reused, state.runs[position].report.outputs);
        // Everything made from its rows is still valid.
    }
    return state.runs[position].isFinal;
}

void RunScheduler::printReasons() {
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
            state.fail(i, {"its kind did not stop in an earlier run and is refused until the program is restarted"});
        } else if (const std::string sentence = state.plan.validate(i); !sentence.empty()) {
            state.fail(i, {sentence});
        }
    }
}

/// Evaluates the nodes on the agenda, each after those that feed it.
void RunScheduler::evaluateReady() {
    if (!hasFilledAgenda) {
        hasFilledAgenda = true;
        for (const std::size_t position : state.plan.order()) {
            agenda.insert(state.plan.rank(position));
        }
    }
    while (!agenda.empty()) {
        const std::size_t position = state.plan.order()[*agenda.begin()];
        agenda.erase(agenda.begin());
        if (state.runs[position].isNeeded && !state.runs[position].isFinal) {
            evaluateIfReady(position);
            commitFinished();  // The next node may take long, and the program may be killed.
        }
    }
}

void RunScheduler::evaluateIfReady(std::size_t position) {
    if (state.plan.isRunReporter(position)) {
        return;
    }
    const std::vector<std::size_t>& upstream = state.plan.upstream(position);
    const auto isStream = [this](std::size_t producer) { return state.plan.isStream(producer); };
    // Wait for all values: which of two failures occurs first depends on which results are reused.
    if (!std::all_of(upstream.begin(), upstream.end(),
                     [&](std::size_t producer) { return isStream(producer) || state.runs[producer].isFinal; })) {
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

/// The first failed node upstream that gives a value, or else the first that gives rows.
std::optional<std::size_t> RunScheduler::failedUpstream(std::size_t position) const {
    const std::vector<std::size_t>& upstream = state.plan.upstream(position);
    for (const bool givesRows : {false, true}) {
        const auto failed = std::find_if(upstream.begin(), upstream.end(), [&](std::size_t producer) {
            return state.plan.isStream(producer) == givesRows && state.hasFailed(producer) &&
                   !state.mayGoWithout(position, producer);
        });
        if (failed != upstream.end()) {
            return *failed;
        }
    }
    return std::nullopt;
}

/// Run reporters are evaluated after everything else has ended, in whatever way.
void RunScheduler::evaluateReporters() {
    for (const std::size_t position : state.plan.order()) {
        if (!state.runs[position].isNeeded || state.runs[position].isFinal) {
            continue;
        }
        if (state.isStopping()) {
            state.stopFirst(position);
        } else {
            evaluate(position);
            commitFinished();
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
        state.runs[position].remains = results.remains();
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

void RunScheduler::freeStoredTables() {
    const std::set<std::size_t> isRead = passPlanner.storedTablesToRead();
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        if (state.plan.storesTable(i) && !isRead.contains(i)) {
            state.freeTable(i);
        }
    }
}

/// @return whether there was anything to pass.
bool RunScheduler::passNext() {
    const std::vector<std::size_t> targets = passPlanner.nextTargets();
    if (targets.empty()) {
        return false;
    }
    if (passRunner) {
        passRunner->pass(targets, passPlanner, executor);
    } else {
        FileStates fileStates(state, memory.diskStore(), memory.digests, explains);
        StreamPass pass(state, state.plan.segments(targets.front()), passPlanner.operatorsFor(targets));
        pass.keepWith(fileStates);
        pass.execute(executor);
    }
    freeStoredTables();
    return true;
}

void RunScheduler::finalizeRemaining() {
    // Downstream nodes first: whether rows are part of a reused result is known there.
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

/// Sets the status of a stream. One that no consumer read counts as reused if a reused result was made from its rows.
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
