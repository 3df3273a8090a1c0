#pragma once

#include "expression/Kernels.h"

// Compiled for several instruction sets: nothing here may be an inline function that other sources share.

namespace velmorak::expression {

namespace {

/// An adjoint of 0 contributes 0, even where the derivative is infinite or NaN.
[[gnu::always_inline]] inline double times(double adjoint, double derivative) {
    const double product = adjoint * derivative;
    return adjoint == 0.0 ? 0.0 : product;
}

/// Adds adjoint of the result * derivative(i) to the adjoint of an argument.
template <typename Derivative>
[[gnu::always_inline]] inline void propagate(const AdjointStep& step, std::size_t argument,
                                             const Derivative& derivative) {
    double* const __restrict target = step.adjoint[argument];
    const double* const __restrict from = step.resultAdjoint;
    const std::size_t count = step.count;
    if (!target) {
        return;
    }
    if (*step.hasAdjoint[argument] != 0) {
        for (std::size_t i = 0; i < count; ++i) {
            target[i] += times(from[i], derivative(i));
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            target[i] = times(from[i], derivative(i));
        }
    }
    *step.hasAdjoint[argument] = 1;
}

/// propagate for a derivative of 1.
inline void accumulateAdjoint(const AdjointStep& step, std::size_t argument) {
    double* const __restrict target = step.adjoint[argument];
    const double* const __restrict from = step.resultAdjoint;
    const std::size_t count = step.count;
    if (!target) {
        return;
    }
    if (*step.hasAdjoint[argument] == 0) {
        for (std::size_t i = 0; i < count; ++i) {
            target[i] = from[i];
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            target[i] += from[i];
        }
    }
    *step.hasAdjoint[argument] = 1;
}

inline const double* realsOf(const AdjointStep& step, std::size_t argument) {
    return static_cast<const double*>(step.value[argument]);
}

}  // namespace

}  // namespace velmorak::expression
