#pragma once

#include "histogram/CellArithmetic.h"
#include "histogram/Fills.h"
#include "histogram/WideFiller.h"

#include <velmorak/Grid.h>

#include <algorithm>
#include <array>
#include <cmath>

/// Fills many points into the cells of a grid. Sources that include it are compiled without contraction of products and
/// sums.
namespace velmorak::filling {

/// Fills one point; an infinite coordinate counts as 0.
template <std::size_t axes, std::size_t quantities>
void addPoint(CellSums<quantities>& cell, std::array<double, quantities> point, double weight) {
    for (std::size_t direction = 0; direction < axes; ++direction) {
        point[direction] = std::isinf(point[direction]) ? 0.0 : point[direction];
    }
    fillCell(cell, point, weight);
}

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
