#pragma once

#include "columnar/Nesting.h"
#include "parquet/Metadata.h"

#include <velmorak/Table.h>

namespace velmorak::parquet {

/// A leaf of the schema's tree, whose values are a column of the table.
struct Leaf {
    std::string name;      ///< Names on the way joined with dots, without those that only make up a list or map.
    std::string fullName;  ///< All names on the way, joined with dots.
    SchemaElement element;
    unsigned maxDefinition = 0;
    unsigned maxRepetition = 0;              ///< Number of lists on the way.
    std::vector<columnar::ListPlace> lists;  ///< From the top.
    /// For each of the lists, the definition level from which on it has an element, which may be missing.
    std::vector<unsigned> elementDefinitions;
    ColumnType type = ColumnType::Real;  ///< If no value is missing.
    std::string complaint;               ///< Why the column cannot be read; empty if it can.

    bool isList() const { return maxRepetition > 0; }
    /// Of the innermost list; 0 without lists.
    unsigned elementDefinition() const { return elementDefinitions.empty() ? 0 : elementDefinitions.back(); }
    bool mayBeMissing() const { return maxDefinition > elementDefinition(); }
};

/// @throws Failure if the tree is damaged.
std::vector<Leaf> leavesOf(const std::vector<SchemaElement>& schema);

/// The columns of the table.
std::vector<columnar::NestedColumn> columnsOf(const std::vector<Leaf>& leaves);

}  // namespace velmorak::parquet
