#pragma once

#include <velmorak/FilledGrid.h>

#include <memory>
#include <string>

namespace velmorak {

/// Weighted counts of one to three quantities in bins.
/// Unit:    edges in the units of the filled columns.
/// Shape:   see FilledGrid.
/// Threads: one filler at a time; fill one histogram per chunk, then merge them in chunk order.
template <std::size_t axes>
class Histogram : public FilledGrid<axes, axes> {
    using Base = FilledGrid<axes, axes>;

public:
    using typename Base::Point;
    using typename Base::Sums;

    explicit Histogram(Grid<axes> cellGrid) : Base(std::move(cellGrid)) {}
    /// For a reader of a file: takes the stored sums.
    /// @throws std::invalid_argument if there is not one entry for each cell.
    Histogram(Grid<axes> cellGrid, CellVector<Sums> cells, std::int64_t nanEntries)
        : Base(std::move(cellGrid), std::move(cells), nanEntries) {}

    ValueType type() const override { return ValueType::Histogram; }

    /// An infinite coordinate counts as underflow or overflow, and as 0 in the sums of its axis. An infinite weight is
    /// added like any other.
    void fill(const Point& point, double weight = 1.0) { Base::fillPoint(point, weight); }
    /// Fills count points in order, given as one array per axis, with the same bits as single fills. weights may be
    /// null: each weight is then 1.
    void fill(const std::array<const double*, axes>& coordinates, const double* weights, std::size_t count) {
        Base::fillColumns(coordinates, weights, count);
    }
    /// @throws std::invalid_argument if the axes differ.
    void merge(const Histogram& other) { Base::add(other); }

    /// Weighted mean and population standard deviation of the in-range fills along one axis; NaN if there are none.
    double mean(std::size_t direction = 0) const { return Base::inRange().mean(direction); }
    double rms(std::size_t direction = 0) const { return Base::inRange().rms(direction); }
    /// Linear correlation coefficient of the in-range fills along two axes; NaN where one of them has no spread.
    double correlation(std::size_t one = 0, std::size_t other = 1) const requires(axes > 1) {
        return Base::inRange().correlation(one, other);
    }

    /// Reverses toBytes on machines of the same byte order.
    /// @throws std::invalid_argument if the bytes are damaged.
    static Histogram fromBytes(const std::string& bytes) {
        Histogram histogram{typename Base::Bytes{bytes}};
        return histogram;
    }

    // With one axis, by the number of the bin.

    explicit Histogram(Axis axis) requires(axes == 1) : Base(Grid<1>({std::move(axis)})) {}
    Histogram(Axis axis, CellVector<Sums> cells, std::int64_t nanEntries) requires(axes == 1)
        : Base(Grid<1>({std::move(axis)}), std::move(cells), nanEntries) {}

    const Axis& axis() const requires(axes == 1) { return this->grid().axis(0); }
    using Base::setAxisTitle;
    void setAxisTitle(std::string axisTitle) requires(axes == 1) { Base::setAxisTitle(0, std::move(axisTitle)); }
    std::size_t bins() const requires(axes == 1) { return axis().bins(); }
    const Sums& bin(std::size_t position) const requires(axes == 1) { return this->cells()[position + 1]; }
    const Sums& underflow() const requires(axes == 1) { return this->cells().front(); }
    const Sums& overflow() const requires(axes == 1) { return this->cells().back(); }
    double height(std::size_t position) const requires(axes == 1) { return bin(position).w; }
    /// Square root of the sum of squared weights.
    double error(std::size_t position) const requires(axes == 1) { return bin(position).error(); }
    void fill(double value, double weight = 1.0) requires(axes == 1) { Base::fillPoint({value}, weight); }
    void fill(const double* values, const double* weights, std::size_t count) requires(axes == 1) {
        Base::fillColumns({values}, weights, count);
    }

private:
    explicit Histogram(const typename Base::Bytes& bytes) : Base(bytes) {}
};

using Histogram1D = Histogram<1>;
using Histogram2D = Histogram<2>;
using Histogram3D = Histogram<3>;
using BinSums = CellSums<1>;
using HistogramPtr = std::shared_ptr<const Histogram1D>;

}  // namespace velmorak
