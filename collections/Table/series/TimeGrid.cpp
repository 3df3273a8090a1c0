#include "Table/series/TimeGrid.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <utility>

namespace velmorak {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double maxSteps = 1e9;  ///< Of one series.

/// Takes memory for the steps of a series.
class SeriesMemory {
public:
    explicit SeriesMemory(std::shared_ptr<MemoryBudget> budget) : share(std::move(budget)) {}

    void take(std::size_t bytes);

private:
    MemoryShare share;
};

void SeriesMemory::take(std::size_t bytes) {
    if (!share.take(bytes)) {
        throw Failure("step",
                      "the series has more steps than fit into the memory; enter a longer step, or set "
                      "VELMORAK_MEMORY_LIMIT to more");
    }
}

void checkLength(std::int64_t first, std::int64_t last) {
    if (static_cast<double>(last) - static_cast<double>(first) > maxSteps) {
        throw Failure("step", "the series would have more than a thousand million steps; enter a longer step");
    }
}

class Means : public Resampling {
public:
    Means(const TimeGrid& grid, std::size_t width, std::shared_ptr<MemoryBudget> budget);

    void add(const TimedRows& rows) override;
    std::vector<ColumnPtr> columns() const override;

private:
    struct Step {
        std::int64_t rows = 0;
        std::vector<double> sums;
        std::vector<std::int64_t> counts;
    };

    Step& stepAt(std::int64_t number);
    void takeLength();

    TimeGrid grid;
    std::size_t width;
    SeriesMemory memory;
    std::map<std::int64_t, Step> steps;  ///< That have rows.
    std::size_t length = 0;              ///< Of the series, for which there is memory.
};

Means::Means(const TimeGrid& grid, std::size_t width, std::shared_ptr<MemoryBudget> budget)
    : grid(grid), width(width), memory(std::move(budget)) {}

Means::Step& Means::stepAt(std::int64_t number) {
    const auto [found, isNew] = steps.try_emplace(number);
    if (isNew) {
        memory.take(128 + 2 * width * sizeof(double));
        found->second.sums.resize(width);
        found->second.counts.resize(width);
        takeLength();
    }
    return found->second;
}

/// Steps without rows are in the result, too.
void Means::takeLength() {
    checkLength(steps.begin()->first, steps.rbegin()->first);
    const auto now = static_cast<std::size_t>(steps.rbegin()->first - steps.begin()->first) + 1;
    memory.take((now - length) * (width + 2) * sizeof(double));
    length = now;
}

void Means::add(const TimedRows& rows) {
    for (std::size_t row = 0; row < rows.times.size(); ++row) {
        if (!std::isfinite(rows.times[row])) {
            continue;
        }
        Step& step = stepAt(grid.stepOf(rows.times[row]));
        ++step.rows;
        for (std::size_t column = 0; column < width; ++column) {
            const double value = rows.values[column][row];
            step.sums[column] += std::isnan(value) ? 0.0 : value;
            step.counts[column] += std::isnan(value) ? 0 : 1;
        }
    }
}

std::vector<ColumnPtr> Means::columns() const {
    Column::Reals times;
    std::vector<Column::Reals> means(width);
    Column::Integers rows;
    const std::int64_t first = steps.empty() ? 0 : steps.begin()->first;
    const std::int64_t end = steps.empty() ? 0 : steps.rbegin()->first + 1;
    auto next = steps.begin();
    for (std::int64_t number = first; number < end; ++number) {
        const Step* const step = next->first == number ? &(next++)->second : nullptr;
        times.push_back(grid.time(number) + grid.step / 2);
        rows.push_back(step ? step->rows : 0);
        for (std::size_t column = 0; column < width; ++column) {
            const std::int64_t count = step ? step->counts[column] : 0;
            means[column].push_back(count > 0 ? step->sums[column] / static_cast<double>(count) : nan);
        }
    }
    std::vector<ColumnPtr> all{columnOf(times)};
    for (const Column::Reals& mean : means) {
        all.push_back(columnOf(mean));
    }
    all.push_back(columnOf(rows));
    return all;
}

class Lines : public Resampling {
public:
    Lines(const TimeGrid& grid, std::size_t columns, std::shared_ptr<MemoryBudget> budget);

    void add(const TimedRows& rows) override;
    std::vector<ColumnPtr> columns() const override;

private:
    /// One column.
    struct Line {
        bool hasValue = false;
        double time = nan;  ///< Of the last row that has a value.
        double value = nan;
        std::vector<double> values{};  ///< At the times of the grid from the first on.
    };

    void begin(double time);
    void extend(Line& line, double time, double value);

    TimeGrid grid;
    std::vector<Line> lines;
    SeriesMemory memory;
    bool hasBegun = false;
    std::int64_t first = 0;  ///< Time of the grid, the first that is not before the first row.
    double last = nan;       ///< Time of the last row.
};

Lines::Lines(const TimeGrid& grid, std::size_t columns, std::shared_ptr<MemoryBudget> budget)
    : grid(grid), lines(columns), memory(std::move(budget)) {}

void Lines::begin(double time) {
    first = grid.stepOf(time);
    first += grid.time(first) < time ? 1 : 0;
    hasBegun = true;
}

void Lines::extend(Line& line, double time, double value) {
    const auto numberOfNext = [&] { return first + static_cast<std::int64_t>(line.values.size()); };
    checkLength(first, grid.stepOf(time));
    while (grid.time(numberOfNext()) <= time) {
        const double at = grid.time(numberOfNext());
        memory.take(sizeof(double));
        if (!line.hasValue) {
            line.values.push_back(at == time ? value : nan);
        } else if (at == time) {
            line.values.push_back(value);
        } else {
            line.values.push_back(line.value + (value - line.value) * ((at - line.time) / (time - line.time)));
        }
    }
    line.hasValue = true;
    line.time = time;
    line.value = value;
}

void Lines::add(const TimedRows& rows) {
    for (std::size_t row = 0; row < rows.times.size(); ++row) {
        const double time = rows.times[row];
        if (!std::isfinite(time)) {
            continue;
        }
        if (time < last) {
            throw Failure("time", "the times fall, from " + textOf(last) + " to " + textOf(time) +
                                      ", in the part of the table that begins with row " +
                                      std::to_string(rows.firstRow) + "; sort the table by the time");
        }
        if (!hasBegun) {
            begin(time);
        }
        last = time;
        for (std::size_t column = 0; column < lines.size(); ++column) {
            if (const double value = rows.values[column][row]; !std::isnan(value)) {
                extend(lines[column], time, value);
            }
        }
    }
}

/// Nothing is known after the last value of a column.
std::vector<ColumnPtr> Lines::columns() const {
    std::size_t length = 0;
    for (const Line& line : lines) {
        length = std::max(length, line.values.size());
    }
    Column::Reals times(length);
    for (std::size_t i = 0; i < length; ++i) {
        times[i] = grid.time(first + static_cast<std::int64_t>(i));
    }
    std::vector<ColumnPtr> all{columnOf(times)};
    for (const Line& line : lines) {
        Column::Reals values = line.values;
        values.resize(length, nan);
        all.push_back(columnOf(values));
    }
    return all;
}

}  // namespace

std::int64_t TimeGrid::stepOf(double time) const {
    const double number = std::floor((time - origin) / step);
    if (!(std::abs(number) < 0x1p53)) {
        throw Failure("step", "time " + textOf(time) + " is too far from the origin for steps of " + textOf(step));
    }
    const auto whole = static_cast<std::int64_t>(number);
    // The quotient may be rounded across the edge of a step.
    if (this->time(whole + 1) <= time) {
        return whole + 1;
    }
    return this->time(whole) > time ? whole - 1 : whole;
}

std::unique_ptr<Resampling> resamplingByMeans(const TimeGrid& grid, std::size_t columns,
                                              std::shared_ptr<MemoryBudget> budget) {
    return std::make_unique<Means>(grid, columns, std::move(budget));
}

std::unique_ptr<Resampling> resamplingByLines(const TimeGrid& grid, std::size_t columns,
                                              std::shared_ptr<MemoryBudget> budget) {
    return std::make_unique<Lines>(grid, columns, std::move(budget));
}

}  // namespace velmorak
