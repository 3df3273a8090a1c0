#pragma once

#include "elementary/simd/Fma.h"
#include "elementary/simd/PowerTables.h"
#include "elementary/simd/Usual.h"

#include <cstdint>

namespace velmorak::elementary {

namespace {

/// A number in two parts. The first is the sum, rounded.
struct TwoParts {
    double head, rest;
};

/// 2^k m, where 0.707 < m < 1.415 and offset tells m.
struct Binary {
    double k;
    std::uint64_t offset;
};

/// Bits of the least m.
inline constexpr std::uint64_t minBits = 0x3fe6a00000000000;

/// @param bits of a positive, normal, finite number.
/// @param bias subtracted from k.
[[gnu::always_inline]] inline Binary binaryOf(std::uint64_t bits, double bias) {
    const std::uint64_t shifted = bits + (0x3ff0000000000000 - minBits);
    // With these bits, an integer in the lowest bits becomes a double.
    const double biased = numberOf((shifted >> 52U) | 0x4330000000000000);
    return {biased - (0x1p52 + 1023.0 + bias), shifted & 0x000fffffffffffff};
}

/// The natural logarithm with a relative error below 2^-64 (P. Tang, ACM Transactions on Mathematical Software 16
/// (1990) 378).
///
/// With c near 1/m from a table, r = c m - 1 is exact, and log(m) = -log(c) + r - r^2/2 + r^3 q(r). The sums of the
/// terms before the last are exact, because -log(c) is 0 or larger than r. q interpolates the series at the Chebyshev
/// nodes.
///
/// @tparam exactMultiplyAdd yields x y + z where that is a double.
template <double (*exactMultiplyAdd)(double, double, double)>
[[gnu::always_inline]] inline TwoParts logarithmInParts(Binary x) {
    const std::uint64_t interval = x.offset >> 46U;
    const double m = numberOf(x.offset + minBits);
    const double r = exactMultiplyAdd(m, inverses[interval], -1.0);
    const double square = r * r;
    const double squareRest = exactMultiplyAdd(r, r, -square);
    const double q01 = 0x1.5555555555555p-2 - r * 0x1.00000000001efp-2;
    const double q23 = 0x1.9999999999d1dp-3 - r * 0x1.5555551dcb900p-3;
    const double q45 = 0x1.249248f21500cp-3 - r * 0x1.000c788a1919ap-3;
    const double q = q01 + square * (q23 + square * (q45 + square * 0x1.c7331e68581bcp-4));
    const double base = x.k * 0x1.62e42fefa38p-1 + logarithmHeads[interval];
    const double baseRest = x.k * 0x1.ef35793c7673p-45 + logarithmRests[interval];
    const double linear = base + r;
    const double quadratic = linear - 0.5 * square;
    const double lost = ((base - linear) + r) + ((linear - quadratic) - 0.5 * square);
    const double rest = (lost + (baseRest - 0.5 * squareRest)) + (square * r) * q;
    const double head = quadratic + rest;
    return {head, (quadratic - head) + rest};
}

/// 2^(steps/32) (1 + relative); the lowest bits of steps are the number.
struct Exponential {
    std::uint64_t steps;
    double relative;
};

/// The exponential function of a number between -2000 and 2000 with a relative error below 2^-59 (P. Tang, ACM
/// Transactions on Mathematical Software 15 (1989) 144). ln 2 / 32 comes in two parts, of which steps times the first
/// is exact.
[[gnu::always_inline]] inline Exponential exponentialOfParts(TwoParts x) {
    // Adding and subtracting this number rounds to an integer, which its lowest bits hold in between.
    constexpr double rounder = 0x1.8p52;
    const double shifted = x.head * 0x1.71547652b82fep+5 + rounder;
    const double steps = shifted - rounder;
    const double r = (x.head - steps * 0x1.62e42fefap-6) + (x.rest - steps * 0x1.cf79abc9e3b3ap-45);
    const double square = r * r;
    const double q = (0.5 + r * 0x1.555555554dd39p-3) +
                     square * ((0x1.5555555551947p-5 + r * 0x1.11114f8dac296p-7) + square * 0x1.6c16ffe8b0841p-10);
    const auto bits = bitsOf(shifted);
    return {bits, r + (rootRests[bits & 31U] + square * q)};
}

/// x^y, accurate to 0.6 units in the last place; usual where the last product is far from 2^-1074. It has no branch, so
/// that compilers vectorise loops over it. exactMultiplyAdd is used where there is nothing to round, so that every
/// processor yields the same bits.
template <double (*exactMultiplyAdd)(double, double, double)>
[[gnu::always_inline]] inline Usual usualPower(double x, double y) {
    constexpr double rounder = 0x1.8p52;
    const std::uint64_t bits = bitsOf(x);
    const std::uint64_t size = bitsOf(__builtin_fabs(x));
    const TwoParts logarithm = logarithmInParts<exactMultiplyAdd>(binaryOf(size, 0.0));
    const double head = y * logarithm.head;
    const double rest = exactMultiplyAdd(y, logarithm.head, -head) + y * logarithm.rest;
    const Exponential power = exponentialOfParts({head, rest});
    const double root = numberOf(rootBits[power.steps & 31U] + (power.steps << 47U));
    const std::uint64_t value = bitsOf(root + root * power.relative);
    // The lowest bit tells whether y is odd.
    const double shifted = y + rounder;
    const std::uint64_t sign = bits & (bitsOf(shifted) << 63U);
    const std::uint64_t isNegative = maskOf(static_cast<std::int64_t>(bits) < 0);
    const std::uint64_t isFraction = maskOf(shifted - rounder != y);
    const std::uint64_t isExtreme = maskOf(!isPositiveNormal(size)) | maskOf(!(__builtin_fabs(y) < 0x1p51)) |
                                    maskOf(!(__builtin_fabs(head) < 700.0));
    return {numberOf(value ^ sign), isExtreme | (isNegative & isFraction)};
}

}  // namespace

/// x^y for all arguments; slower.
double unusualPower(double x, double y);

}  // namespace velmorak::elementary
