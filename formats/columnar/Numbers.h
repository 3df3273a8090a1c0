#pragma once

#include "columnar/Bytes.h"

namespace velmorak::columnar {

/// A number in the binary16 format of IEEE 754.
double halfValue(std::uint16_t bits);

/// A decimal number, rounded once to the nearest double.
/// @param bytes of the unscaled number in two's complement, the most significant first; empty for zero.
/// @param scale number of decimals, which may be negative.
double decimalValue(Bytes bytes, int scale);
double decimalValue(std::int64_t unscaled, int scale);

}  // namespace velmorak::columnar
