#pragma once

#include "fit/simd/FitKernels.h"
#include "fit/simd/Householder.h"

// Compiled for several instruction sets. Nothing here may be an inline function that other sources share: the linker
// might keep this copy for all of them, also on a processor without these instructions.

namespace velmorak::fitting {

namespace {

inline void fill(double value, std::size_t count, double* values) {
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = value;
    }
}

inline void addScaled(const double* __restrict factor, const double* __restrict values, std::size_t count, bool isFirst,
                      double* __restrict sum) {
    if (isFirst) {
        for (std::size_t i = 0; i < count; ++i) {
            sum[i] = factor[i] * values[i];
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            sum[i] += factor[i] * values[i];
        }
    }
}

inline constexpr FitKernels kernels{fill, addScaled, product, householderUpdate};

}  // namespace

}  // namespace velmorak::fitting
