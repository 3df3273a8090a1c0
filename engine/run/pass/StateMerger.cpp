#include "run/pass/StateMerger.h"

#include "run/pass/ChunkCheck.h"

#include <utility>

namespace velmorak {

StateMerger::StateMerger(const Accumulation& accumulation, Accumulator::MergeOrder order)
    : accumulation(accumulation), order(order) {}

void StateMerger::take(std::unique_ptr<AccumulatorState> state) {
    if (order == Accumulator::MergeOrder::FirstToLast) {
        if (parts.empty()) {
            parts.push_back({0, mustBe(accumulation.newState(), "state")});
        }
        parts.front().state->merge(*state);
        return;
    }
    Entry part{0, std::move(state)};
    while (!parts.empty() && parts.back().level == part.level) {
        Entry first = std::move(parts.back());
        parts.pop_back();
        first.state->merge(*part.state);
        part = {first.level + 1, std::move(first.state)};
    }
    parts.push_back(std::move(part));
}

std::unique_ptr<AccumulatorState> StateMerger::whole() {
    if (parts.empty()) {
        return mustBe(accumulation.newState(), "state");
    }
    while (parts.size() > 1) {
        const Entry last = std::move(parts.back());
        parts.pop_back();
        parts.back().state->merge(*last.state);
    }
    std::unique_ptr<AccumulatorState> state = std::move(parts.front().state);
    parts.clear();
    return state;
}

}  // namespace velmorak
