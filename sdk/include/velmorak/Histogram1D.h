#pragma once

#include <velmorak/CellVector.h>
#include <velmorak/Value.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

class ByteWriter;
class AxisTables;

/// Bins [edge i, edge i + 1) on one axis; a value equal to the last edge is overflow. Copies share what they look up.
class Axis {
public:
    /// Equal bins.
    /// @throws std::invalid_argument if bins is 0 or not (low < high, both finite), or where so many bins lie between
    ///         the two that neighbouring edges would be the same double.
    Axis(std::size_t bins, double low, double high);
    /// @throws std::invalid_argument if there are fewer than two edges, or they are not finite and ascending.
    explicit Axis(std::vector<double> edges);

    std::size_t bins() const { return count; }
    double low() const { return first; }
    double high() const { return last; }
    /// The bins are equal: the edges are, to the last bit, those that the first constructor makes.
    bool isRegular() const { return regular; }
    /// bins() + 1 values; the edges of equal bins are low + i * (high - low) / bins, the last one exactly high. Those
    /// of equal bins are stored from the first call on.
    const std::vector<double>& edges() const;
    /// edges()[position], without storing any.
    double edge(std::size_t position) const;
    double center(std::size_t bin) const { return 0.5 * (edge(bin) + edge(bin + 1)); }
    double width(std::size_t bin) const { return edge(bin + 1) - edge(bin); }
    /// @return 0 for underflow, 1 + bin inside, bins() + 1 for overflow. Not for NaN. Always agrees with edges().
    std::size_t cell(double x) const;

    /// The cells of many values at once, as cell gives them; where a value is NaN, any cell of the axis.
    void cells(const double* x, std::size_t values, std::uint32_t* target) const;

    std::string title;  ///< With its unit, for example "m(mu+ mu-) [GeV]".

    bool operator==(const Axis& other) const;

private:
    std::size_t count = 0;
    double first = 0.0;
    double last = 0.0;
    bool regular = true;
    std::shared_ptr<const AxisTables> tables;
};

/// What a bin knows of the fills that went into it. x is the filled coordinate, w its weight. Each has a line of the
/// processor's cache for itself, so that a fill touches one.
struct alignas(64) BinSums {
    std::int64_t entries = 0;
    double w = 0.0;
    double ww = 0.0;
    double wx = 0.0;
    double wxx = 0.0;

    void add(const BinSums& other);
    bool operator==(const BinSums&) const = default;
};

/// Weighted counts of one quantity in bins.
/// Unit:    edges in the unit of the filled column.
/// Shape:   cells() has bins() + 2 entries: [0] underflow, [bins() + 1] overflow; NaN is counted apart.
/// Threads: one filler at a time; give each chunk its own, then merge in chunk order.
class Histogram1D : public DataObject {
public:
    explicit Histogram1D(Axis axis);
    /// What a file knows of a histogram.
    /// @throws std::invalid_argument if cells does not have axis.bins() + 2 entries.
    Histogram1D(Axis axis, CellVector<BinSums> cells, std::int64_t nanEntries);

    ValueType type() const override { return ValueType::Histogram; }

    const Axis& axis() const { return x; }
    void setAxisTitle(std::string axisTitle) { x.title = std::move(axisTitle); }
    std::size_t bins() const { return x.bins(); }
    const CellVector<BinSums>& cells() const { return sums; }
    const BinSums& bin(std::size_t position) const { return sums[position + 1]; }
    const BinSums& underflow() const { return sums.front(); }
    const BinSums& overflow() const { return sums.back(); }
    /// Fills whose coordinate or weight was NaN; they are in no cell.
    std::int64_t nanEntries() const { return nans; }

    /// An infinite coordinate counts in underflow or overflow, and leaves that cell's wx and wxx alone. An infinite
    /// weight is added like any other.
    void fill(double value, double weight = 1.0);
    /// Fills count values in order; weights is null for a weight of 1 each.
    void fill(const double* values, const double* weights, std::size_t count);
    /// @throws std::invalid_argument if the axes differ.
    void merge(const Histogram1D& other);

    double height(std::size_t position) const { return bin(position).w; }
    /// Square root of the sum of squared weights.
    double error(std::size_t position) const;

    /// All in-range cells together.
    BinSums inRange() const;
    /// Weighted mean of the in-range fills, from the exact sums; NaN without fills.
    double mean() const;
    /// Population standard deviation of the in-range fills, from the exact sums; NaN without fills; 0 where rounding
    /// or negative weights leave no positive variance.
    double rms() const;

    /// Everything as bytes that fromBytes reads on any machine of the same kind; crosses a process border.
    std::string toBytes() const;
    /// Writes these bytes without the checksum at their end.
    void write(ByteWriter& writer) const;
    /// @throws std::invalid_argument if the bytes are damaged.
    static Histogram1D fromBytes(const std::string& bytes);

private:
    Axis x;
    CellVector<BinSums> sums;
    std::int64_t nans = 0;
};

using HistogramPtr = std::shared_ptr<const Histogram1D>;

}  // namespace velmorak
