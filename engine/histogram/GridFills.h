#pragma once

#include <velmorak/HistogramGrid.h>

#include <cmath>
#include <limits>
#include <stdexcept>

/// Shared by histograms and profiles of several axes. Sources that include it are compiled without contraction of
/// products and sums, so that the bits do not depend on the processor.
namespace velmorak {

template <std::size_t dimensions>
bool hasNan(const std::array<double, dimensions>& point) {
    bool has = false;
    for (const double x : point) {
        has = has || std::isnan(x);
    }
    return has;
}

template <std::size_t dimensions>
std::size_t cellOf(const Grid<dimensions>& grid, const std::array<double, dimensions>& point) {
    typename Grid<dimensions>::Cells cells{};
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        cells[direction] = grid.axis(direction).cell(point[direction]);
    }
    return grid.cell(cells);
}

/// An infinite coordinate does not enter wx and wxx of its axis.
template <typename Sums, std::size_t dimensions>
void addEntry(Sums& cell, const std::array<double, dimensions>& point, double weight) {
    ++cell.entries;
    cell.w += weight;
    cell.ww += weight * weight;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        if (std::isinf(point[direction])) {
            continue;
        }
        const double weighted = weight * point[direction];
        cell.wx[direction] += weighted;
        cell.wxx[direction] += weighted * point[direction];
    }
}

/// Adds the sums that addEntry fills.
template <typename Sums>
void addEntries(Sums& cell, const Sums& other) {
    cell.entries += other.entries;
    cell.w += other.w;
    cell.ww += other.ww;
    for (std::size_t direction = 0; direction < cell.wx.size(); ++direction) {
        cell.wx[direction] += other.wx[direction];
        cell.wxx[direction] += other.wxx[direction];
    }
}

/// Adds cells to as many others. Cells that are zero on both sides are not written, so that they take no memory.
template <typename Sums>
void addAll(CellVector<Sums>& cells, const CellVector<Sums>& others) {
    for (std::size_t cell = 0; cell < cells.size(); ++cell) {
        if (!isZero(others[cell]) || !isZero(cells[cell])) {
            cells[cell].add(others[cell]);
        }
    }
}

/// Adds the cells of an object with the same axes.
/// @param what noun for the message, such as "histograms".
/// @throws std::invalid_argument if the axes differ.
template <std::size_t dimensions, typename Sums>
void addCells(const Grid<dimensions>& grid, CellVector<Sums>& cells, const Grid<dimensions>& otherGrid,
              const CellVector<Sums>& others, const char* what) {
    if (!(grid == otherGrid)) {
        throw std::invalid_argument(what);
    }
    addAll(cells, others);
}

/// @return the population standard deviation from sums; NaN without weight, 0 if rounding or negative weights leave
///         no positive variance.
inline double spreadOf(double w, double wx, double wxx) {
    if (w == 0.0) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double mean = wx / w;
    const double variance = wxx / w - mean * mean;
    return variance < 0.0 ? 0.0 : std::sqrt(variance);
}

}  // namespace velmorak
