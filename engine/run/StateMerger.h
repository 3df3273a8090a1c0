#pragma once

#include <velmorak/Kind.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace velmorak {

/// Merges the states of an accumulator, which come one for each chunk, in chunk order. Neighbours of equal size are
/// merged, so that the number of chunks alone decides which states meet, and few states are alive at a time.
class StateMerger {
public:
    /// @param accumulation outlives this.
    StateMerger(const Accumulation& accumulation, Accumulator::MergeOrder order);

    void take(std::unique_ptr<AccumulatorState> state);
    /// @return the state of the whole stream; an empty one when none was taken. Nothing is left here.
    std::unique_ptr<AccumulatorState> whole();

private:
    struct Entry {
        std::size_t level = 0;  ///< Made of 2^level chunks.
        std::unique_ptr<AccumulatorState> state;
    };

    const Accumulation& accumulation;
    Accumulator::MergeOrder order;
    std::vector<Entry> parts;  ///< From the first chunk on; levels fall.
};

}  // namespace velmorak
