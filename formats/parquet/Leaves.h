#pragma once

#include "parquet/Metadata.h"

#include <velmorak/Table.h>

namespace velmorak::parquet {

/// A leaf of the schema's tree: a column of the table.
struct Leaf {
    std::string name;      ///< Names on the way joined with dots, without those that only make up a list or map.
    std::string fullName;  ///< All names on the way, joined with dots.
    SchemaElement element;
    unsigned maxDefinition = 0;
    unsigned maxRepetition = 0;  ///< 0 for a column without lists.
    /// Definition level from which on a list has an element, which may be missing; 0 without lists.
    unsigned elementDefinition = 0;
    ColumnType type = ColumnType::Real;  ///< If no value is missing.
    std::string complaint;               ///< Why the column cannot be read; empty if it can.

    bool isList() const { return maxRepetition > 0; }
    bool mayBeMissing() const { return maxDefinition > elementDefinition; }
};

/// @throws Failure if the tree is damaged.
std::vector<Leaf> leavesOf(const std::vector<SchemaElement>& schema);

}  // namespace velmorak::parquet
