#pragma once

#include "histogram/fill/Kernels.h"

#include <velmorak/Axis.h>
#include <velmorak/CellSums.h>
#include <velmorak/CellVector.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace velmorak {

/// @return null for bins of equal width, and where a slice would hold several edges; shared by the axis and its copies.
const AxisSlices* slicesOf(const Axis& axis);

}  // namespace velmorak

namespace velmorak::filling {

/// Entries per block of the scalar path, which looks up all cells of a block before it fills them, so that the lookups
/// overlap.
inline constexpr std::size_t blockEntries = 1024;

/// @return the cells of a histogram or profile in the form that kernels take; null if they are sparse.
template <typename Sums>
std::byte* bytesOf(CellVector<Sums>& cells) {
    constexpr bool isLine = sizeof(Sums::first) == sizeof(double);
    static_assert(sizeof(Sums) == (isLine ? lineCellBytes : planeCellBytes));
    static_assert(offsetof(Sums, w) == 0 && offsetof(Sums, ww) == 8 && offsetof(Sums, first) == 16 &&
                  offsetof(Sums, second) == (isLine ? 24 : 32));
    static_assert(offsetof(Sums, entries) == (isLine ? lineEntriesAt : planeEntriesAt) &&
                  offsetof(Sums, pivot) == (isLine ? linePivotAt : planePivotAt));
    return reinterpret_cast<std::byte*>(cells.denseData());
}

/// @return no value for bins of different widths, or so narrow that rounding errors are comparable.
std::optional<Steps> stepsOf(const Axis& axis);

/// @return the kernels that this processor can run, the best first.
std::vector<Kernels> runnableKernels();

/// @return the best kernels for this processor; null if there are none, or for too many cells.
const Kernels* bestKernels(std::size_t cells);

}  // namespace velmorak::filling
