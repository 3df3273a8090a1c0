#pragma once

#include <velmorak/Axis.h>

#include <cstdint>

namespace velmorak {

/// Cells between neighbouring multiples of a power of ten: cell n is [n 10^e, (n + 1) 10^e). Every edge is the double
/// next to its decimal number, so that ten cells make exactly one cell of the grid with the next exponent.
class DecimalGrid {
public:
    static constexpr double maxNumber = 1e300;

    /// The finest grid on which no more than maxCells lie between the cells of low and high; coarser where the
    /// precision of doubles of this size does not resolve its edges. It depends on low and high alone, and is no finer
    /// for a wider span.
    /// @throws Failure if the numbers are beyond maxNumber.
    DecimalGrid(double low, double high, std::size_t maxCells);

    double edge(std::int64_t number) const;
    /// The cell that holds x.
    std::int64_t cellOf(double x) const;

    std::int64_t first() const { return firstCell; }
    std::size_t count() const { return static_cast<std::size_t>(lastCell - firstCell) + 1; }
    /// The cells from that of low to that of high, as bins.
    Axis axis() const;
    /// The cell of a grid that is no finer in which a cell of this one lies.
    std::int64_t cellIn(const DecimalGrid& coarser, std::int64_t number) const;

    bool operator==(const DecimalGrid&) const = default;

private:
    int exponent = 0;
    std::int64_t firstCell = 0;
    std::int64_t lastCell = 0;
};

/// Equal bins whose edges are round numbers and lie on a grid.
struct RoundBins {
    /// Narrowest bins of 1, 2, 2.5 or 5 times a power of ten that hold all cells of the grid, and are at least ten
    /// cells wide.
    RoundBins(const DecimalGrid& grid, std::size_t bins);

    Axis axis(const DecimalGrid& grid) const;
    /// 0 for the first bin.
    std::size_t binOf(std::int64_t cell) const { return static_cast<std::size_t>((cell - first) / width); }

    std::int64_t first = 0;  ///< Cell that the first bin begins with.
    std::int64_t width = 0;  ///< Cells in each bin.
    std::size_t count;
};

}  // namespace velmorak
