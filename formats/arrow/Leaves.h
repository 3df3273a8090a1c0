#pragma once

#include "arrow/Schema.h"
#include "columnar/Nesting.h"

#include <velmorak/Table.h>

namespace velmorak::arrow {

/// One of the arrays that must be read for a column.
struct Level {
    TypeInfo type;
    std::size_t node = 0;         ///< Number of its node in a batch.
    std::size_t buffer = 0;       ///< Number of its first buffer, without those of views.
    std::size_t viewsBefore = 0;  ///< Number of columns of views before, which have further buffers.
};

/// Values of the table: an array without children, and those above it.
struct Leaf {
    std::string name;
    std::string unit;
    std::vector<Level> levels;               ///< From the top to the leaf.
    std::vector<columnar::ListPlace> lists;  ///< Those of the levels that are lists.
    std::optional<Dictionary> dictionary;
    ColumnType type = ColumnType::Real;  ///< If no value is missing.
    std::string complaint;               ///< Why the column cannot be read; empty if it can.

    bool isList() const { return !lists.empty(); }
    /// Position of a list among the levels.
    std::size_t levelOf(std::size_t list) const;
    const TypeInfo& valueType() const { return levels.back().type; }
};

/// @param hasUnionValidity unions have a buffer more.
std::vector<Leaf> leavesOf(const std::vector<Field>& fields, bool hasUnionValidity);

/// The columns of the table.
std::vector<columnar::NestedColumn> columnsOf(const std::vector<Leaf>& leaves);

/// The values of a dictionary as a column of their own.
Leaf dictionaryLeaf(const Leaf& leaf);

bool isList(Type type);

}  // namespace velmorak::arrow
