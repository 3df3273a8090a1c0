#pragma once

#include <velmorak/Table.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace velmorak {

/// Position that marks a missing row, which gives NaN, 0, false, or an empty text or list.
inline constexpr std::uint32_t noRow = std::numeric_limits<std::uint32_t>::max();

/// @param rows positions in the column, in any order and as often as wanted, or noRow.
ColumnPtr gatherRows(const Column& column, const std::vector<std::uint32_t>& rows);

/// Appends the rows of a column of the same type.
void appendRows(Column& target, const Column& more);

}  // namespace velmorak
