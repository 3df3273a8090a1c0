#pragma once

#include "fit/simd/Adjoint.h"

// Compiled for several instruction sets: nothing here may be an inline function that other sources share.

namespace velmorak::fitting {

namespace {

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

inline bool backward(Op op, const AdjointStep& step) {
    const double* const a = step.value[0];
    const double* const b = step.value[1];
    const double* const result = step.result;
    switch (op) {
        case Op::Add:
            accumulateAdjoint(step, 0);
            return accumulateAdjoint(step, 1), true;
        case Op::Subtract:
            accumulateAdjoint(step, 0);
            return propagate(step, 1, [](std::size_t) { return -1.0; }), true;
        case Op::Multiply:
            propagate(step, 0, [=](std::size_t i) { return b[i]; });
            return propagate(step, 1, [=](std::size_t i) { return a[i]; }), true;
        case Op::Divide:
            if (const double inverse = 1.0 / b[0]; step.isUniform[1]) {
                propagate(step, 0, [=](std::size_t) { return inverse; });
            } else {
                propagate(step, 0, [=](std::size_t i) { return 1.0 / b[i]; });
            }
            return propagate(step, 1, [=](std::size_t i) { return -result[i] / b[i]; }), true;
        case Op::Negate:
            return propagate(step, 0, [](std::size_t) { return -1.0; }), true;
        case Op::Square:
            return propagate(step, 0, [=](std::size_t i) { return 2.0 * a[i]; }), true;
        case Op::Exponential:
            return propagate(step, 0, [=](std::size_t i) { return result[i]; }), true;
        case Op::Choice:
            propagate(step, 1, [=](std::size_t i) { return a[i] != 0.0 ? 1.0 : 0.0; });
            return propagate(step, 2, [=](std::size_t i) { return a[i] != 0.0 ? 0.0 : 1.0; }), true;
        case Op::Minimum:
        case Op::Maximum:
            propagate(step, 0, [=](std::size_t i) { return result[i] == a[i] ? 1.0 : 0.0; });
            return propagate(step, 1, [=](std::size_t i) { return result[i] == a[i] ? 0.0 : 1.0; }), true;
        default:
            return false;
    }
}

}  // namespace

}  // namespace velmorak::fitting
