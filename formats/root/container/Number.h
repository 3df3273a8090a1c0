#pragma once

#include "root/container/Buffer.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmorak::root {

/// Storage format of a number.
enum class NumberType {
    Bool,
    Int8,
    UInt8,
    Int16,
    UInt16,
    Int32,
    UInt32,
    Int64,
    UInt64,
    Float,
    Double,
    Double32,
    Float16
};

/// Storage of a Double32_t or Float16_t, from the comment after the member: "[low, high, bits]".
struct NumberRange {
    double low = 0.0;     ///< Without a factor: number of bits of the mantissa, or 0 for the type's own.
    double factor = 0.0;  ///< 0: the number is stored unscaled, or with a shortened mantissa.

    /// @return no range if the title has none.
    static NumberRange fromTitle(std::string_view title);
    bool isTrivial() const { return factor == 0.0 && low == 0.0; }
};

/// @param kind number of the type in files: 1 char, 2 short, ... 19 Float16_t.
std::optional<NumberType> numberTypeOf(int kind);
/// @param name C++ name, such as "unsigned int" or "Float_t".
std::optional<NumberType> numberTypeNamed(std::string_view name);

/// @return the size of a number in bytes.
std::size_t sizeOf(NumberType type, const NumberRange& range);
bool isReal(NumberType type);

/// Reads a number as a real.
double readReal(Buffer& buffer, NumberType type, const NumberRange& range);
/// Reads an integer. An unsigned 64-bit integer is converted to a signed one.
std::int64_t readInteger(Buffer& buffer, NumberType type);

}  // namespace velmorak::root
