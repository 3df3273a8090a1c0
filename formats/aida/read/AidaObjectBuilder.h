#pragma once

#include "aida/read/AidaParsedObject.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <velmorak/HistogramGrid.h>

namespace velmorak::io {

/// Axes of an object in the order x, y, z.
/// @throws Failure, or std::invalid_argument, when they cannot be made, or span more cells than are allowed.
std::vector<Axis> axesFrom(const RawObject& raw, std::size_t dimensions, std::vector<std::string>& warnings);

template <std::size_t dimensions>
Grid<dimensions> gridFrom(const RawObject& raw, std::vector<std::string>& warnings) {
    std::vector<Axis> axes = axesFrom(raw, dimensions, warnings);
    if constexpr (dimensions == 1) {
        return Grid<1>({std::move(axes[0])});
    } else if constexpr (dimensions == 2) {
        return Grid<2>({std::move(axes[0]), std::move(axes[1])});
    } else {
        return Grid<3>({std::move(axes[0]), std::move(axes[1]), std::move(axes[2])});
    }
}

/// Bins with their cells, which ascend.
using PlacedBins = std::vector<std::pair<std::size_t, const RawBin*>>;

/// Bins that lie on the grid; of several for one cell the last.
template <std::size_t dimensions>
PlacedBins placedBins(const RawObject& raw, const Grid<dimensions>& grid, std::vector<std::string>& warnings);

/// Lists of numbers by cell, as one item of the annotation or several give them: "cell entries number number; cell
/// ...".
/// @return empty where there are none, or one is no number.
std::map<std::size_t, std::vector<double>> annotatedSums(const RawObject& raw, std::string_view key,
                                                         std::size_t numbers);

}  // namespace velmorak::io
