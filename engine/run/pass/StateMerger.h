#pragma once

#include <velmorak/Kind.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace velmorak {

/// Merges the states of an accumulator, which arrive one for each chunk in chunk order. Neighbours made of equally many
/// chunks are merged, as in a binary counter: which states meet depends only on the number of chunks, and at most log2
/// of it are alive.
class StateMerger {
public:
    /// @param accumulation outlives this.
    StateMerger(const Accumulation& accumulation, Accumulator::MergeOrder order);

    void take(std::unique_ptr<AccumulatorState> state);
    /// @return the state of the whole stream; a new one if none was taken. Leaves the merger empty.
    std::unique_ptr<AccumulatorState> whole();

private:
    struct Entry {
        std::size_t level = 0;  ///< Made of 2^level chunks.
        std::unique_ptr<AccumulatorState> state;
    };

    const Accumulation& accumulation;
    Accumulator::MergeOrder order;
    std::vector<Entry> parts;  ///< In chunk order, with decreasing levels.
};

}  // namespace velmorak
