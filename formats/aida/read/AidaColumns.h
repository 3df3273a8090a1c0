#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <velmorak/Table.h>

namespace velmorak::io {

/// A tuple of more columns is refused.
inline constexpr std::size_t maxColumns = std::size_t{1} << 20U;

/// A column of a tuple as its file describes it.
struct AidaColumn {
    std::string name;
    std::string typeText;     ///< As written: "double", "java.lang.String".
    std::string defaultText;  ///< What stands for a missing entry; empty when the file gives none.
    bool isNested = false;
    bool isSingleCharacter = false;
    ColumnType type = ColumnType::Real;  ///< Of a column that is not nested.
    bool isKnownType = true;             ///< Otherwise it is read as text.
    std::vector<AidaColumn> children;    ///< Of a nested column.
};

/// The columns have the same names, types and nested columns, so that rows of the one fit the other.
bool haveSameShape(const std::vector<AidaColumn>& some, const std::vector<AidaColumn>& others);

/// Reads the attributes of a <column>, in every dialect in which programs write them.
/// @param booking attribute of that name, empty when there is none.
/// @throws Failure when it describes more than maxColumns.
AidaColumn columnFrom(std::string_view name, std::string_view type, std::string_view booking);

/// @return an object's name without the backslash that some programs put before a "/" in it.
std::string plainName(std::string_view name);
/// @return "/" separated path of an object from the attributes of its element: with a "/" in front, none doubled, none
///         at the end.
std::string objectPath(std::string_view folder, std::string_view name);
/// @return the path written in the same way.
std::string normalPath(std::string_view path);

}  // namespace velmorak::io
