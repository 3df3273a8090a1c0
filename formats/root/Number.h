#pragma once

#include "root/Buffer.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmorak::root {

/// How a number is stored.
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

/// How the values of a Double32_t or Float16_t are stored, by the comment behind the member: "[low, high, bits]".
struct NumberRange {
    double low = 0.0;     ///< Without a factor: number of bits of the mantissa, or 0 for the type's own.
    double factor = 0.0;  ///< 0: the number is stored as it is, or with a shortened mantissa.

    /// @return without a range when the title has none.
    static NumberRange fromTitle(std::string_view title);
    bool isTrivial() const { return factor == 0.0 && low == 0.0; }
};

/// @param kind as files number the types of members: 1 char, 2 short, ... 19 Float16_t.
std::optional<NumberType> numberTypeOf(int kind);
/// @param name as C++ has it, such as "unsigned int" or "Float_t".
std::optional<NumberType> numberTypeNamed(std::string_view name);

/// @return bytes that one number takes.
std::size_t sizeOf(NumberType type, const NumberRange& range);
bool isReal(NumberType type);

/// Reads a number that has to become a real.
double readReal(Buffer& buffer, NumberType type, const NumberRange& range);
/// Reads a number that is no real. One of 64 bits without sign becomes one with a sign.
std::int64_t readInteger(Buffer& buffer, NumberType type);

}  // namespace velmorak::root
