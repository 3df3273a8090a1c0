#include "run/pass/StateMerger.h"

#include "run/pass/ChunkCheck.h"

#include <velmorak/OrderedAccumulation.h>

#include <utility>

namespace velmorak {

StateMerger::StateMerger(const Accumulation& accumulation, Accumulator::MergeOrder mergeOrder)
    : accumulation(accumulation) {
    if (mergeOrder == Accumulator::MergeOrder::FirstToLast) {
        order = Order::FirstToLast;
    } else if (dynamic_cast<const OrderedAccumulation*>(&accumulation)) {
        order = Order::FirstToLastInFile;
    }
}

void StateMerger::take(ChunkPlace place, std::unique_ptr<AccumulatorState> state) {
    if (order == Order::Tree) {
        tree.take(place, std::move(state));
        return;
    }
    if (order == Order::FirstToLastInFile && place.file != file) {
        endFile();
        file = place.file;
    }
    append(*state);
}

void StateMerger::append(AccumulatorState& state) {
    if (!gathered) {
        gathered = mustBe(accumulation.newState(), "state");
    }
    gathered->merge(state);
}

void StateMerger::endFile() {
    if (gathered) {
        tree.take({true, 0, {file, 0, std::move(gathered)}});
    }
}

std::unique_ptr<AccumulatorState> StateMerger::whole() {
    if (order == Order::FirstToLastInFile) {
        endFile();
    }
    std::unique_ptr<AccumulatorState> state = order == Order::FirstToLast ? std::move(gathered) : tree.whole();
    return state ? std::move(state) : mustBe(accumulation.newState(), "state");
}

}  // namespace velmorak
