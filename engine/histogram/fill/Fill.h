#pragma once

#include "histogram/fill/Kernels.h"

#include <velmorak/Histogram1D.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace velmorak::filling {

/// Entries that are filled block by block have their cells looked up before any of the block is filled, so that the one
/// does not wait for the other.
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

/// The cells of a histogram as the kernels take them.
template <typename Sums>
std::byte* bytesOf(CellVector<Sums>& cells) {
    static_assert(sizeof(Sums) == cellBytes && offsetof(Sums, entries) == 0 && offsetof(Sums, w) == 8 &&
                  offsetof(Sums, ww) == 16 && offsetof(Sums, wx) == 24);
    return reinterpret_cast<std::byte*>(cells.data());
}

/// @return nothing where the axis has no equal bins, or where rounding errors would be of their size.
std::optional<Steps> stepsOf(const Axis& axis);

/// @return those that the processor of this machine can run, the best first.
std::vector<Kernels> runnableKernels();

/// @return those that suit the processor of this machine; null where it has none, or for too many cells.
const Kernels* bestKernels(std::size_t cells);

}  // namespace velmorak::filling
