#pragma once

#include "DecimalGrid.h"

#include <velmorak/StateBytes.h>

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

namespace velmorak {

/// Weight of values that lie from low to high.
struct WeightedInterval {
    double weight = 0.0;
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    bool isEmpty() const { return low > high; }
    void add(const WeightedInterval& other);
};

/// Value at which the cumulative weight reaches a fraction of the total: interpolated linearly within an interval, and
/// midway between two intervals if the first one ends there.
/// @param ascending intervals that do not overlap.
/// @return NaN if the sum of the weights is not positive or not finite.
double quantileOf(const std::vector<WeightedInterval>& ascending, double probability);

/// Weights of a stream of numbers by size, in bounded memory. Up to maxCells numbers are kept as they are; more go
/// into the cells of a decimal grid around them, which are joined to wider ones when the range grows. The cells
/// depend on the set of all numbers, not on how the stream was cut into chunks. Threads: one filler at a time; give
/// each chunk its own, then merge in chunk order.
class Quantiles {
public:
    static constexpr std::size_t maxCells = 10000;

    /// @param weights null for a weight of 1 each. A NaN in x or its weight is left out, and so is a weight of 0.
    void fill(const double* x, const double* weights, std::size_t count);
    void merge(const Quantiles& other);
    void save(StateWriter& writer) const;
    void load(StateReader& reader);

    /// Equal numbers make one interval; that of a cell extends from the smallest to the largest number in it.
    std::vector<WeightedInterval> ascending() const;

private:
    void take(double x, double weight);
    void rebin(const DecimalGrid& target);
    std::vector<WeightedInterval> inCells(const DecimalGrid& target) const;
    DecimalGrid gridAround() const;
    bool hasRange() const;

    double low = std::numeric_limits<double>::infinity();  ///< Of the numbers that a grid can hold.
    double high = -std::numeric_limits<double>::infinity();
    std::vector<WeightedInterval> portions;  ///< One for each number; or below the grid, its cells, above the grid.
    std::optional<DecimalGrid> grid;         ///< Around low and high; empty while the numbers are kept as they are.
};

}  // namespace velmorak
