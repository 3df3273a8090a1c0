#pragma once

#include "fit/Loops.h"

// Part of loops that are compiled several times: nothing here may be an inline function that other sources share.

namespace velmorak::fitting {

namespace {

/// What has no influence has none on a slope that is no number either.
[[gnu::always_inline]] inline double times(double weight, double slope) {
    const double product = weight * slope;
    return weight == 0.0 ? 0.0 : product;
}

/// Adds to an argument's weight; slope(i) is how the step changes with the argument at place i.
template <typename Slope>
[[gnu::always_inline]] inline void propagate(const AdjointStep& chain, std::size_t argument, const Slope& slope) {
    double* const __restrict target = chain.weight[argument];
    const double* const __restrict from = chain.outer;
    const std::size_t count = chain.count;
    if (!target) {
        return;
    }
    if (*chain.hasAdjoint[argument] != 0) {
        for (std::size_t i = 0; i < count; ++i) {
            target[i] += times(from[i], slope(i));
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            target[i] = times(from[i], slope(i));
        }
    }
    *chain.hasAdjoint[argument] = 1;
}

}  // namespace

}  // namespace velmorak::fitting
