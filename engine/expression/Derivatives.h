#pragma once

#include "expression/simd/Reverse.h"

#include <velmorak/ElementaryFunctions.h>

#include <cmath>
#include <numbers>

// Included by the table of functions only: everything here is local to it.

/// Derivatives of the functions that have no vectorised form.
namespace velmorak::expression {

namespace {

/// @tparam derivative of x and the value at x.
template <auto derivative>
void reverseOfOne(const AdjointStep& step) {
    const double* const x = realsOf(step, 0);
    const double* const value = step.result;
    propagate(step, 0, [=](std::size_t i) { return derivative(x[i], value[i]); });
}

/// @tparam byFirst, bySecond partial derivatives, of both arguments and the value.
template <auto byFirst, auto bySecond>
void reverseOfTwo(const AdjointStep& step) {
    const double* const x = realsOf(step, 0);
    const double* const y = realsOf(step, 1);
    const double* const value = step.result;
    propagate(step, 0, [=](std::size_t i) { return byFirst(x[i], y[i], value[i]); });
    propagate(step, 1, [=](std::size_t i) { return bySecond(x[i], y[i], value[i]); });
}

/// For steps: the derivative is 0 wherever there is one.
inline void reverseFlat(const AdjointStep& step) {
    for (std::size_t k = 0; k < 3; ++k) {
        propagate(step, k, [](std::size_t) { return 0.0; });
    }
}

/// Derivative of the error function.
inline double gaussian(double x) {
    return 2.0 / std::sqrt(std::numbers::pi) * elementary::exp(-x * x);
}

inline constexpr ReverseKernel reversePower =
    reverseOfTwo<[](double x, double y, double) { return y == 0.0 ? 0.0 : y * elementary::pow(x, y - 1.0); },
                 [](double x, double, double value) { return x == 0.0 ? 0.0 : value * elementary::log(x); }>;
inline constexpr ReverseKernel reverseRemainder =
    reverseOfTwo<[](double, double, double) { return 1.0; },
                 [](double x, double y, double) { return -std::trunc(x / y); }>;
inline constexpr ReverseKernel reverseNearestRemainder =
    reverseOfTwo<[](double, double, double) { return 1.0; },
                 [](double x, double y, double value) { return (value - x) / y; }>;
inline constexpr ReverseKernel reverseCopySign =
    reverseOfTwo<[](double x, double y, double) { return std::signbit(x) == std::signbit(y) ? 1.0 : -1.0; },
                 [](double, double, double) { return 0.0; }>;
inline constexpr ReverseKernel reverseArctangent2 =
    reverseOfTwo<[](double x, double y, double) { return y / (x * x + y * y); },
                 [](double x, double y, double) { return -x / (x * x + y * y); }>;
inline constexpr ReverseKernel reverseHypotenuse =
    reverseOfTwo<[](double x, double, double value) { return x / value; },
                 [](double, double y, double value) { return y / value; }>;

}  // namespace

}  // namespace velmorak::expression
