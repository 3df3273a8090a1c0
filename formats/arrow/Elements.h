#pragma once

#include "arrow/BatchBuffers.h"
#include "arrow/Leaves.h"

namespace velmorak::arrow {

/// The elements of an array that some rows lead to.
struct Elements {
    struct Range {
        std::uint64_t first = 0;
        std::uint64_t last = 0;
    };

    std::vector<Range> ranges;
    std::uint64_t size = 0;
    std::vector<std::uint64_t> offsets;   ///< Of each row in all elements, one more than rows; of lists only.
    std::vector<std::uint8_t> isPresent;  ///< By element; empty if all are.
};

/// Number of a buffer of a level in a batch.
std::size_t bufferOf(const Level& level, const Batch& batch, std::size_t which);

/// Whether values of the array may be missing in the batch.
bool mayHaveNulls(const Level& level, const Batch& batch);

/// Descends from rows [first, last) of a batch to the leaf.
/// @throws Failure if the arrays are damaged.
Elements elementsOf(const Leaf& leaf, const BatchBuffers& buffers, std::uint64_t first, std::uint64_t last);

/// The lengths of lists within lists, or for each of their elements the position of its list in the row.
/// @param column of counts or rows of the leaf.
/// @throws Failure if the arrays are damaged.
Column listsOf(const columnar::NestedColumn& column, const Leaf& leaf, const BatchBuffers& buffers, std::uint64_t first,
               std::uint64_t last);

/// The values of those elements, as the leaf's own array has them; where one is missing, anything.
/// @param type of the column: leaf.type, or real.
/// @throws Failure if the arrays are damaged.
Column valuesOf(const Leaf& leaf, const BatchBuffers& buffers, const Elements& elements, ColumnType type);

/// Positions in a dictionary.
std::vector<std::int64_t> positionsOf(const Leaf& leaf, const BatchBuffers& buffers, const Elements& elements);

}  // namespace velmorak::arrow
