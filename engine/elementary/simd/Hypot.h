#pragma once

#include <cstdint>

namespace velmorak::elementary {

namespace {

/// sqrt(x^2 + y^2) without overflow on the way, accurate to 1 unit in the last place. It has no branch or fused
/// multiply-add, so that compilers vectorise loops over it and every processor yields the same bits.
///
/// The square of the head of a number, its first 21 bits, is exact; what it leaves out is added with the smaller
/// square. For sides of similar length, x^2 + y^2 = (x - y)^2 + 2 x y, where x - y is exact.
[[gnu::always_inline]] inline double hypotenuse(double x, double y) {
    const auto headOf = [](double value) {
        return __builtin_bit_cast(double, __builtin_bit_cast(std::uint64_t, value) & 0xffffffff00000000);
    };
    const double a = __builtin_fabs(x);
    const double b = __builtin_fabs(y);
    const double longer = a < b ? b : a;
    const double notTiny = longer < 0x1p-450 ? 0x1p600 : 1.0;
    const double scale = longer > 0x1p500 ? 0x1p-600 : notTiny;
    const double notSmall = longer < 0x1p-450 ? 0x1p-600 : 1.0;
    const double unscale = longer > 0x1p500 ? 0x1p600 : notSmall;
    const double p = longer * scale;
    const double q = (a < b ? a : b) * scale;
    const double difference = p - q;
    const bool isSimilar = difference <= q;
    const double factor = isSimilar ? p + p : p;
    const double other = isSimilar ? q : p;
    const double factorHead = headOf(factor);
    const double otherHead = headOf(other);
    const double squared = isSimilar ? difference : q;
    // factor * other = factorHead * otherHead + factorHead * otherRest + factorRest * other
    const double rest = factorHead * (other - otherHead) + (factor - factorHead) * other;
    const double length = __builtin_sqrt(factorHead * otherHead + (squared * squared + rest)) * unscale;
    const double larger = a == __builtin_inf() ? a : length;
    return b == __builtin_inf() ? b : larger;
}

}  // namespace

}  // namespace velmorak::elementary
