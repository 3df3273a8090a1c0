#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmorak {

/// The rows of a chunk, by the values of their keys. Numbers are compared as numbers: -0 is 0, and one NaN equals
/// another.
struct RowGroups {
    std::vector<std::uint32_t> ofRow;     ///< Group of each row, counted from 0 in the order of their first rows.
    std::vector<std::uint32_t> firstRow;  ///< By group.

    std::size_t size() const { return firstRow.size(); }
};

/// @param keys columns of single values, none null; without any, all rows are one group.
RowGroups groupRows(const std::vector<ColumnPtr>& keys, std::size_t rows);

/// The rows of each group in their order, one group after the other.
struct RowsByGroup {
    std::vector<std::uint32_t> rows;
    std::vector<std::uint32_t> offsets;  ///< Group i has rows [offsets[i], offsets[i + 1]).

    std::size_t groups() const { return offsets.size() - 1; }
};

RowsByGroup rowsByGroup(const RowGroups& groups);

/// @return the bits of a number, equal for numbers that are equal, and for NaN.
std::uint64_t wordOf(double number);

/// Spreads similar words over all 64 bits.
constexpr std::uint64_t mixed(std::uint64_t word) {
    word = (word ^ (word >> 32U)) * 0xd6e8feb86659fd93U;
    word = (word ^ (word >> 32U)) * 0xd6e8feb86659fd93U;
    return word ^ (word >> 32U);
}

}  // namespace velmorak
