#pragma once

#include "expression/simd/Adjoint.h"

// Compiled for several instruction sets: nothing here may be an inline function that other sources share.

namespace velmorak::expression {

namespace {

inline void reverseSum(const AdjointStep& step) {
    accumulateAdjoint(step, 0);
    accumulateAdjoint(step, 1);
}

inline void reverseDifference(const AdjointStep& step) {
    accumulateAdjoint(step, 0);
    propagate(step, 1, [](std::size_t) { return -1.0; });
}

inline void reverseProduct(const AdjointStep& step) {
    const double* const a = realsOf(step, 0);
    const double* const b = realsOf(step, 1);
    propagate(step, 0, [=](std::size_t i) { return b[i]; });
    propagate(step, 1, [=](std::size_t i) { return a[i]; });
}

inline void reverseQuotient(const AdjointStep& step) {
    const double* const b = realsOf(step, 1);
    const double* const result = step.result;
    if (const double inverse = 1.0 / b[0]; step.isUniform[1]) {
        propagate(step, 0, [=](std::size_t) { return inverse; });
    } else {
        propagate(step, 0, [=](std::size_t i) { return 1.0 / b[i]; });
    }
    propagate(step, 1, [=](std::size_t i) { return -result[i] / b[i]; });
}

inline void reverseNegative(const AdjointStep& step) {
    propagate(step, 0, [](std::size_t) { return -1.0; });
}

inline void reverseSquare(const AdjointStep& step) {
    const double* const a = realsOf(step, 0);
    propagate(step, 0, [=](std::size_t i) { return 2.0 * a[i]; });
}

inline void reverseExponential(const AdjointStep& step) {
    const double* const result = step.result;
    propagate(step, 0, [=](std::size_t i) { return result[i]; });
}

inline void reverseRoot(const AdjointStep& step) {
    const double* const result = step.result;
    propagate(step, 0, [=](std::size_t i) { return 0.5 / result[i]; });
}

inline void reverseAbsolute(const AdjointStep& step) {
    const double* const a = realsOf(step, 0);
    propagate(step, 0, [=](std::size_t i) { return a[i] > 0.0 ? 1.0 : a[i] < 0.0 ? -1.0 : a[i]; });
}

inline void reverseChoice(const AdjointStep& step) {
    const auto* const condition = static_cast<const std::uint8_t*>(step.value[0]);
    propagate(step, 1, [=](std::size_t i) { return condition[i] != 0 ? 1.0 : 0.0; });
    propagate(step, 2, [=](std::size_t i) { return condition[i] != 0 ? 0.0 : 1.0; });
}

/// Of min and max. Equal arguments count as the first.
inline void reverseExtreme(const AdjointStep& step) {
    const double* const a = realsOf(step, 0);
    const double* const result = step.result;
    propagate(step, 0, [=](std::size_t i) { return result[i] == a[i] ? 1.0 : 0.0; });
    propagate(step, 1, [=](std::size_t i) { return result[i] == a[i] ? 0.0 : 1.0; });
}

}  // namespace

}  // namespace velmorak::expression
