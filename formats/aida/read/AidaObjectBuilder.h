#pragma once

#include "aida/read/AidaParsedObject.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <velmorak/Histogram.h>

namespace velmorak::io {

/// @return axes of an object in the order x, y, z.
/// @throws Failure, or std::invalid_argument, if they cannot be built, or span more cells than allowed.
std::vector<Axis> axesFrom(const ParsedObject& parsed, std::size_t dimensions, std::vector<std::string>& warnings);

template <std::size_t dimensions>
Grid<dimensions> gridFrom(const ParsedObject& parsed, std::vector<std::string>& warnings) {
    std::vector<Axis> axes = axesFrom(parsed, dimensions, warnings);
    if constexpr (dimensions == 1) {
        return Grid<1>({std::move(axes[0])});
    } else if constexpr (dimensions == 2) {
        return Grid<2>({std::move(axes[0]), std::move(axes[1])});
    } else {
        return Grid<3>({std::move(axes[0]), std::move(axes[1]), std::move(axes[2])});
    }
}

/// Bins with their cells, in ascending order.
using PlacedBins = std::vector<std::pair<std::size_t, const ParsedBin*>>;

/// @return the bins within the grid; of several for one cell the last.
template <std::size_t dimensions>
PlacedBins placedBins(const ParsedObject& parsed, const Grid<dimensions>& grid, std::vector<std::string>& warnings);

/// Parses lists of numbers by cell from one or more items of the annotation: "cell entries number number; cell ...".
/// @return empty if there are none, or one is not a number.
std::map<std::size_t, std::vector<double>> annotatedSums(const ParsedObject& parsed, std::string_view key,
                                                         std::size_t numbers);

}  // namespace velmorak::io
