#pragma once

#include "binary/StoredNumbers.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace velmorak::numpy {

/// How an array stores one element, or one field of a record.
struct Element {
    enum class Kind { Number, Bytes, Unicode, Moment, Unreadable };

    Kind kind = Kind::Number;
    StoredNumber number{};    ///< Of a number or a moment; of Unicode, whether its characters are swapped.
    std::uint64_t bytes = 8;  ///< Of the whole element.
    double seconds = 1.0;     ///< Of a moment: length of its unit; 0 for months.
    std::int64_t count = 1;   ///< Of a moment: units in each step.
    bool isComplex = false;   ///< Two numbers: real and imaginary part.
    bool isDate = false;      ///< Of a moment: counted from 1970.
    std::string problem{};    ///< Why an element cannot be read.

    ColumnType type() const;
};

/// @param code such as "<f8", "|S12" or "<M8[ns]". @throws Failure if it has another form.
Element elementOf(std::string_view code);

/// Appends elements to a column of the element's type. A text is cut at its trailing zeros; bytes that are not UTF-8
/// are read as ISO-8859-1. A missing moment is NaN.
/// @param first as in appendNumbers.
void appendElements(Column& column, const Element& element, const char* first, std::size_t stride, std::size_t count);

}  // namespace velmorak::numpy
