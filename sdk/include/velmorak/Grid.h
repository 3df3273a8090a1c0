#pragma once

#include <velmorak/Axis.h>

#include <array>

namespace velmorak {

/// The axes of a histogram or profile and the numbering of its cells.
/// Shape: bins + 2 cells along each axis, numbered as by Axis::cell: 0 underflow, 1 the first bin, bins + 1 overflow.
///        Neighbours along the first axis are contiguous.
template <std::size_t dimensions>
class Grid {
public:
    /// Limits the memory of one histogram.
    static constexpr std::size_t maxCells = std::size_t{1} << 28U;
    using Cells = std::array<std::size_t, dimensions>;

    /// @throws std::invalid_argument if the grid would have more than maxCells cells.
    explicit Grid(std::array<Axis, dimensions> axesInOrder);

    const Axis& axis(std::size_t direction) const { return axes[direction]; }
    std::size_t cellCount() const;
    std::size_t cell(const Cells& alongAxes) const;
    Cells alongAxes(std::size_t cell) const;
    /// The cell is neither underflow nor overflow on any axis.
    bool isInside(std::size_t cell) const;
    /// Width of the bin, or the product of its widths along all axes.
    /// @param cell inside.
    double sizeOf(std::size_t cell) const;
    /// Centre of the bin along each axis; 0 for a cell that is not inside.
    std::array<double, dimensions> centerOf(std::size_t cell) const;
    void setAxisTitle(std::size_t direction, const std::string& title) { axes[direction].title = title; }

    bool operator==(const Grid&) const = default;

private:
    std::array<Axis, dimensions> axes;
};

extern template class Grid<1>;
extern template class Grid<2>;
extern template class Grid<3>;

}  // namespace velmorak
