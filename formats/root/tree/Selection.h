#pragma once

#include "root/tree/ValueTypes.h"

#include <velmorak/Table.h>

#include <string>
#include <vector>

namespace velmorak::root {

/// What a column takes of the values of a type: a number or text somewhere in them, or how its lists are nested.
struct Selection {
    enum class Content {
        Values,
        Counts,  ///< Lengths of the lists at the end of the path.
        Rows,    ///< For each value in them, the position of its list among all of its entry.
    };
    Content content = Content::Values;
    std::vector<std::size_t> path = {};  ///< Positions among the arguments, from the type inwards.
};

struct SelectedColumn {
    std::string name;
    Selection selection;
    ColumnType type = ColumnType::Real;
    bool isList = false;
    std::string problem = {};
};

/// The columns for values of a type. Lists within lists are concatenated; two more columns, NAME.count and NAME.row,
/// say how. A map gives NAME.key and NAME.value, an object a column for each member.
/// @param isInList an entry has several values.
std::vector<SelectedColumn> columnsOf(const ValueType& type, const std::string& name, bool isInList);

}  // namespace velmorak::root
