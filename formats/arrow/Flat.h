#pragma once

#include "columnar/Bytes.h"

#include <velmorak/Failure.h>

#include <optional>
#include <string_view>

/// The layout of FlatBuffers, in which Arrow describes its messages: tables of fields, each of which may be absent.
namespace velmorak::arrow {

using columnar::Bytes;

class FlatTable;

/// A list in a buffer. Every element has been checked to lie within it.
class FlatList {
public:
    FlatList() = default;
    /// @throws Failure if the elements do not lie within the buffer.
    FlatList(Bytes buffer, std::size_t position, std::size_t elementBytes);

    std::size_t size() const { return count; }
    /// A number at a place of an element that is a number or a structure of numbers.
    template <typename Number>
    Number number(std::size_t element, std::size_t place = 0) const {
        return columnar::littleEndian<Number>(buffer.data() + first + element * elementBytes + place);
    }
    /// @throws Failure if there is no table.
    FlatTable table(std::size_t element) const;
    std::string_view text() const { return columnar::textOf(buffer.subspan(first, count)); }

private:
    Bytes buffer;
    std::size_t first = 0;
    std::size_t count = 0;
    std::size_t elementBytes = 0;
};

/// A table in a buffer. Fields are numbered from 0; every operation throws a Failure where the buffer is damaged.
class FlatTable {
public:
    /// The table that the buffer begins with a reference to.
    static FlatTable root(Bytes buffer);
    FlatTable(Bytes buffer, std::size_t position);

    template <typename Number>
    Number number(unsigned field, Number otherwise) const {
        const std::optional<std::size_t> at = find(field, sizeof(Number));
        return at ? columnar::littleEndian<Number>(buffer.data() + *at) : otherwise;
    }
    bool boolean(unsigned field) const { return number<std::uint8_t>(field, 0) != 0; }
    std::optional<FlatTable> table(unsigned field) const;
    /// @throws Failure also if it is absent.
    FlatTable requiredTable(unsigned field) const;
    /// Empty if absent.
    FlatList list(unsigned field, std::size_t elementBytes) const;
    std::string_view text(unsigned field) const { return list(field, 1).text(); }

private:
    std::optional<std::size_t> find(unsigned field, std::size_t size) const;

    Bytes buffer;
    std::size_t position;
    std::size_t fields;       ///< Position of the list of the fields' offsets.
    std::size_t fieldsBytes;  ///< Its length.
};

}  // namespace velmorak::arrow
