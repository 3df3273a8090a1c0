#include <velmorak/Grid.h>

#include <stdexcept>

namespace velmorak {

template <std::size_t dimensions>
Grid<dimensions>::Grid(std::array<Axis, dimensions> axesInOrder) : axes(std::move(axesInOrder)) {
    std::size_t count = 1;
    for (const Axis& axis : axes) {
        if (axis.bins() + 2 > maxCells / count) {
            throw std::invalid_argument("the axes span too many bins");
        }
        count *= axis.bins() + 2;
    }
}

template <std::size_t dimensions>
std::size_t Grid<dimensions>::cellCount() const {
    std::size_t count = 1;
    for (const Axis& axis : axes) {
        count *= axis.bins() + 2;
    }
    return count;
}

template <std::size_t dimensions>
std::size_t Grid<dimensions>::cell(const Cells& alongAxes) const {
    std::size_t position = 0;
    for (std::size_t direction = dimensions; direction-- > 0;) {
        position = position * (axes[direction].bins() + 2) + alongAxes[direction];
    }
    return position;
}

template <std::size_t dimensions>
typename Grid<dimensions>::Cells Grid<dimensions>::alongAxes(std::size_t cell) const {
    Cells cells{};
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        const std::size_t length = axes[direction].bins() + 2;
        cells[direction] = cell % length;
        cell /= length;
    }
    return cells;
}

template <std::size_t dimensions>
bool Grid<dimensions>::isInside(std::size_t cell) const {
    const Cells cells = alongAxes(cell);
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        if (cells[direction] == 0 || cells[direction] > axes[direction].bins()) {
            return false;
        }
    }
    return true;
}

template <std::size_t dimensions>
double Grid<dimensions>::sizeOf(std::size_t cell) const {
    const Cells cells = alongAxes(cell);
    double size = 1.0;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        size *= axes[direction].width(cells[direction] - 1);
    }
    return size;
}

template <std::size_t dimensions>
std::array<double, dimensions> Grid<dimensions>::centerOf(std::size_t cell) const {
    std::array<double, dimensions> center{};
    if (!isInside(cell)) {
        return center;
    }
    const Cells cells = alongAxes(cell);
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        center[direction] = axes[direction].center(cells[direction] - 1);
    }
    return center;
}

template class Grid<1>;
template class Grid<2>;
template class Grid<3>;

}  // namespace velmorak
