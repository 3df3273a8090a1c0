#pragma once

#include "fit/Chain.h"

// Part of loops that are compiled several times: nothing here may be an inline function that other sources share.

namespace velmorak::fitting {

namespace {

/// For a slope of 1 everywhere.
inline void accumulateAdjoint(const AdjointStep& chain, std::size_t argument) {
    double* const __restrict target = chain.weight[argument];
    const double* const __restrict outer = chain.outer;
    const std::size_t count = chain.count;
    if (!target) {
        return;
    }
    if (*chain.hasAdjoint[argument] == 0) {
        for (std::size_t i = 0; i < count; ++i) {
            target[i] = outer[i];
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            target[i] += outer[i];
        }
    }
    *chain.hasAdjoint[argument] = 1;
}

inline bool backward(Op op, const AdjointStep& chain) {
    const double* const a = chain.value[0];
    const double* const b = chain.value[1];
    const double* const result = chain.result;
    switch (op) {
        case Op::Add:
            accumulateAdjoint(chain, 0);
            return accumulateAdjoint(chain, 1), true;
        case Op::Subtract:
            accumulateAdjoint(chain, 0);
            return propagate(chain, 1, [](std::size_t) { return -1.0; }), true;
        case Op::Multiply:
            propagate(chain, 0, [=](std::size_t i) { return b[i]; });
            return propagate(chain, 1, [=](std::size_t i) { return a[i]; }), true;
        case Op::Divide:
            if (const double inverse = 1.0 / b[0]; chain.isUniform[1]) {
                propagate(chain, 0, [=](std::size_t) { return inverse; });
            } else {
                propagate(chain, 0, [=](std::size_t i) { return 1.0 / b[i]; });
            }
            return propagate(chain, 1, [=](std::size_t i) { return -result[i] / b[i]; }), true;
        case Op::Negate:
            return propagate(chain, 0, [](std::size_t) { return -1.0; }), true;
        case Op::Square:
            return propagate(chain, 0, [=](std::size_t i) { return 2.0 * a[i]; }), true;
        case Op::Exponential:
            return propagate(chain, 0, [=](std::size_t i) { return result[i]; }), true;
        case Op::Choice:
            propagate(chain, 1, [=](std::size_t i) { return a[i] != 0.0 ? 1.0 : 0.0; });
            return propagate(chain, 2, [=](std::size_t i) { return a[i] != 0.0 ? 0.0 : 1.0; }), true;
        case Op::Minimum:
        case Op::Maximum:
            propagate(chain, 0, [=](std::size_t i) { return result[i] == a[i] ? 1.0 : 0.0; });
            return propagate(chain, 1, [=](std::size_t i) { return result[i] == a[i] ? 0.0 : 1.0; }), true;
        default:
            return false;
    }
}

}  // namespace

}  // namespace velmorak::fitting
