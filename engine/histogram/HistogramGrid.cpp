#include <velmorak/HistogramGrid.h>

#include "histogram/GridBytes.h"
#include "histogram/GridFills.h"
#include "histogram/LargeCells.h"
#include "histogram/fill/Fill.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace velmorak {

namespace {

// The lowest byte is the number of dimensions.
constexpr std::uint64_t mark = 0x31'44'67'48'6b'6c'65'00;

template <std::size_t dimensions>
constexpr std::size_t bytesOfCell = (3 + 2 * dimensions) * sizeof(double);

/// Points to fill, in order; weights is null if each is 1.
template <std::size_t dimensions>
struct Fills {
    std::array<const double*, dimensions> coordinates{};
    const double* weights = nullptr;
    std::size_t count = 0;

    Fills from(std::size_t first) const {
        Fills rest = *this;
        for (const double*& coordinate : rest.coordinates) {
            coordinate += first;
        }
        rest.weights = !weights ? nullptr : weights + first;
        rest.count -= first;
        return rest;
    }
    double weight(std::size_t position) const { return !weights ? 1.0 : weights[position]; }
};

template <std::size_t dimensions>
using BlockCells = std::array<std::array<std::uint32_t, filling::blockEntries>, dimensions>;

/// The vectorised kernels, if there are any for these dimensions and this processor.
class PlaneKernels {
public:
    template <std::size_t dimensions>
    PlaneKernels(const Grid<dimensions>& grid, std::size_t cells) {
        if constexpr (dimensions == 2) {
            kernels = filling::bestKernels(cells);
            stride = grid.axis(0).bins() + 2;
            const auto alongX = filling::stepsOf(grid.axis(0));
            const auto alongY = filling::stepsOf(grid.axis(1));
            hasSteps = alongX && alongY;
            if (hasSteps) {
                axes[0] = *alongX;
                axes[1] = *alongY;
            }
        }
    }

    /// @return the number of points filled.
    template <std::size_t dimensions>
    std::size_t fill(CellVector<GridSums<dimensions>>& sums, const Fills<dimensions>& fills) const {
        if constexpr (dimensions == 2) {
            if (kernels && hasSteps) {
                return kernels->fill2D(axes, stride, filling::bytesOf(sums), entries(fills));
            }
        }
        return 0;
    }

    /// As fill, with known cells from the given position on.
    template <std::size_t dimensions>
    std::size_t fillListed(CellVector<GridSums<dimensions>>& sums, const Fills<dimensions>& fills,
                           const BlockCells<dimensions>& cells, std::size_t position) const {
        if constexpr (dimensions == 2) {
            if (kernels) {
                return kernels->fillFromIndices2D({.x = cells[0].data() + position, .y = cells[1].data() + position},
                                                  stride, filling::bytesOf(sums), entries(fills.from(position)));
            }
        }
        return 0;
    }

private:
    static filling::Entries entries(const Fills<2>& fills);

    const filling::Kernels* kernels = nullptr;
    filling::Steps axes[2];
    bool hasSteps = false;
    std::size_t stride = 0;
};

filling::Entries PlaneKernels::entries(const Fills<2>& fills) {
    return {.x = fills.coordinates[0], .y = fills.coordinates[1], .weights = fills.weights, .count = fills.count};
}

/// Adds one point to its cell. @return whether it was filled; false if one of its numbers is NaN.
template <std::size_t dimensions>
bool addPoint(const Grid<dimensions>& grid, CellVector<GridSums<dimensions>>& sums, const Fills<dimensions>& fills,
              const BlockCells<dimensions>& cells, std::size_t position) {
    std::array<double, dimensions> point{};
    typename Grid<dimensions>::Cells alongAxes{};
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        point[direction] = fills.coordinates[direction][position];
        alongAxes[direction] = cells[direction][position];
    }
    if (std::isnan(fills.weight(position)) || hasNan(point)) {
        return false;
    }
    addEntry(sums[grid.cell(alongAxes)], point, fills.weight(position));
    return true;
}

template <std::size_t dimensions>
BlockCells<dimensions> cellsOf(const Grid<dimensions>& grid, const Fills<dimensions>& fills) {
    BlockCells<dimensions> cells;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        grid.axis(direction).cells(fills.coordinates[direction], fills.count, cells[direction].data());
    }
    return cells;
}

/// @return the number of entries skipped because of a NaN.
template <std::size_t dimensions>
std::int64_t fillBlock(const Grid<dimensions>& grid, CellVector<GridSums<dimensions>>& sums,
                       const Fills<dimensions>& fills, const PlaneKernels& wide) {
    const BlockCells<dimensions> cells = cellsOf(grid, fills);
    std::int64_t nans = 0;
    for (std::size_t i = 0; i < fills.count;) {
        i += wide.fillListed(sums, fills, cells, i);
        for (const std::size_t end = std::min(i + filling::group, fills.count); i < end; ++i) {
            nans += addPoint(grid, sums, fills, cells, i) ? 0 : 1;
        }
    }
    return nans;
}

/// Larger sums do not stay in a processor's cache, so nearly every scattered entry waits for memory.
constexpr std::size_t cachedBytes = std::size_t{32} << 20U;
constexpr std::size_t prefetchDistance = 24;  ///< Entries.

/// Like fillBlock, but prefetches the cells, so that many of them are fetched at the same time.
template <std::size_t dimensions>
std::int64_t fillUncachedBlock(const Grid<dimensions>& grid, CellVector<GridSums<dimensions>>& sums,
                               const Fills<dimensions>& fills) {
    const BlockCells<dimensions> cells = cellsOf(grid, fills);
    std::int64_t nans = 0;
    for (std::size_t i = 0; i < fills.count; ++i) {
        const std::size_t next = std::min(i + prefetchDistance, fills.count - 1);
        typename Grid<dimensions>::Cells alongAxes{};
        for (std::size_t direction = 0; direction < dimensions; ++direction) {
            alongAxes[direction] = cells[direction][next];
        }
        const auto* const ahead = reinterpret_cast<const char*>(&sums[grid.cell(alongAxes)]);
        __builtin_prefetch(ahead, 1);
        __builtin_prefetch(ahead + sizeof(GridSums<dimensions>) - 1, 1);
        nans += addPoint(grid, sums, fills, cells, i) ? 0 : 1;
    }
    return nans;
}

}  // namespace

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
void GridSums<dimensions>::add(const GridSums& other) {
    addEntries(*this, other);
}

template <std::size_t dimensions>
HistogramGrid<dimensions>::HistogramGrid(Grid<dimensions> cellGrid)
    : shape(std::move(cellGrid)), sums(emptyCells<Sums>(shape.cellCount())) {}

template <std::size_t dimensions>
HistogramGrid<dimensions>::HistogramGrid(Grid<dimensions> cellGrid, CellVector<Sums> cells, std::int64_t nanEntries)
    : shape(std::move(cellGrid)), sums(std::move(cells)), nans(nanEntries) {
    if (sums.size() != shape.cellCount()) {
        throw std::invalid_argument("a histogram needs the sums of each of its cells");
    }
}

template <std::size_t dimensions>
void HistogramGrid<dimensions>::fill(const Point& point, double weight) {
    if (std::isnan(weight) || hasNan(point)) {
        ++nans;
        return;
    }
    addEntry(sums[cellOf(shape, point)], point, weight);
}

template <std::size_t dimensions>
void HistogramGrid<dimensions>::fill(const std::array<const double*, dimensions>& coordinates, const double* weights,
                                     std::size_t count) {
    const PlaneKernels wide(shape, sums.size());
    const bool isCached = sums.size() * sizeof(Sums) <= cachedBytes;
    Fills<dimensions> rest{.coordinates = coordinates, .weights = weights, .count = count};
    while (rest.count > 0) {
        rest = isCached ? rest.from(wide.fill(sums, rest)) : rest;
        Fills<dimensions> block = rest;
        block.count = std::min(filling::blockEntries, rest.count);
        nans += isCached ? fillBlock(shape, sums, block, wide) : fillUncachedBlock(shape, sums, block);
        rest = rest.from(block.count);
    }
}

template <std::size_t dimensions>
void HistogramGrid<dimensions>::merge(const HistogramGrid& other) {
    addCells(shape, sums, other.shape, other.sums, "histograms with different axes cannot be added");
    nans += other.nans;
}

template <std::size_t dimensions>
double HistogramGrid<dimensions>::error(std::size_t cell) const {
    return std::sqrt(sums[cell].ww);
}

template <std::size_t dimensions>
GridSums<dimensions> HistogramGrid<dimensions>::inRange() const {
    Sums all;
    for (std::size_t cell = 0; cell < sums.size(); ++cell) {
        if (shape.isInside(cell)) {
            all.add(sums[cell]);
        }
    }
    return all;
}

template <std::size_t dimensions>
double HistogramGrid<dimensions>::mean(std::size_t direction) const {
    const Sums all = inRange();
    return all.w == 0.0 ? std::numeric_limits<double>::quiet_NaN() : all.wx[direction] / all.w;
}

template <std::size_t dimensions>
double HistogramGrid<dimensions>::rms(std::size_t direction) const {
    const Sums all = inRange();
    return spreadOf(all.w, all.wx[direction], all.wxx[direction]);
}

template <std::size_t dimensions>
void HistogramGrid<dimensions>::write(ByteWriter& writer) const {
    writer.number(mark + dimensions);
    writer.head(*this);
    writeGrid(writer, shape);
    writer.packed(sums, bytesOfCell<dimensions>);
    writer.number(nans);
}

template <std::size_t dimensions>
std::string HistogramGrid<dimensions>::toBytes() const {
    ByteWriter writer;
    write(writer);
    return writer.sealed();
}

template <std::size_t dimensions>
HistogramGrid<dimensions> HistogramGrid<dimensions>::fromBytes(const std::string& bytes) {
    ByteReader reader(bytes, mark + dimensions);
    const ObjectHead head = reader.head();
    auto grid = readGrid<dimensions>(reader);
    auto cells = reader.packed<CellVector<Sums>>(bytesOfCell<dimensions>);
    const auto nanEntries = reader.number<std::int64_t>();
    reader.mustBeAtEnd();
    HistogramGrid histogram(std::move(grid), std::move(cells), nanEntries);
    head.give(histogram);
    return histogram;
}

template class Grid<1>;
template class Grid<2>;
template class Grid<3>;
template struct GridSums<2>;
template struct GridSums<3>;
template class HistogramGrid<2>;
template class HistogramGrid<3>;

}  // namespace velmorak
