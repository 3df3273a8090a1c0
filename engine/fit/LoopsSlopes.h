#pragma once

#include "fit/Chain.h"

// Part of loops that are compiled several times: nothing here may be an inline function that other sources share.

namespace velmorak::fitting {

namespace {

/// For a slope of 1 everywhere.
inline void passOn(const Chain& chain, std::size_t argument) {
    double* const __restrict target = chain.weight[argument];
    const double* const __restrict outer = chain.outer;
    const std::size_t count = chain.count;
    if (target == nullptr)
        return;
    if (*chain.isTouched[argument] == 0)
        for (std::size_t i = 0; i < count; ++i)
            target[i] = outer[i];
    else
        for (std::size_t i = 0; i < count; ++i)
            target[i] += outer[i];
    *chain.isTouched[argument] = 1;
}

inline bool hand(Op op, const Chain& chain) {
    const double* const a = chain.value[0];
    const double* const b = chain.value[1];
    const double* const result = chain.result;
    switch (op) {
        case Op::Add:
            passOn(chain, 0);
            return passOn(chain, 1), true;
        case Op::Subtract:
            passOn(chain, 0);
            return pass(chain, 1, [](std::size_t) { return -1.0; }), true;
        case Op::Multiply:
            pass(chain, 0, [=](std::size_t i) { return b[i]; });
            return pass(chain, 1, [=](std::size_t i) { return a[i]; }), true;
        case Op::Divide:
            if (const double inverse = 1.0 / b[0]; chain.isUniform[1])
                pass(chain, 0, [=](std::size_t) { return inverse; });
            else
                pass(chain, 0, [=](std::size_t i) { return 1.0 / b[i]; });
            return pass(chain, 1, [=](std::size_t i) { return -result[i] / b[i]; }), true;
        case Op::Negate:
            return pass(chain, 0, [](std::size_t) { return -1.0; }), true;
        case Op::Square:
            return pass(chain, 0, [=](std::size_t i) { return 2.0 * a[i]; }), true;
        case Op::Exponential:
            return pass(chain, 0, [=](std::size_t i) { return result[i]; }), true;
        case Op::Choice:
            pass(chain, 1, [=](std::size_t i) { return a[i] != 0.0 ? 1.0 : 0.0; });
            return pass(chain, 2, [=](std::size_t i) { return a[i] != 0.0 ? 0.0 : 1.0; }), true;
        case Op::Minimum:
        case Op::Maximum:
            pass(chain, 0, [=](std::size_t i) { return result[i] == a[i] ? 1.0 : 0.0; });
            return pass(chain, 1, [=](std::size_t i) { return result[i] == a[i] ? 0.0 : 1.0; }), true;
        default:
            return false;
    }
}

}  // namespace

}  // namespace velmorak::fitting
