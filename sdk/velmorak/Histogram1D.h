#pragma once

#include "Value.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// Bins [edge i, edge i + 1) on one axis; a value equal to the last edge is overflow.
class Axis {
public:
    /// Equal bins.
    /// @throws std::invalid_argument if bins is 0 or not (low < high, both finite), or where so many bins lie between
    ///         the two that neighbouring edges would be the same double.
    Axis(std::size_t bins, double low, double high);
    /// @throws std::invalid_argument if there are fewer than two edges, or they are not finite and ascending.
    explicit Axis(std::vector<double> edges);

    std::size_t bins() const { return allEdges.size() - 1; }
    double low() const { return allEdges.front(); }
    double high() const { return allEdges.back(); }
    /// The bins are equal: the edges are, to the last bit, those that the first constructor makes.
    bool isRegular() const { return regular; }
    /// bins() + 1 values; the edges of equal bins are low + i * (high - low) / bins, the last one exactly high.
    const std::vector<double>& edges() const { return allEdges; }
    double center(std::size_t bin) const { return 0.5 * (allEdges[bin] + allEdges[bin + 1]); }
    double width(std::size_t bin) const { return allEdges[bin + 1] - allEdges[bin]; }
    /// @return 0 for underflow, 1 + bin inside, bins() + 1 for overflow. Not for NaN. Always agrees with edges().
    std::size_t cell(double x) const {
        if (x < allEdges.front())
            return 0;
        if (x >= allEdges.back())
            return allEdges.size();
        const std::size_t slice = sliceOf(x);
        std::size_t position = lookup[slice];
        const std::size_t end = lookup[slice + 1];
        if (end - position > 8)
            return cellBetween(x, position, end);
        while (position < end && allEdges[position] <= x)
            ++position;
        return position;
    }

    /// The cells of count values at once, as cell gives them; where a value is NaN, any cell of the axis.
    void cells(const double* x, std::size_t count, std::uint32_t* target) const;

    std::string title;  ///< With its unit, for example "m(mu+ mu-) [GeV]".

    bool operator==(const Axis& other) const { return allEdges == other.allEdges; }

private:
    void buildLookup();
    std::size_t cellBetween(double x, std::size_t begin, std::size_t end) const;
    /// Never falls as x rises, also after rounding. An edge in an earlier slice than x is therefore below x, one in a
    /// later slice above it, and only the edges in x's own slice must be compared.
    std::size_t sliceOf(double edgeOrX) const {
        if (slicesPerUnit == 0.0)  // The span, or its inverse, is no finite double.
            return 0;
        const auto slice = static_cast<std::size_t>((edgeOrX - allEdges.front()) * slicesPerUnit);
        return slice < lookup.size() - 2 ? slice : lookup.size() - 2;
    }

    std::vector<double> allEdges;
    std::vector<double> stops;          ///< The edges, and a NaN that no value reaches.
    std::size_t mostInSlice = 0;        ///< Edges in one slice.
    std::vector<std::uint32_t> lookup;  ///< Edges that lie in the slices before each slice of the axis.
    double slicesPerUnit = 0.0;
    bool regular = false;
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
    Histogram1D(Axis axis, std::vector<BinSums> cells, std::int64_t nanEntries);

    ValueType type() const override { return ValueType::Histogram; }

    const Axis& axis() const { return x; }
    void setAxisTitle(std::string axisTitle) { x.title = std::move(axisTitle); }
    std::size_t bins() const { return x.bins(); }
    const std::vector<BinSums>& cells() const { return sums; }
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
    /// @throws std::invalid_argument if the bytes are damaged.
    static Histogram1D fromBytes(const std::string& bytes);

private:
    Axis x;
    std::vector<BinSums> sums;
    std::int64_t nans = 0;
};

using HistogramPtr = std::shared_ptr<const Histogram1D>;

}  // namespace velmorak
