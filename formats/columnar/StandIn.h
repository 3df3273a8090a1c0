#pragma once

#include <velmorak/RowBounds.h>

#include <cstddef>

namespace velmorak::columnar {

/// A column for rows that will be dropped because they fail the bound of a column.
/// @param bound of this column; null for one of another column.
ColumnPtr standIn(const ColumnInfo& info, std::size_t rows, const ColumnBound* bound);

}  // namespace velmorak::columnar
