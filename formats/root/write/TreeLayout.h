#pragma once

#include "root/write/RecordHead.h"

#include <velmorak/Table.h>

#include <optional>
#include <string>
#include <vector>

namespace velmorak::root {

/// A branch of a tree that is written: a column, or the lengths of its lists.
struct WrittenBranch {
    std::string name;
    std::size_t column = 0;
    ColumnType type = ColumnType::Real;
    bool hasLengths = false;           ///< It holds the lengths of the column's lists.
    std::optional<std::size_t> count;  ///< Branch with the lengths of the lists of this one.

    /// The values of an entry do not always take the same number of bytes.
    bool isVariable() const { return count || (type == ColumnType::Text && !hasLengths); }
    std::size_t valueBytes() const;
    /// The letter of the type in the branch's title.
    char letter() const;
};

/// How a table becomes a tree.
struct TreeLayout {
    std::string name;
    Schema schema;
    std::vector<WrittenBranch> branches;

    /// Characters that ROOT gives a meaning in names are replaced by "_".
    /// @throws Failure for a list of texts.
    TreeLayout(std::string name, const Schema& schema);

    /// Header of the records of a branch.
    RecordHead basketHead(const WrittenBranch& branch) const;
};

/// @return the name as a file can hold it, and different from those taken, of which it becomes one.
std::string nameInFile(const std::string& name, std::vector<std::string>& taken);

}  // namespace velmorak::root
