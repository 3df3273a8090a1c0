#pragma once

#include "histogram/fill/Kernels.h"

#include <velmorak/Histogram1D.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace velmorak::filling {

/// Entries per block of the scalar path, which looks up all cells of a block before it fills them, so that the lookups
/// overlap.
inline constexpr std::size_t blockEntries = 1024;

inline Entries from(const Entries& entries, std::size_t first) {
    return {.x = entries.x + first,
            .y = !entries.y ? nullptr : entries.y + first,
            .weights = !entries.weights ? nullptr : entries.weights + first,
            .count = entries.count - first};
}

inline double weightOf(const Entries& entries, std::size_t position) {
    return !entries.weights ? 1.0 : entries.weights[position];
}

/// @return the cells of a histogram in the form that kernels take.
template <typename Sums>
std::byte* bytesOf(CellVector<Sums>& cells) {
    static_assert(sizeof(Sums) == cellBytes && offsetof(Sums, entries) == 0 && offsetof(Sums, w) == 8 &&
                  offsetof(Sums, ww) == 16 && offsetof(Sums, wx) == 24);
    return reinterpret_cast<std::byte*>(cells.data());
}

/// @return no value for bins of different widths, or so narrow that rounding errors are comparable.
std::optional<Steps> stepsOf(const Axis& axis);

/// @return the kernels that this processor can run, the best first.
std::vector<Kernels> runnableKernels();

/// @return the best kernels for this processor; null if there are none, or for too many cells.
const Kernels* bestKernels(std::size_t cells);

}  // namespace velmorak::filling
