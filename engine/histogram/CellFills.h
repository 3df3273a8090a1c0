#pragma once

#include "histogram/CellArithmetic.h"
#include "histogram/fill/Fill.h"

#include <velmorak/Grid.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

/// Fills many points into the cells of a grid. Sources that include it are compiled without contraction of products and
/// sums.
namespace velmorak::filling {

/// Points to fill, in order, as one array per quantity, the coordinates first; weights is null if each is 1.
template <std::size_t quantities>
struct Fills {
    std::array<const double*, quantities> columns{};
    const double* weights = nullptr;
    std::size_t count = 0;

    Fills from(std::size_t first) const {
        Fills rest = *this;
        for (const double*& column : rest.columns) {
            column += first;
        }
        rest.weights = !weights ? nullptr : weights + first;
        rest.count -= first;
        return rest;
    }
    double weight(std::size_t position) const { return !weights ? 1.0 : weights[position]; }
    std::array<double, quantities> point(std::size_t position) const {
        std::array<double, quantities> point{};
        for (std::size_t i = 0; i < quantities; ++i) {
            point[i] = columns[i][position];
        }
        return point;
    }
};

template <std::size_t quantities>
bool hasNan(const std::array<double, quantities>& point) {
    bool has = false;
    for (const double x : point) {
        has = has || std::isnan(x);
    }
    return has;
}

/// Fills one point; an infinite coordinate counts as 0.
template <std::size_t axes, std::size_t quantities>
void addPoint(CellSums<quantities>& cell, std::array<double, quantities> point, double weight) {
    for (std::size_t direction = 0; direction < axes; ++direction) {
        point[direction] = std::isinf(point[direction]) ? 0.0 : point[direction];
    }
    fillCell(cell, point, weight);
}

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
        }
    }

    /// @return the number of points filled.
    std::size_t fill(const Fills<quantities>& fills) const {
        if (!kernels || !hasSteps) {
            return 0;
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

inline constexpr std::size_t prefetchDistance = 24;  ///< Entries.
/// Entries filled one by one before the kernels are tried again.
inline constexpr std::size_t stepOver = 4;

template <std::size_t axes, std::size_t quantities>
class GridFiller {
public:
    GridFiller(const Grid<axes>& grid, CellVector<CellSums<quantities>>& sums)
        : grid(grid), sums(sums), wide(grid, sums) {}

    /// @return the number of points skipped because of a NaN.
    std::int64_t fill(Fills<quantities> rest) {
        nans = 0;
        while (rest.count > 0) {
            rest = rest.from(wide.fill(rest));
            Fills<quantities> block = rest;
            block.count = std::min(blockEntries, rest.count);
            findCells(block);
            sums.isSparse() ? fillSparseBlock(block) : fillBlock(block);
            rest = rest.from(block.count);
        }
        return nans;
    }

private:
    void findCells(const Fills<quantities>& block) {
        for (std::size_t direction = 0; direction < axes; ++direction) {
            grid.axis(direction).cells(block.columns[direction], block.count, cells[direction].data());
        }
    }
    std::size_t cellOf(std::size_t position) const {
        typename Grid<axes>::Cells alongAxes{};
        for (std::size_t direction = 0; direction < axes; ++direction) {
            alongAxes[direction] = cells[direction][position];
        }
        return grid.cell(alongAxes);
    }
    void fillOne(const Fills<quantities>& block, std::size_t position) {
        const std::array<double, quantities> point = block.point(position);
        if (std::isnan(block.weight(position)) || hasNan(point)) {
            ++nans;
        } else {
            addPoint<axes>(sums[cellOf(position)], point, block.weight(position));
        }
    }
    void fillBlock(const Fills<quantities>& block) {
        for (std::size_t i = 0; i < block.count;) {
            i += wide.fillListed(block, cells, i);
            for (const std::size_t end = std::min(i + stepOver, block.count); i < end; ++i) {
                fillOne(block, i);
            }
        }
    }
    /// Sparse cells do not stay in a processor's cache. They are prefetched, so that many are fetched at the same time.
    void fillSparseBlock(const Fills<quantities>& block) {
        for (std::size_t i = 0; i < block.count; ++i) {
            sums.prefetchIndex(cellOf(i));
        }
        for (std::size_t i = 0; i < block.count; ++i) {
            sums.prefetchCell(cellOf(std::min(i + prefetchDistance, block.count - 1)));
            fillOne(block, i);
        }
    }

    const Grid<axes>& grid;
    CellVector<CellSums<quantities>>& sums;
    WideFiller<axes, quantities> wide;
    BlockCells<axes> cells;
    std::int64_t nans = 0;
};

}  // namespace velmorak::filling
