#include "run/parts/PlanPasses.h"

#include "run/pass/PassPlanner.h"
#include "run/pass/WholeTables.h"

#include <velmorak/Parts.h>
#include <velmorak/StoredTable.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <set>

namespace velmorak {

namespace {

/// A placeholder for the rows of a stream that a run would collect.
class RehearsedTable : public StoredTable {
public:
    const Schema& schema() const override { return none; }
    std::unique_ptr<TableReader> open() const override { return nullptr; }

private:
    Schema none;
};

/// Pretends that plug-ins are executed.
class Rehearsal {
public:
    explicit Rehearsal(RunState& state) : state(state), planner(state) {}

    RunOutline run();

private:
    void findNeeded();
    void evaluateReady();
    void finish(std::size_t position);
    void addPass(const std::vector<std::size_t>& targets);
    std::string whyLeftToMerge(std::size_t target) const;
    std::set<std::size_t> upstreamOf(std::size_t target) const;

    RunState& state;
    PassPlanner planner;
    RunOutline outline;
    std::map<std::size_t, std::size_t> passOf;  ///< By accumulator.
};

RunOutline Rehearsal::run() {
    findNeeded();
    for (const NodeRun& run : state.runs) {
        outline.isNeeded.push_back(run.isNeeded);
    }
    evaluateReady();
    for (auto targets = planner.nextTargets(); !targets.empty(); targets = planner.nextTargets()) {
        addPass(targets);
        for (const std::size_t target : targets) {
            finish(target);
        }
        evaluateReady();
    }
    return std::move(outline);
}

void Rehearsal::findNeeded() {
    for (bool isMore = true; isMore;) {
        isMore = false;
        for (const std::size_t position : state.plan.reverseOrder()) {
            const std::vector<std::size_t>& consumers = state.plan.consumers(position);
            const bool isWanted = std::any_of(consumers.begin(), consumers.end(),
                                              [this](std::size_t consumer) { return state.runs[consumer].isNeeded; });
            if (!state.runs[position].isNeeded && (state.plan.isInScope(position) || isWanted)) {
                state.runs[position].isNeeded = true;
                isMore = true;
            }
        }
    }
}

void Rehearsal::finish(std::size_t position) {
    if (state.plan.isStream(position)) {
        keepCollected(state, position, std::make_shared<RehearsedTable>());
        state.pass(position);
    } else {
        state.finish(position, NodeStatus::Done, std::vector<Value>(state.node(position).outputs.size()));
    }
}

void Rehearsal::evaluateReady() {
    for (const std::size_t position : state.plan.order()) {
        const NodeRun& run = state.runs[position];
        const bool takesRows = state.plan.isStream(position) || state.plan.tableInput(position).has_value();
        if (run.isNeeded && !run.isFinal && !takesRows && state.hasArguments(position)) {
            finish(position);
        }
    }
}

std::set<std::size_t> Rehearsal::upstreamOf(std::size_t target) const {
    std::set<std::size_t> found;
    std::vector<std::size_t> open = state.plan.upstream(target);
    while (!open.empty()) {
        const std::size_t at = open.back();
        open.pop_back();
        if (found.insert(at).second) {
            open.insert(open.end(), state.plan.upstream(at).begin(), state.plan.upstream(at).end());
        }
    }
    return found;
}

std::string Rehearsal::whyLeftToMerge(std::size_t target) const {
    if (state.plan.storesTable(target)) {
        return "it needs all rows before it gives one";
    }
    for (const std::size_t source : state.plan.segments(target)) {
        if (state.plan.storesTable(source)) {
            return velmorak::quoted(state.node(source).name) + " needs all rows before it gives one";
        }
    }
    for (const OperatorInstance& instance : planner.operatorsFor({target})) {
        if (dynamic_cast<const CountingKind*>(state.node(instance.node).kind)) {
            return velmorak::quoted(state.node(instance.node).name) + " counts the rows before each row";
        }
    }
    for (const std::size_t source : state.plan.segments(target)) {
        if (!state.plan.upstream(source).empty()) {
            return "what " + velmorak::quoted(state.node(source).name) + " reads depends on other plug-ins";
        }
    }
    for (const std::size_t upstream : upstreamOf(target)) {
        if (outline.leftToMerge.contains(upstream)) {
            return "it needs " + velmorak::quoted(state.node(upstream).name) + ", which is computed while merging, too";
        }
    }
    return "";
}

void Rehearsal::addPass(const std::vector<std::size_t>& targets) {
    PassOutline pass;
    std::set<std::size_t> needs;
    for (const std::size_t target : targets) {
        if (mustBeCollected(state, target)) {
            continue;  // Every part collects it.
        }
        if (std::string reason = whyLeftToMerge(target); !reason.empty()) {
            outline.leftToMerge.emplace(target, std::move(reason));
            continue;
        }
        pass.targets.push_back(target);
        for (const std::size_t upstream : upstreamOf(target)) {
            if (const auto found = passOf.find(upstream); found != passOf.end()) {
                needs.insert(found->second);
            }
        }
    }
    if (pass.targets.empty()) {
        return;
    }
    for (const std::size_t need : needs) {
        pass.needs.push_back(need);
        pass.round = std::max(pass.round, outline.passes[need].round + 1);
    }
    for (const std::size_t target : pass.targets) {
        passOf.emplace(target, outline.passes.size());
    }
    outline.passes.push_back(std::move(pass));
}

}  // namespace

RunOutline outlinePasses(RunState& state) {
    return Rehearsal(state).run();
}

}  // namespace velmorak
