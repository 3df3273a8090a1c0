#pragma once

#include "run/ChunkCheck.h"
#include "run/StreamPass.h"

#include <limits>

namespace velmorak {

/// A source that the stream has its rows from.
struct StreamPass::Segment {
    std::size_t source = 0;
    std::unique_ptr<TableReader> reader;
    std::optional<ChunkCheck> check;   ///< As soon as the reader is there.
    std::atomic<bool> isOver = false;  ///< Nothing wants more of its rows.
    std::uint64_t rows = 0;
    std::chrono::nanoseconds time{0};
    std::chrono::nanoseconds timeCompleting{0};  ///< In chunks that are taken in.
};

/// A plug-in that the rows pass.
struct StreamPass::Operator {
    static constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

    /// What yields its table for some of the legs.
    struct Parent {
        std::size_t firstSegment = 0;
        std::size_t segments = 0;
        std::optional<std::size_t> op;                 ///< The source of the leg when nothing.
        std::unique_ptr<RowOperation> operation = {};  ///< Of the step, for what comes from there.
        std::optional<ChunkCheck> check = {};          ///< Of what the operation yields.
    };

    bool sees(std::size_t segment) const {
        return segment >= parents.front().firstSegment &&
               segment < parents.back().firstSegment + parents.back().segments;
    }
    const Parent& parentFor(std::size_t segment) const {
        std::size_t at = 0;
        while (segment >= parents[at].firstSegment + parents[at].segments) {
            ++at;
        }
        return parents[at];
    }
    std::size_t node = 0;
    std::vector<Parent> parents;  ///< In the order of the legs, without gaps.
    bool hasChild = false;
    bool countsRows = false;                      ///< Its operation says so.
    std::size_t stage = 0;                        ///< How often rows are counted before they come here.
    bool isDropped = false;                       ///< Seen in chunk order: the step, or one before it, failed.
    std::atomic<std::uint64_t> failedAt = never;  ///< Least chunk that is known to fail; later ones are not tried.
    std::unique_ptr<Accumulation> accumulation;
    std::unique_ptr<StateMerger> merger;
    std::atomic<std::uint64_t> rowsCounted = 0;
    std::optional<std::uint64_t> rowLimit;  ///< It needs no more rows than these; nothing when it needs all.
    std::atomic<bool> isOut = false;        ///< As isDropped, for any thread.
    std::uint64_t rowsIn = 0;
    std::uint64_t rowsOut = 0;
    std::chrono::nanoseconds time{0};
};

/// A chunk on its way, with what the steps made of it.
struct StreamPass::ChunkTask {
    struct OperatorOutput {
        std::optional<NodeError> error;
        std::optional<Chunk> table;
        std::unique_ptr<AccumulatorState> state;
        bool isOver = false;  ///< The step, or one before it, wants neither this chunk nor a later one of the leg.
        std::uint64_t rowsBefore = 0;
        std::uint64_t rowsIn = 0;
        std::uint64_t rowsOut = 0;
        std::chrono::nanoseconds time{0};
    };

    std::size_t segment = 0;
    Chunk chunk;
    bool isComplete = false;
    std::optional<NodeError> error;  ///< Of the source, that could not complete the chunk.
    std::chrono::nanoseconds timeCompleting{0};
    std::vector<OperatorOutput> made;  ///< Parallel to the steps.
};

}  // namespace velmorak
