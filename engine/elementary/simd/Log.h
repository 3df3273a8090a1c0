#pragma once

#include "elementary/simd/Usual.h"

#include <cstdint>

namespace velmorak::elementary {

namespace {

/// The natural logarithm, accurate to 0.9 units in the last place. It has no branch, table or fused multiply-add, so
/// that compilers vectorise loops over it and every processor yields the same bits.
///
/// With x = 2^k (1 + f), sqrt(1/2) <= 1 + f < sqrt(2), and s = f / (2 + f), log(1 + f) is 2 artanh(s) = 2 s + s z q(z),
/// z = s^2. Because 2 s = f - s f, it is f - (f^2/2 - s (f^2/2 + z q(z))), whose first term is exact. q interpolates
/// the remainder of the series at the Chebyshev nodes. ln 2 comes in two parts, of which k times the first is exact.
///
/// @param x must be positive, normal and finite.
/// @param bias subtracted from k.
[[gnu::always_inline]] inline double logarithmOfNormal(double x, double bias) {
    constexpr std::uint64_t rootOfHalf = 0x3fe6a09e667f3bcd;
    constexpr std::uint64_t one = 0x3ff0000000000000;
    constexpr std::uint64_t fraction = 0x000fffffffffffff;
    // With the bits of this number, an integer in the lowest bits becomes a double.
    constexpr std::uint64_t integral = 0x4330000000000000;
    const std::uint64_t bits = bitsOf(x) + (one - rootOfHalf);
    const double k = numberOf((bits >> 52U) | integral) - (0x1p52 + 1023.0 + bias);
    const double f = numberOf((bits & fraction) + rootOfHalf) - 1.0;
    const double s = f / (2.0 + f);
    const double z = s * s;
    const double z2 = z * z;
    const double even =
        0x1.5555555555558p-1 + z2 * (0x1.2492492df281ap-2 + z2 * (0x1.7462b51cb66b1p-3 + z2 * 0x1.2b5900de53b32p-3));
    const double odd = 0x1.99999999952d7p-2 + z2 * (0x1.c71c62e3f11e6p-3 + z2 * 0x1.39fe51a7c18f9p-3);
    const double rest = z * (even + z * odd);
    const double halfSquare = 0.5 * f * f;
    return k * 0x1.62e42feep-1 - ((halfSquare - (s * (halfSquare + rest) + k * 0x1.a39ef35793c76p-33)) - f);
}

[[gnu::always_inline]] inline Usual usualLogarithm(double x) {
    return {logarithmOfNormal(x, 0.0), maskOf(!isPositiveNormal(bitsOf(x)))};
}

}  // namespace

/// log(x) for all arguments; slower.
double unusualLogarithm(double x);

}  // namespace velmorak::elementary
