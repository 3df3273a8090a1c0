#pragma once

/// Arguments at which the functions of SLEEF lose accuracy. Scalar.cpp computes these otherwise.
namespace velmorak::elementary {

namespace {

/// The function is x, or 1 for cosh.
[[gnu::always_inline]] inline bool isTiny(double x) {
    return __builtin_fabs(x) < 0x1p-28;
}

[[gnu::always_inline]] inline bool isHuge(double x) {
    return x > 0x1p500;
}

/// exp(|x|) is infinite, or nearly so.
[[gnu::always_inline]] inline bool isTinyOrBeyondExp(double x) {
    return isTiny(x) || __builtin_fabs(x) > 709.0;
}

/// log1p(x) is x or log(x).
[[gnu::always_inline]] inline bool isTinyOrHugeFor1(double x) {
    return __builtin_fabs(x) < 0x1p-54 || isHuge(x);
}

/// The gamma function is 0 with a sign, or has a pole.
[[gnu::always_inline]] inline bool isFarBelow(double x) {
    return x < -177.0;
}

}  // namespace

}  // namespace velmorak::elementary
