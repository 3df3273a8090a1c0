#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmorak::columnar {

/// A list on the way from the top to the values of a file.
struct ListPlace {
    std::uint64_t id = 0;  ///< The same for all values that the list leads to.
    std::string name;      ///< Of the list, and of those of its elements that have no name of their own.
};

/// Where values are in the types of a file.
struct LeafPlace {
    std::string name;
    std::string complaint;         ///< Why they cannot be read; empty if they can.
    std::vector<ListPlace> lists;  ///< From the top.
};

/// A column of the table: values, or how lists are nested.
struct NestedColumn {
    enum class Part {
        Values,
        Counts,  ///< Lengths of lists.
        Rows,    ///< For each of their elements, the position of its list among all of the row.
    };

    std::string name;
    Part part = Part::Values;
    std::size_t leaf = 0;   ///< Whose values, or whose lists.
    std::size_t list = 0;   ///< Of lists: position on the way to the leaf, at least 1.
    std::string complaint;  ///< Why it cannot be read; empty if it can.
};

/// The columns for leaves in the order of the file. Lists within lists are concatenated; two more columns for each
/// level, NAME.count and NAME.row, follow the values and say how. Of lists of the same name in each other, the
/// innermost have these names, and those around them NAME.count.count and NAME.count.row.
/// @param leaves have different names.
std::vector<NestedColumn> nestedColumns(const std::vector<LeafPlace>& leaves);

}  // namespace velmorak::columnar
