#pragma once

#include <velmorak/Table.h>

#include <cstddef>

namespace velmorak {

/// How a file stores a number.
struct StoredNumber {
    enum class Kind { Boolean, Signed, Unsigned, Real };

    Kind kind = Kind::Real;
    std::size_t bytes = 8;   ///< 1, 2, 4 or 8; of a real 2 (half precision), 4 or 8.
    bool isSwapped = false;  ///< Its bytes are in the other order than the machine's.

    bool operator==(const StoredNumber&) const = default;
};

/// The size is one that numbers of the kind have.
bool isKnown(const StoredNumber& number);

/// The type of the column that holds such numbers.
ColumnType columnTypeOf(const StoredNumber& number);

/// Appends numbers to a column of columnTypeOf(number). An unsigned 64-bit integer that is too large for a signed one
/// becomes negative; a boolean is true unless it is 0.
/// @param first  of count numbers, which need no alignment.
/// @param stride bytes from one to the next.
void appendNumbers(Column& column, const StoredNumber& number, const char* first, std::size_t stride,
                   std::size_t count);

}  // namespace velmorak
