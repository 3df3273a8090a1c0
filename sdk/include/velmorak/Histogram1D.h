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

/// Bins [edge i, edge i + 1) on one axis; a value equal to the last edge is overflow. Copies share their lookup tables.
class Axis {
public:
    /// Bins of equal width.
    /// @throws std::invalid_argument if bins is 0, unless low < high and both are finite, or if the bins are so narrow
    ///         that neighbouring edges round to the same double.
    Axis(std::size_t bins, double low, double high);
    /// @throws std::invalid_argument if there are fewer than two edges, or they are not finite and ascending.
    explicit Axis(std::vector<double> edges);

    std::size_t bins() const { return count; }
    double low() const { return first; }
    double high() const { return last; }
    /// The bins have equal width: the edges are, to the last bit, those of the first constructor.
    bool isRegular() const { return regular; }
    /// @return bins() + 1 values. For bins of equal width they are low + i * (high - low) / bins, the last one exactly
    ///         high, and are stored from the first call on.
    const std::vector<double>& edges() const;
    /// @return edges()[position], without storing the edges.
    double edge(std::size_t position) const;
    double center(std::size_t bin) const { return 0.5 * (edge(bin) + edge(bin + 1)); }
    double width(std::size_t bin) const { return edge(bin + 1) - edge(bin); }
    /// @param x not NaN.
    /// @return 0 for underflow, 1 + bin inside, bins() + 1 for overflow; always consistent with edges().
    std::size_t cell(double x) const;

    /// Stores cell(x) of many values in target; an arbitrary cell of the axis for NaN.
    void cells(const double* x, std::size_t values, std::uint32_t* target) const;

    std::string title;  ///< Includes the unit, for example "m(mu+ mu-) [GeV]".

    bool operator==(const Axis& other) const;

private:
    std::size_t count = 0;
    double first = 0.0;
    double last = 0.0;
    bool regular = true;
    std::shared_ptr<const AxisTables> tables;
};

/// Sums over the fills of one bin, x being the coordinate and w the weight. Aligned so that a fill touches a single
/// cache line.
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
/// Shape:   cells() has bins() + 2 entries: [0] underflow, [bins() + 1] overflow; NaN is counted separately.
/// Threads: one filler at a time; fill one histogram per chunk, then merge them in chunk order.
class Histogram1D : public DataObject {
public:
    explicit Histogram1D(Axis axis);
    /// For a reader of a file: takes the stored sums.
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
    /// Number of fills whose coordinate or weight was NaN; no cell contains them.
    std::int64_t nanEntries() const { return nans; }

    /// An infinite coordinate counts as underflow or overflow and does not enter wx and wxx of that cell. An infinite
    /// weight is added like any other.
    void fill(double value, double weight = 1.0);
    /// Fills count values in order. weights may be null: each weight is then 1.
    void fill(const double* values, const double* weights, std::size_t count);
    /// @throws std::invalid_argument if the axes differ.
    void merge(const Histogram1D& other);

    double height(std::size_t position) const { return bin(position).w; }
    /// Square root of the sum of squared weights.
    double error(std::size_t position) const;

    /// The sums over all bins, without underflow and overflow.
    BinSums inRange() const;
    /// Weighted mean of the in-range fills, from the exact sums; NaN if there are none.
    double mean() const;
    /// Population standard deviation of the in-range fills, from the exact sums; NaN if there are none, 0 if rounding
    /// or negative weights leave no positive variance.
    double rms() const;

    /// Serialises the whole object; fromBytes reads it on machines of the same byte order.
    std::string toBytes() const;
    /// Writes the same bytes without the checksum at the end.
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
