#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

class AxisTables;
struct AxisSlices;

/// Bins [edge i, edge i + 1) on one axis; a value equal to the last edge is overflow. Copies share their lookup tables.
class Axis {
public:
    /// Bins of equal width.
    /// @throws std::invalid_argument if bins is 0, unless low < high and both are finite, or if the bins are so narrow
    ///         that neighbouring edges round to the same double.
    Axis(std::size_t bins, double low, double high);
    /// @throws std::invalid_argument if there are fewer than two edges, or they are not finite and ascending.
    explicit Axis(std::vector<double> edges);
    /// One bin for each category, centred at 0, 1, 2 ...
    /// @throws std::invalid_argument if there are none.
    static Axis ofCategories(std::vector<std::string> categories);

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

    std::string title;                ///< Includes the unit, for example "m(mu+ mu-) [GeV]".
    std::vector<std::string> labels;  ///< Names of the bins; empty unless these are categories.

    bool operator==(const Axis& other) const;

private:
    friend const AxisSlices* slicesOf(const Axis& axis);

    std::size_t count = 0;
    double first = 0.0;
    double last = 0.0;
    bool regular = true;
    std::shared_ptr<const AxisTables> tables;
};

}  // namespace velmorak
