#pragma once

#include "elementary/simd/Fma.h"

#include <cstdint>

namespace velmorak::elementary {

namespace {

/// The exponential function, accurate to 1.2 units in the last place. It has no branch and no table, so that compilers
/// vectorise loops over it. Fused multiply-adds are explicit, so that every processor yields the same bits.
///
/// With k = round(x / ln 2) and r = x - k ln 2 it is 2^k (1 + r + r^2/2 + r^3 q(r)); q interpolates the remainder of
/// the series at the Chebyshev nodes of |r| < 0.3466. ln 2 comes in two parts (Cody, Waite: Software Manual for the
/// Elementary Functions, 1980), of which k times the first is exact.
///
/// @tparam multiplyAdd fused or emulatedFused.
template <double (*multiplyAdd)(double, double, double)>
[[gnu::always_inline]] inline double exponentialWith(double x) {
    // Adding and subtracting this number rounds to an integer, which its lowest bits hold in between.
    constexpr double rounder = 0x1.8p52;
    constexpr double low = -746.0;  // Gives 0.
    constexpr double high = 710.0;  // Gives Infinity.
    const double above = x < low ? low : x;
    const double inside = above > high ? high : above;
    const double k = multiplyAdd(inside, 0x1.71547652b82fep0, rounder) - rounder;
    const double r = multiplyAdd(k, -0x1.a39ef35793c76p-33, multiplyAdd(k, -0x1.62e42feep-1, inside));
    double q = 0x1.af236857dc4b7p-26;
    q = multiplyAdd(q, r, 0x1.28803f36ecdd5p-22);
    q = multiplyAdd(q, r, 0x1.71de17e4e5d5dp-19);
    q = multiplyAdd(q, r, 0x1.a019c9a6c2942p-16);
    q = multiplyAdd(q, r, 0x1.a01a01a4b2f7fp-13);
    q = multiplyAdd(q, r, 0x1.6c16c1738faf6p-10);
    q = multiplyAdd(q, r, 0x1.1111111110e6ap-7);
    q = multiplyAdd(q, r, 0x1.5555555554cb7p-5);
    q = multiplyAdd(q, r, 0x1.5555555555555p-3);
    const double mantissa = 1.0 + multiplyAdd(r * r, multiplyAdd(r, q, 0.5), r);
    // In two steps, because 2^k itself may overflow or underflow; only the last one rounds.
    const double halfSum = multiplyAdd(k, 0.5, rounder);
    const double restSum = (k - (halfSum - rounder)) + rounder;
    const auto powerOf2 = [](double sum) {
        return __builtin_bit_cast(double, (__builtin_bit_cast(std::uint64_t, sum) + 1023) << 52U);
    };
    return mantissa * powerOf2(halfSum) * powerOf2(restSum);
}

/// For processors with fused multiply-adds.
[[gnu::always_inline]] inline double exponential(double x) {
    return exponentialWith<fused>(x);
}

}  // namespace

}  // namespace velmorak::elementary
