#pragma once

#include <cstddef>

namespace velmorak::io {

/// Bytes beyond the end of a text that scanDecimal may look at; what stands there does not matter.
inline constexpr std::size_t decimalMargin = 8;

/// Reads a number as programs write it: an optional minus, digits with at most one point, and an exponent. Rounds
/// exactly, as velmorak::readNumber does.
/// @param text followed by at least decimalMargin bytes that may be read, the first of which is no part of a number.
/// @return the first byte behind the number; null, with value unchanged, where the text begins with no such number, or
///         with one that takes another way to be rounded: with more than 19 digits, or far from 1.
const char* scanDecimal(const char* text, double& value);

}  // namespace velmorak::io
