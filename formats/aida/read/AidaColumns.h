#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <velmorak/Table.h>

namespace velmorak::io {

/// Limit for the columns of a tuple.
inline constexpr std::size_t maxColumns = std::size_t{1} << 20U;

/// A column of a tuple as its file describes it.
struct AidaColumn {
    std::string name;
    std::string typeText;     ///< As written: "double", "java.lang.String".
    std::string defaultText;  ///< Replaces a missing entry; empty if the file gives none.
    bool isNested = false;
    bool isSingleCharacter = false;
    ColumnType type = ColumnType::Real;  ///< Of a column that is not nested.
    bool isKnownType = true;             ///< Otherwise it is read as text.
    std::vector<AidaColumn> children;    ///< Of a nested column.
};

/// @return whether the columns have the same names, types and nested columns, so that rows of one fit the other.
bool haveSameShape(const std::vector<AidaColumn>& some, const std::vector<AidaColumn>& others);

/// Parses the attributes of a <column>, in all dialects that programs write.
/// @param booking attribute of that name; empty if there is none.
/// @throws Failure if it describes more than maxColumns.
AidaColumn columnFrom(std::string_view name, std::string_view type, std::string_view booking);

/// @return an object's name without the backslashes that some programs put before "/".
std::string plainName(std::string_view name);
/// @return path of an object from the attributes of its element, "/" separated: with a leading "/", and no double or
///         trailing ones.
std::string objectPath(std::string_view folder, std::string_view name);
/// @return the path in the same form.
std::string normalPath(std::string_view path);

}  // namespace velmorak::io
