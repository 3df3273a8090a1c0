#include "velmorak/HistogramGrid.h"

#include "GridBytes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace velmorak {

namespace {

// The lowest byte is the number of dimensions.
constexpr std::uint64_t mark = 0x31'44'67'48'6b'6c'65'00;

/// Points whose cells are looked up before any is filled, so that the one does not wait for the other.
constexpr std::size_t fillBlock = 1024;

template <std::size_t dimensions>
bool hasNan(const std::array<double, dimensions>& point) {
    bool has = false;
    for (const double x : point)
        has = has || std::isnan(x);
    return has;
}

template <std::size_t dimensions>
void count(GridSums<dimensions>& cell, const std::array<double, dimensions>& point, double weight) {
    ++cell.entries;
    cell.w += weight;
    cell.ww += weight * weight;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        if (std::isinf(point[direction]))
            continue;
        const double weighted = weight * point[direction];
        cell.wx[direction] += weighted;
        cell.wxx[direction] += weighted * point[direction];
    }
}

}  // namespace

template <std::size_t dimensions>
Grid<dimensions>::Grid(std::array<Axis, dimensions> axesInOrder) : axes(std::move(axesInOrder)) {
    std::size_t count = 1;
    for (const Axis& axis : axes) {
        if (axis.bins() + 2 > mostCells / count)
            throw std::invalid_argument("the axes span too many bins");
        count *= axis.bins() + 2;
    }
}

template <std::size_t dimensions>
std::size_t Grid<dimensions>::cellCount() const {
    std::size_t count = 1;
    for (const Axis& axis : axes)
        count *= axis.bins() + 2;
    return count;
}

template <std::size_t dimensions>
std::size_t Grid<dimensions>::cell(const Cells& alongAxes) const {
    std::size_t position = 0;
    for (std::size_t direction = dimensions; direction-- > 0;)
        position = position * (axes[direction].bins() + 2) + alongAxes[direction];
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
    for (std::size_t direction = 0; direction < dimensions; ++direction)
        if (cells[direction] == 0 || cells[direction] > axes[direction].bins())
            return false;
    return true;
}

template <std::size_t dimensions>
void GridSums<dimensions>::add(const GridSums& other) {
    entries += other.entries;
    w += other.w;
    ww += other.ww;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        wx[direction] += other.wx[direction];
        wxx[direction] += other.wxx[direction];
    }
}

template <std::size_t dimensions>
HistogramGrid<dimensions>::HistogramGrid(Grid<dimensions> cellGrid)
    : shape(std::move(cellGrid)), sums(shape.cellCount()) {}

template <std::size_t dimensions>
HistogramGrid<dimensions>::HistogramGrid(Grid<dimensions> cellGrid, std::vector<Sums> cells, std::int64_t nanEntries)
    : shape(std::move(cellGrid)), sums(std::move(cells)), nans(nanEntries) {
    if (sums.size() != shape.cellCount())
        throw std::invalid_argument("a histogram needs the sums of each of its cells");
}

template <std::size_t dimensions>
void HistogramGrid<dimensions>::fill(const Point& point, double weight) {
    if (std::isnan(weight) || hasNan(point)) {
        ++nans;
        return;
    }
    typename Grid<dimensions>::Cells cells{};
    for (std::size_t direction = 0; direction < dimensions; ++direction)
        cells[direction] = shape.axis(direction).cell(point[direction]);
    count(sums[shape.cell(cells)], point, weight);
}

template <std::size_t dimensions>
void HistogramGrid<dimensions>::fill(const std::array<const double*, dimensions>& coordinates, const double* weights,
                                     std::size_t length) {
    std::array<std::array<std::uint32_t, fillBlock>, dimensions> cells;
    std::array<std::size_t, dimensions> strides{};
    for (std::size_t direction = 0, stride = 1; direction < dimensions; ++direction) {
        strides[direction] = stride;
        stride *= shape.axis(direction).bins() + 2;
    }
    for (std::size_t begin = 0; begin < length; begin += fillBlock) {
        const std::size_t block = std::min(fillBlock, length - begin);
        for (std::size_t direction = 0; direction < dimensions; ++direction)
            shape.axis(direction).cells(coordinates[direction] + begin, block, cells[direction].data());
        for (std::size_t i = 0; i < block; ++i) {
            Point point{};
            std::size_t cell = 0;
            for (std::size_t direction = 0; direction < dimensions; ++direction) {
                point[direction] = coordinates[direction][begin + i];
                cell += cells[direction][i] * strides[direction];
            }
            const double weight = weights == nullptr ? 1.0 : weights[begin + i];
            if (std::isnan(weight) || hasNan(point))
                ++nans;
            else
                count(sums[cell], point, weight);
        }
    }
}

template <std::size_t dimensions>
void HistogramGrid<dimensions>::merge(const HistogramGrid& other) {
    if (!(shape == other.shape))
        throw std::invalid_argument("histograms with different axes cannot be added");
    for (std::size_t cell = 0; cell < sums.size(); ++cell)
        sums[cell].add(other.sums[cell]);
    nans += other.nans;
}

template <std::size_t dimensions>
double HistogramGrid<dimensions>::error(std::size_t cell) const {
    return std::sqrt(sums[cell].ww);
}

template <std::size_t dimensions>
GridSums<dimensions> HistogramGrid<dimensions>::inRange() const {
    Sums all;
    for (std::size_t cell = 0; cell < sums.size(); ++cell)
        if (shape.isInside(cell))
            all.add(sums[cell]);
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
    if (all.w == 0.0)
        return std::numeric_limits<double>::quiet_NaN();
    const double mean = all.wx[direction] / all.w;
    const double variance = all.wxx[direction] / all.w - mean * mean;
    return variance < 0.0 ? 0.0 : std::sqrt(variance);
}

template <std::size_t dimensions>
std::string HistogramGrid<dimensions>::toBytes() const {
    ByteWriter writer;
    writer.number(mark + dimensions);
    writer.head(*this);
    writeGrid(writer, shape);
    writer.list(sums);
    writer.number(nans);
    return writer.sealed();
}

template <std::size_t dimensions>
HistogramGrid<dimensions> HistogramGrid<dimensions>::fromBytes(const std::string& bytes) {
    ByteReader reader(bytes, mark + dimensions);
    const ObjectHead head = reader.head();
    auto grid = readGrid<dimensions>(reader);
    auto cells = reader.list<std::vector<Sums>>();
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
