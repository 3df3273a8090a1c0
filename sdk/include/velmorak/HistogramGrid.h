#pragma once

#include <velmorak/CellVector.h>
#include <velmorak/Histogram1D.h>

#include <array>

namespace velmorak {

/// The axes of a multidimensional histogram and the numbering of its cells.
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
    void setAxisTitle(std::size_t direction, const std::string& title) { axes[direction].title = title; }

    bool operator==(const Grid&) const = default;

private:
    std::array<Axis, dimensions> axes;
};

/// Sums over the fills of one cell: the weights w and, for each axis, the coordinates x. Aligned in two dimensions so
/// that a fill touches a single cache line.
template <std::size_t dimensions>
struct alignas(dimensions == 2 ? 64 : alignof(double)) GridSums {
    std::int64_t entries = 0;
    double w = 0.0;
    double ww = 0.0;
    std::array<double, dimensions> wx{};
    std::array<double, dimensions> wxx{};

    void add(const GridSums& other);
    bool operator==(const GridSums&) const = default;
};

/// Weighted counts of two or three quantities in bins.
/// Unit:    edges in the units of the filled columns.
/// Shape:   cells() in the numbering of the grid, each underflow and overflow cell separately; fills with a NaN are
///          counted in nanEntries().
/// Threads: one filler at a time; fill one histogram per chunk, then merge them in chunk order.
template <std::size_t dimensions>
class HistogramGrid : public DataObject {
public:
    using Sums = GridSums<dimensions>;
    using Point = std::array<double, dimensions>;

    explicit HistogramGrid(Grid<dimensions> cellGrid);
    /// For a reader of a file: takes the stored sums.
    /// @throws std::invalid_argument if there is not one entry for each cell.
    HistogramGrid(Grid<dimensions> cellGrid, CellVector<Sums> cells, std::int64_t nanEntries);

    ValueType type() const override { return ValueType::Histogram; }

    const Grid<dimensions>& grid() const { return shape; }
    const CellVector<Sums>& cells() const { return sums; }
    std::int64_t nanEntries() const { return nans; }
    void setAxisTitle(std::size_t direction, const std::string& title) { shape.setAxisTitle(direction, title); }

    /// As Histogram1D::fill: an infinite coordinate does not enter wx and wxx of its axis.
    void fill(const Point& point, double weight = 1.0);
    /// Fills count points in order, given as one array per axis, with the same bits as single fills. weights may be
    /// null: each weight is then 1.
    void fill(const std::array<const double*, dimensions>& coordinates, const double* weights, std::size_t count);
    /// @throws std::invalid_argument if the axes differ.
    void merge(const HistogramGrid& other);

    double error(std::size_t cell) const;
    /// The sums over all cells that are inside on every axis.
    Sums inRange() const;
    /// Weighted mean and population standard deviation of the in-range fills along one axis; NaN if there are none.
    double mean(std::size_t direction) const;
    double rms(std::size_t direction) const;

    /// Serialises the whole object; fromBytes reads it on machines of the same byte order.
    std::string toBytes() const;
    /// Writes the same bytes without the checksum at the end.
    void write(ByteWriter& writer) const;
    /// @throws std::invalid_argument if the bytes are damaged.
    static HistogramGrid fromBytes(const std::string& bytes);

private:
    Grid<dimensions> shape;
    CellVector<Sums> sums;
    std::int64_t nans = 0;
};

using Histogram2D = HistogramGrid<2>;
using Histogram3D = HistogramGrid<3>;

extern template class Grid<1>;
extern template class Grid<2>;
extern template class Grid<3>;
extern template struct GridSums<2>;
extern template struct GridSums<3>;
extern template class HistogramGrid<2>;
extern template class HistogramGrid<3>;

}  // namespace velmorak
