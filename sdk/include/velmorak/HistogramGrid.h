#pragma once

#include <velmorak/CellVector.h>
#include <velmorak/Histogram1D.h>

#include <array>

namespace velmorak {

/// Axes that stand at right angles, and the numbering of the cells between them.
/// Shape: (bins + 2) cells along each axis, as Axis::cell counts them: 0 underflow, 1 the first bin, bins + 1 overflow.
///        The cells of the first axis lie next to each other.
template <std::size_t dimensions>
class Grid {
public:
    /// More cells fit no memory.
    static constexpr std::size_t maxCells = std::size_t{1} << 28U;
    using Cells = std::array<std::size_t, dimensions>;

    /// @throws std::invalid_argument if there would be more than maxCells.
    explicit Grid(std::array<Axis, dimensions> axesInOrder);

    const Axis& axis(std::size_t direction) const { return axes[direction]; }
    std::size_t cellCount() const;
    std::size_t cell(const Cells& alongAxes) const;
    Cells alongAxes(std::size_t cell) const;
    /// The cell is underflow or overflow of no axis.
    bool isInside(std::size_t cell) const;
    void setAxisTitle(std::size_t direction, const std::string& title) { axes[direction].title = title; }

    bool operator==(const Grid&) const = default;

private:
    std::array<Axis, dimensions> axes;
};

/// What a cell knows of the fills that went into it: sums of the weights w, and of the coordinates along each axis. In
/// two dimensions each has a line of the processor's cache for itself, so that a fill touches one.
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
/// Shape:   cells() as the grid numbers them; a fill with a NaN is counted apart. Every outside cell is its own.
/// Threads: one filler at a time; give each chunk its own, then merge in chunk order.
template <std::size_t dimensions>
class HistogramGrid : public DataObject {
public:
    using Sums = GridSums<dimensions>;
    using Point = std::array<double, dimensions>;

    explicit HistogramGrid(Grid<dimensions> cellGrid);
    /// What a file knows of a histogram.
    /// @throws std::invalid_argument if there is not one entry for each cell.
    HistogramGrid(Grid<dimensions> cellGrid, CellVector<Sums> cells, std::int64_t nanEntries);

    ValueType type() const override { return ValueType::Histogram; }

    const Grid<dimensions>& grid() const { return shape; }
    const CellVector<Sums>& cells() const { return sums; }
    std::int64_t nanEntries() const { return nans; }
    void setAxisTitle(std::size_t direction, const std::string& title) { shape.setAxisTitle(direction, title); }

    /// As Histogram1D::fill: an infinite coordinate leaves wx and wxx of its direction alone.
    void fill(const Point& point, double weight = 1.0);
    /// Fills count points in order, one array for each direction; weights is null for a weight of 1 each. The same bits
    /// as one after the other.
    void fill(const std::array<const double*, dimensions>& coordinates, const double* weights, std::size_t count);
    /// @throws std::invalid_argument if the axes differ.
    void merge(const HistogramGrid& other);

    double error(std::size_t cell) const;
    /// All cells together that are inside on every axis.
    Sums inRange() const;
    /// Of the in-range fills along one axis; NaN without fills. The rms is that of the population.
    double mean(std::size_t direction) const;
    double rms(std::size_t direction) const;

    /// Everything as bytes that fromBytes reads on any machine of the same kind.
    std::string toBytes() const;
    /// Writes these bytes without the checksum at their end.
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
