#pragma once

#include "histogram/Fills.h"
#include "histogram/fill/Fill.h"

#include <velmorak/Grid.h>

#include <array>
#include <optional>

namespace velmorak::filling {

template <std::size_t axes>
using BlockCells = std::array<std::array<std::uint32_t, blockEntries>, axes>;

/// The vectorised kernels, if there are any for these dimensions and this processor.
template <std::size_t axes, std::size_t quantities>
class WideFiller {
public:
    WideFiller(const Grid<axes>& grid, CellVector<CellSums<quantities>>& sums) {
        if constexpr (quantities <= 2) {
            cells = bytesOf(sums);
            kernels = !cells ? nullptr : bestKernels(sums.size());
            stride = grid.axis(0).bins() + 2;
            for (std::size_t direction = 0; direction < axes; ++direction) {
                const std::optional<Steps> steps = stepsOf(grid.axis(direction));
                hasSteps = hasSteps && steps;
                alongAxes[direction] = steps.value_or(Steps());
            }
            slices = axes == 1 && quantities == 1 && !hasSteps ? slicesOf(grid.axis(0)) : nullptr;
        }
    }

    /// @return the number of points filled.
    std::size_t fill(const Fills<quantities>& fills) const {
        if (!kernels || (!hasSteps && !slices)) {
            return 0;
        }
        if (slices) {
            return kernels->fillBySlice1D(*slices, cells, entries(fills));
        }
        if constexpr (quantities == 1) {
            return kernels->fill1D(alongAxes[0], cells, entries(fills));
        } else if constexpr (axes == 1) {
            return kernels->fillProfile(alongAxes[0], cells, entries(fills));
        } else {
            return kernels->fill2D(alongAxes, stride, cells, entries(fills));
        }
    }
    /// As fill, with known cells from the given position on.
    std::size_t fillListed(const Fills<quantities>& fills, const BlockCells<axes>& block, std::size_t position) const {
        if (!kernels) {
            return 0;
        }
        const Entries rest = entries(fills.from(position));
        Cells known{.x = block[0].data() + position, .y = nullptr};
        if constexpr (quantities == 1) {
            return kernels->fillFromIndices1D(known, cells, rest);
        } else if constexpr (axes == 1) {
            return kernels->fillProfileFromIndices(known, cells, rest);
        } else {
            known.y = block[1].data() + position;
            return kernels->fillFromIndices2D(known, stride, cells, rest);
        }
    }

private:
    static Entries entries(const Fills<quantities>& fills) {
        return {.x = fills.columns.front(),
                .y = quantities == 1 ? nullptr : fills.columns.back(),
                .weights = fills.weights,
                .count = fills.count};
    }

    const Kernels* kernels = nullptr;
    std::byte* cells = nullptr;
    std::size_t stride = 0;
    bool hasSteps = true;
    const AxisSlices* slices = nullptr;  ///< Of an axis without steps.
    Steps alongAxes[axes];
};

/// There are no kernels for three quantities.
template <std::size_t axes>
class WideFiller<axes, 3> {
public:
    WideFiller(const Grid<axes>& /*grid*/, CellVector<CellSums<3>>& /*sums*/) {}
    std::size_t fill(const Fills<3>& /*fills*/) const { return 0; }
    std::size_t fillListed(const Fills<3>& /*fills*/, const BlockCells<axes>& /*block*/,
                           std::size_t /*position*/) const {
        return 0;
    }
};

}  // namespace velmorak::filling
