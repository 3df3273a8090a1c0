#include "run/pass/PassPlanner.h"

#include "run/RunState.h"
#include "run/pass/WholeTables.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <set>
#include <utility>

namespace velmorak {

PassPlanner::PassPlanner(const RunState& state) : state(state) {}

std::vector<std::size_t> PassPlanner::nextTargets() {
    if (!hasTables) {
        hasTables = true;
        findTables();
    }
    // Prefers the table with the fewest targets that are not ready: they may become ready meanwhile, which saves a
    // pass.
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
    return best;
}

bool PassPlanner::isTarget(std::size_t position) const {
    const NodeRun& run = state.runs[position];
    if (!run.isNeeded || run.isFinal) {
        return false;
    }
    if (!state.plan.isStream(position)) {
        return state.plan.tableInput(position).has_value();
    }
    if (mustBeCollected(state, position)) {
        return true;
    }
    // A table without consumers is read once, to report its row count and errors.
    return !run.hasStreamed && state.plan.isInScope(position) && state.plan.consumers(position).empty();
}

/// @param known results of earlier calls in the same state.
bool PassPlanner::isReady(std::size_t target, std::unordered_map<std::size_t, bool>& known) const {
    std::vector<std::size_t> open{target};
    while (!open.empty()) {
        const std::size_t at = open.back();
        const std::vector<std::size_t>& upstream = state.plan.tableInputs(at);
        bool isThis = !state.hasFailed(at) && state.hasArguments(at);
        std::optional<std::size_t> unknown;
        for (std::size_t i = 0; i < upstream.size() && isThis && !unknown; ++i) {
            if (state.plan.storesTable(upstream[i])) {
                isThis = state.isDone(upstream[i]);
                continue;
            }
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

std::set<std::size_t> PassPlanner::storedTablesToRead() const {
    std::set<std::size_t> found;
    std::set<std::size_t> known;
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < state.runs.size(); ++i) {
        if (isTarget(i)) {
            open.push_back(i);
        }
    }
    while (!open.empty()) {
        const std::size_t at = open.back();
        open.pop_back();
        for (const std::size_t producer : state.plan.upstream(at)) {
            if (state.plan.storesTable(producer)) {
                found.insert(producer);
            } else if (state.plan.isStream(producer) && known.insert(producer).second) {
                open.push_back(producer);
            }
        }
    }
    return found;
}

/// Groups the targets by their segments, in the order of the first source.
void PassPlanner::findTables() {
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
    const auto positionOf = [this](const std::vector<std::size_t>& table) {
        return std::pair(state.plan.rank(state.plan.segments(table.front()).front()), table.front());
    };
    tables.sort([&](const auto& one, const auto& other) { return positionOf(one) < positionOf(other); });
}

/// The targets and the operators upstream of them, each after those that feed it.
std::vector<OperatorInstance> PassPlanner::operatorsFor(const std::vector<std::size_t>& targets) const {
    std::set<OperatorInstance> wanted;
    std::vector<OperatorInstance> open;
    open.reserve(targets.size());
    for (const std::size_t target : targets) {
        open.push_back({target, 0, mustBeCollected(state, target)});
    }
    while (!open.empty()) {
        const OperatorInstance instance = open.back();
        open.pop_back();
        if (instance.isCollecting) {
            wanted.insert(instance);
            open.push_back({instance.node, instance.firstSegment});
            continue;
        }
        if (state.plan.category(instance.node) == KindCategory::Source || !wanted.insert(instance).second) {
            continue;
        }
        std::size_t segment = instance.firstSegment;
        for (const std::size_t producer : state.plan.tableInputs(instance.node)) {
            if (!state.plan.storesTable(producer)) {
                open.push_back({producer, segment});
            }
            segment += state.plan.segmentsOfOutput(producer);
        }
    }
    std::vector<OperatorInstance> operators(wanted.begin(), wanted.end());
    std::stable_sort(operators.begin(), operators.end(),
                     [this](const OperatorInstance& one, const OperatorInstance& other) {
                         return state.plan.rank(one.node) < state.plan.rank(other.node);
                     });
    return operators;
}

}  // namespace velmorak
