#pragma once

#include "run/pass/MergeTree.h"

#include <velmorak/Kind.h>

#include <cstdint>
#include <memory>

namespace velmorak {

/// Merges the states of an accumulator, which arrive one for each chunk in chunk order: along a MergeTree, or from
/// first to last where the kind wants that; for an OrderedAccumulation from first to last within each file.
class StateMerger {
public:
    /// @param accumulation outlives this.
    StateMerger(const Accumulation& accumulation, Accumulator::MergeOrder order);

    void take(ChunkPlace place, std::unique_ptr<AccumulatorState> state);
    /// @return the state of the whole stream; a new one if none was taken. Leaves the merger empty.
    std::unique_ptr<AccumulatorState> whole();

private:
    enum class Order { Tree, FirstToLastInFile, FirstToLast };

    void append(AccumulatorState& state);
    void endFile();

    const Accumulation& accumulation;
    Order order = Order::Tree;
    MergeTree tree;
    std::uint64_t file = 0;                      ///< That gathered is the state of.
    std::unique_ptr<AccumulatorState> gathered;  ///< From first to last: of the file so far, or of all rows.
};

}  // namespace velmorak
