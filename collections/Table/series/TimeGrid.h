#pragma once

#include <velmorak/RowMemory.h>
#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace velmorak {

/// Regular times: origin + n step.
struct TimeGrid {
    double origin = 0.0;
    double step = 1.0;

    double time(std::int64_t number) const { return origin + static_cast<double>(number) * step; }
    /// Number of the step [time(n), time(n + 1)) that holds the time.
    /// @throws Failure if it is too far away to be counted.
    std::int64_t stepOf(double time) const;
};

/// Times and values of some rows; NaN where they are missing.
struct TimedRows {
    std::vector<double> times;
    std::vector<std::vector<double>> values;  ///< By column.
    std::uint64_t firstRow = 0;
};

/// Makes a regular time series of rows.
class Resampling {
public:
    virtual ~Resampling() = default;
    /// @throws Failure if the rows do not suit, or the series does not fit into the memory.
    virtual void add(const TimedRows& rows) = 0;
    /// @return the columns: times, values, and for means the number of rows in each step.
    virtual std::vector<ColumnPtr> columns() const = 0;
};

/// Means over the steps, at the middle of each; NaN in a step without values. The rows may have any order.
std::unique_ptr<Resampling> resamplingByMeans(const TimeGrid& grid, std::size_t columns,
                                              std::shared_ptr<MemoryBudget> budget);
/// Values at the times of the grid, on the straight line between the rows before and after. The times of the rows must
/// not fall.
std::unique_ptr<Resampling> resamplingByLines(const TimeGrid& grid, std::size_t columns,
                                              std::shared_ptr<MemoryBudget> budget);

}  // namespace velmorak
