#pragma once

#include "hdf5/Library.h"

#include "binary/StoredNumbers.h"

#include <velmorak/Table.h>

#include <cstddef>
#include <string>
#include <vector>

namespace velmorak::hdf5 {

/// A value in each element of a dataset: the element itself, or a member of its compound type.
struct Leaf {
    enum class Kind {
        Number,     ///< Stored as in the file.
        Text,       ///< Of fixed length.
        Converted,  ///< A number that the library converts to a double or a 64-bit integer.
        LongText,   ///< Of any length, stored apart.
        LongList,   ///< Numbers, any number of them, stored apart.
    };

    std::string name{};                  ///< Path of the members with dots; empty for the element itself.
    std::vector<std::string> members{};  ///< That path.
    Kind kind = Kind::Number;
    StoredNumber number{};   ///< Of numbers, also those that the library gives.
    std::size_t offset = 0;  ///< In the element, as the file stores it.
    std::size_t bytes = 0;   ///< Of one number or text.
    std::size_t count = 1;   ///< Of an array: its length.
    bool isList = false;     ///< An array, or a LongList.
    char padding = '\0';     ///< That fills a text; zeros end one in any case.
    bool isUtf8 = false;     ///< Of a LongText, as the file says.
    std::string problem{};   ///< Why the value cannot be read; empty if it can.

    ColumnType type() const;
    /// The library must read it; it cannot be taken from the bytes of the element.
    bool needsLibrary() const { return kind >= Kind::Converted; }
};

/// The values in each element of a type. Called under the lock.
std::vector<Leaf> leavesOf(hid_t type);

/// A type for memory that holds the value alone, as it is in a compound type. Called under the lock.
Handle memoryTypeOf(const Leaf& leaf);

/// Appends texts of fixed length. Bytes that are not UTF-8 are read as ISO-8859-1.
void appendTexts(Column& column, const Leaf& leaf, const char* first, std::size_t stride, std::size_t count);

}  // namespace velmorak::hdf5
