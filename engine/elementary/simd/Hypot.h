#pragma once

#include "elementary/simd/Usual.h"

namespace velmorak::elementary {

namespace {

/// sqrt(p^2 + q^2), p >= q >= 0, accurate to 0.9 units in the last place unless the squares overflow or underflow. The
/// sum of the squares is exact but for its last rounding.
///
/// @tparam exactMultiplyAdd yields x y + z where that is a double.
template <double (*exactMultiplyAdd)(double, double, double)>
[[gnu::always_inline]] inline double hypotenuseOfSorted(double p, double q) {
    const double larger = p * p;
    const double smaller = q * q;
    const double sum = larger + smaller;
    const double rests = exactMultiplyAdd(p, p, -larger) + exactMultiplyAdd(q, q, -smaller);
    return __builtin_sqrt(sum + (((larger - sum) + smaller) + rests));
}

/// It has no branch, so that compilers vectorise loops over it. exactMultiplyAdd is used where there is nothing to
/// round, so that every processor yields the same bits.
template <double (*exactMultiplyAdd)(double, double, double)>
[[gnu::always_inline]] inline Usual usualHypotenuse(double x, double y) {
    const double a = __builtin_fabs(x);
    const double b = __builtin_fabs(y);
    const double longer = a < b ? b : a;
    const double shorter = a < b ? a : b;
    return {hypotenuseOfSorted<exactMultiplyAdd>(longer, shorter),
            (maskOf(longer < 0x1p-450) & maskOf(longer > 0.0)) | maskOf(!(longer <= 0x1p500))};
}

}  // namespace

/// hypot(x, y) for all arguments; slower.
double unusualHypotenuse(double x, double y);

}  // namespace velmorak::elementary
