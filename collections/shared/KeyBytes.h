#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

/// Keys of rows as bytes that can be compared: their order is that of the first key, then that of the second ...
/// Numbers ascend, and NaN is last; texts ascend byte by byte, and the empty one is last. Keys are equal where their
/// bytes are; -0 is 0.
namespace velmorak {

/// @param column of single values.
void appendKeyBytes(std::string& bytes, const Column& column, std::size_t row);

/// The bytes of all keys of one row.
std::string keyBytes(const std::vector<ColumnPtr>& keys, std::size_t row);

/// Numbers whose order is that of the values: of reals for a column of reals, else of integers. That of NaN is the
/// largest.
/// @param column of numbers or truth values, single ones.
std::vector<std::uint64_t> orderedWords(const Column& column);
inline constexpr std::uint64_t wordOfNan = std::numeric_limits<std::uint64_t>::max();

/// Reverses appendKeyBytes for several rows.
/// @param types of the keys of each row.
/// @return one column for each key.
/// @throws std::invalid_argument if some bytes are not those of such keys.
std::vector<ColumnPtr> columnsOfKeys(const std::vector<ColumnType>& types, const std::vector<std::string>& rows);

}  // namespace velmorak
