#pragma once

#include "numpy/Elements.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::numpy {

/// A field of the records of an array; the only one of an array without records, then without a name.
struct Field {
    std::string name;
    Element element;
    std::uint64_t offset = 0;  ///< In the record.
    std::uint64_t count = 1;   ///< Of a field that is an array itself: number of its elements.
    bool isList = false;
};

/// What an array says of itself.
struct ArrayHeader {
    std::vector<Field> fields;
    bool hasRecords = false;
    std::uint64_t itemBytes = 0;       ///< Of an element or a record.
    std::vector<std::uint64_t> shape;  ///< Number of elements in each dimension.
    bool isFortran = false;            ///< The first index, and not the last, runs fastest.
    std::uint64_t begin = 0;           ///< Of the data, counted from the header's begin.

    std::uint64_t rows() const { return shape.empty() ? 1 : shape.front(); }
    /// Bytes of the data; the constructor of a header makes sure that the number fits.
    std::uint64_t dataBytes() const;
};

/// Every file begins with it.
inline constexpr std::string_view arraySignature = "\x93NUMPY";
/// Bytes that say how long the header is.
inline constexpr std::size_t prefixBytes = 12;

/// @param prefix first bytes of an array, prefixBytes or all if there are fewer.
/// @return the length of the header with everything before it. @throws Failure if this is not an array.
std::uint64_t headerBytes(std::string_view prefix);

/// @param header first headerBytes() bytes of an array. @throws Failure if they are damaged.
ArrayHeader readHeader(std::string_view header);

}  // namespace velmorak::numpy
