#pragma once

#include "elementary/simd/Pow.h"

namespace velmorak::elementary {

namespace {

/// log(x + root), where root^2 is square + squareRest, and x^2 plus or minus 1. The root and the sum come in two parts,
/// because the logarithm may be near 0.
///
/// @tparam exactMultiplyAdd yields x y + z where that is a double.
template <double (*exactMultiplyAdd)(double, double, double)>
[[gnu::always_inline]] inline double logarithmOfSum(double x, double square, double squareRest, bool isRootLarger) {
    const double root = __builtin_sqrt(square);
    const double rootRest = (exactMultiplyAdd(-root, root, square) + squareRest) / (root + root);
    const double larger = isRootLarger ? root : x;
    const double smaller = isRootLarger ? x : root;
    const double sum = larger + smaller;
    const double sumRest = ((larger - sum) + smaller) + rootRest;
    const TwoParts logarithm = logarithmInParts<exactMultiplyAdd>(binaryOf(bitsOf(sum), 0.0));
    // sumRest / sum, because the product of sum and difference is 1.
    return logarithm.head + (logarithm.rest + sumRest * (larger - smaller));
}

/// asinh(x) = log(|x| + sqrt(x^2 + 1)) with the sign of x, accurate to 0.6 units in the last place. It has no branch,
/// so that compilers vectorise loops over it.
template <double (*exactMultiplyAdd)(double, double, double)>
[[gnu::always_inline]] inline Usual usualAsinh(double x) {
    const double size = __builtin_fabs(x);
    const double square = size * size;
    const ExactSum sum = exactSum(square, 1.0);
    const double rest = sum.error + exactMultiplyAdd(size, size, -square);
    const double value = logarithmOfSum<exactMultiplyAdd>(size, sum.sum, rest, true);
    return {__builtin_copysign(value, x), maskOf(!(size >= 0x1p-28)) | maskOf(!(size <= 0x1p500))};
}

/// acosh(x) = log(x + sqrt(x^2 - 1)), accurate to 0.6 units in the last place. It has no branch, so that compilers
/// vectorise loops over it.
template <double (*exactMultiplyAdd)(double, double, double)>
[[gnu::always_inline]] inline Usual usualAcosh(double x) {
    const double square = x * x;
    const ExactSum difference = exactSum(square, -1.0);
    // Near 1, what rounding left out of the square is not small beside the difference.
    const ExactSum sum = exactSum(difference.sum, difference.error + exactMultiplyAdd(x, x, -square));
    const double value = logarithmOfSum<exactMultiplyAdd>(x, sum.sum, sum.error, false);
    return {value, maskOf(!(x > 1.0)) | maskOf(!(x <= 0x1p500))};
}

}  // namespace

/// asinh(x) and acosh(x) for all other arguments.
double unusualAsinh(double x);
double unusualAcosh(double x);

}  // namespace velmorak::elementary
