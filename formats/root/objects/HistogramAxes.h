#pragma once

#include "root/objects/Object.h"

#include <velmorak/Grid.h>

#include <array>
#include <cstddef>

namespace velmorak::root {

inline constexpr std::array<const char*, 3> axisNames{"fXaxis", "fYaxis", "fZaxis"};

/// @param maxCells number of cells that the object has.
/// @throws Failure if the axis is missing or not valid, or has more bins than that.
Axis axisFrom(const Object& object, const char* name, std::size_t maxCells);

/// @throws Failure also if the axes do not make that many cells.
template <std::size_t axes>
Grid<axes> gridFrom(const Object& object, std::size_t cells);

/// The centre of a bin; for under- and overflow, the edge of the axis.
double centerOf(const Axis& axis, std::size_t cell);

template <std::size_t axes>
std::array<double, axes> centerOf(const Grid<axes>& grid, std::size_t cell) {
    const auto alongAxes = grid.alongAxes(cell);
    std::array<double, axes> center{};
    for (std::size_t direction = 0; direction < axes; ++direction) {
        center[direction] = centerOf(grid.axis(direction), alongAxes[direction]);
    }
    return center;
}

}  // namespace velmorak::root
