#pragma once

#include "run/messages/NodeError.h"

#include <velmorak/Kind.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <optional>
#include <vector>

namespace velmorak {

/// The result of one operator for one chunk.
struct OperatorOutput {
    std::optional<NodeError> error;
    std::optional<Chunk> table;               ///< Of an operator that passes rows on.
    std::unique_ptr<AccumulatorState> state;  ///< Of an accumulator.
    bool isOver = false;  ///< The operator, or one before it, needs neither this chunk nor a later one of the segment.
    std::uint64_t rowsBefore = 0;
    std::uint64_t rowsIn = 0;
    std::uint64_t rowsOut = 0;
    std::chrono::nanoseconds time{0};
};

/// One chunk on its way from a source through the operators. Used by one thread at a time.
struct ChunkTask {
    std::size_t segment = 0;
    std::uint64_t sequence = 0;  ///< Number of the chunk in the pass.
    Chunk chunk;
    std::size_t rowsRead = 0;        ///< Before the columns were made.
    bool isComplete = false;         ///< The source has made the columns, or failed to.
    std::optional<NodeError> error;  ///< Of a source that could not make the columns.
    std::chrono::nanoseconds timeReading{0};
    std::chrono::nanoseconds timeCompleting{0};
    std::vector<OperatorOutput> outputs;  ///< Parallel to the operators.

    /// Of reading the chunk and all that was computed of it, by whichever threads.
    std::chrono::nanoseconds cost() const {
        return std::accumulate(outputs.begin(), outputs.end(), timeReading + timeCompleting,
                               [](auto sum, const OperatorOutput& output) { return sum + output.time; });
    }
};

}  // namespace velmorak
