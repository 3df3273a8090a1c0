#pragma once

#include "shared/RowKeys.h"

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

/// Sorting of rows that are in memory.
namespace velmorak {

/// Rows with their keys, in the order of the keys.
struct SortedRows {
    std::vector<ColumnPtr> columns;
    RowKeys keys;
    std::size_t rows = 0;

    /// With what merging takes beside the rows.
    std::size_t bytesInMemory() const;
};

using SortedRowsPtr = std::shared_ptr<const SortedRows>;

/// @return the rows of the chunk in the order of their keys; rows with equal keys stay in their order.
SortedRows sortedRows(const Chunk& chunk, const KeyMaker& keys);

/// A row of one of several parts.
struct RowAt {
    std::uint64_t prefix = 0;  ///< Of its key.
    std::uint32_t part = 0;
    std::uint32_t row = 0;
};

/// @param isStopping polled; @throws Stopped.
/// @return all rows of the parts in the order of their keys; of rows with equal keys, those of earlier parts come
/// first.
///         Works on all threads of the run.
std::vector<RowAt> mergedRows(const std::vector<SortedRowsPtr>& parts, const std::function<bool()>& isStopping);

/// @return one column of these rows. @param column position in each part.
ColumnPtr gathered(const std::vector<SortedRowsPtr>& parts, std::size_t column, std::span<const RowAt> rows);

/// @return bytes of one row, with the characters of texts.
std::size_t bytesOfRow(const SortedRows& part, std::size_t row);

}  // namespace velmorak
