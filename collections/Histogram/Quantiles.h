#pragma once

#include "DecimalGrid.h"

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

/// Where the running sum of the weights reaches a share of their sum: linear within a portion, and in the middle
/// between two of them where the first one ends there.
/// @param ascending portions that do not overlap.
/// @return NaN where the sum of the weights is not above 0, or not finite.
double quantileOf(const std::vector<WeightedInterval>& ascending, double probability);

/// Weights of a stream of numbers by size, in bounded memory. Up to maxCells numbers are kept as they are; more go
/// into the cells of a decimal grid around them, which are joined to wider ones when the range grows. Which cells there
/// are depends on all numbers together, and not on how the stream was cut. Threads: one filler at a time; give each
/// chunk its own, then merge in chunk order.
class Quantiles {
public:
    static constexpr std::size_t maxCells = 10000;

    /// @param weights null for a weight of 1 each. A NaN in x or its weight is left out, and so is a weight of 0.
    void fill(const double* x, const double* weights, std::size_t count);
    void merge(const Quantiles& other);

    /// Equal numbers are one portion; a cell reaches from the smallest to the largest number in it.
    std::vector<WeightedInterval> ascending() const;

private:
    void take(double x, double weight);
    void settle(const DecimalGrid& target);
    std::vector<WeightedInterval> inCells(const DecimalGrid& target) const;
    DecimalGrid gridAround() const;

    double low = std::numeric_limits<double>::infinity();  ///< Of the numbers that a grid can hold.
    double high = -std::numeric_limits<double>::infinity();
    std::vector<WeightedInterval> portions;  ///< One for each number; or below the grid, its cells, above the grid.
    std::optional<DecimalGrid> grid;         ///< None while the numbers are kept as they are.
};

}  // namespace velmorak
