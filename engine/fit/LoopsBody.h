#pragma once

#include "fit/LoopsRotation.h"
#include "fit/LoopsSlopes.h"
#include "fit/LoopsValues.h"

// Compiled several times, for the common processor and for wider vectors. Nothing of it may be an inline function that
// other sources have too: the linker might take this one for all of them, also on a processor without these
// instructions.

namespace velmorak::fitting {

namespace {

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

inline constexpr Loops loops{perform, backward, addScaled, product, householderUpdate};

}  // namespace

}  // namespace velmorak::fitting
