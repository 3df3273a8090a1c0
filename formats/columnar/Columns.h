#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmorak::columnar {

/// @return a column without rows.
Column emptyColumn(ColumnType type, bool isList);

/// Appends values [first, last) of the source, which has the same type, without touching offsets.
void appendValues(const Column& source, std::size_t first, std::size_t last, Column& target);

/// Appends rows [first, last) of a list column.
void appendLists(const Column& source, std::size_t first, std::size_t last, Column& target);

/// Distributes dense values: one for each isPresent that is not 0. Where a value is missing, reals become NaN and
/// texts empty.
/// @throws Failure where an integer or a boolean is missing.
Column spread(Column&& dense, const std::vector<std::uint8_t>& isPresent);

/// Where isPresent is 0, reals become NaN and texts empty.
/// @param isPresent by value; empty if all are.
/// @throws Failure where an integer or a boolean is missing.
void clearMissing(const std::vector<std::uint8_t>& isPresent, Column& column);

/// Checks the number of values in the lists of some rows before memory is taken: a few bytes may describe any number of
/// equal or missing values.
/// @param bytes that they take in the file, or more.
/// @throws Failure if so many values cannot be kept in memory, or would take more than their bytes justify.
void checkListValues(std::uint64_t count, std::uint64_t bytes);

/// The first names in double quotes, and the number of further ones.
std::string listOf(const std::vector<std::string>& names);

}  // namespace velmorak::columnar
