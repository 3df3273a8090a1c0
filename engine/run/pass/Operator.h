#pragma once

#include "run/pass/ChunkCheck.h"
#include "run/pass/StateMerger.h"

#include <velmorak/Kind.h>
#include <velmorak/OrderedRows.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <tuple>
#include <vector>

namespace velmorak {

/// Where a plug-in works in a stream: it sees the rows of the segments from firstSegment on. One that feeds a
/// concatenation by two ways is there twice, with different segments.
struct OperatorInstance {
    std::size_t node = 0;
    std::size_t firstSegment = 0;
    bool isCollecting = false;  ///< Collects the rows of the plug-in for those that need them as a whole.

    bool operator==(const OperatorInstance&) const = default;
    bool operator<(const OperatorInstance& other) const {
        return std::tie(node, firstSegment, isCollecting) <
               std::tie(other.node, other.firstSegment, other.isCollecting);
    }
};

/// A row-wise plug-in, concatenation or accumulator at work in one pass.
///
/// Three groups of members have different writers. The first is written while the operator is prepared and then only
/// read. Atomic members carry what one thread finds out to the others, which only saves them work. The rest belongs to
/// ChunkCommit, which sees one chunk after the other.
struct Operator {
    static constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

    /// Yields the operator's input table for some of the segments.
    struct Parent {
        std::size_t firstSegment = 0;
        std::size_t segments = 0;
        std::optional<std::size_t> op;                 ///< Nothing: the source of the segment.
        std::unique_ptr<RowOperation> operation = {};  ///< Applied to the rows from this parent.
        std::optional<ChunkCheck> check = {};          ///< Of the chunks that the operation yields.
    };

    bool sees(std::size_t segment) const;
    const Parent& parentFor(std::size_t segment) const;

    std::size_t node = 0;
    bool isCollecting = false;    ///< As OperatorInstance::isCollecting.
    std::vector<Parent> parents;  ///< In the order of the segments, without gaps.
    bool hasChild = false;
    bool countsRows = false;                ///< As RowOperation::countsRows.
    std::optional<std::uint64_t> rowLimit;  ///< As RowOperation::rowLimit.
    OrderedRows* ordered = nullptr;         ///< The operation, if its rows depend on those before them.
    std::size_t stage = 0;                  ///< Number of operators up to this one that count rows.
    std::unique_ptr<Accumulation> accumulation;
    std::unique_ptr<StateMerger> merger;

    std::atomic<std::uint64_t> failedAt = never;  ///< First chunk known to fail; later ones are not tried.
    std::atomic<std::uint64_t> rowsCounted = 0;
    std::atomic<bool> isOut = false;  ///< As isDropped, for any thread.

    bool isDropped = false;  ///< The operator, or one before it, has failed at this chunk or an earlier one.
    std::uint64_t rowsIn = 0;
    std::uint64_t rowsOut = 0;
    std::chrono::nanoseconds time{0};
};

inline bool Operator::sees(std::size_t segment) const {
    return segment >= parents.front().firstSegment && segment < parents.back().firstSegment + parents.back().segments;
}

inline const Operator::Parent& Operator::parentFor(std::size_t segment) const {
    std::size_t at = 0;
    while (segment >= parents[at].firstSegment + parents[at].segments) {
        ++at;
    }
    return parents[at];
}

}  // namespace velmorak
