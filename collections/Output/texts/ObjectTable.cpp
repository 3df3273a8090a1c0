#include "ObjectTable.h"

#include <velmorak/DataObjects.h>
#include <velmorak/Failure.h>
#include <velmorak/FormatMeasurement.h>
#include <velmorak/FunctionValues.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace velmorak {

namespace {

using Row = std::vector<ObjectTable::Number>;

constexpr double unlimited = std::numeric_limits<double>::infinity();
const std::array<std::string, 3> letters = {"x", "y", "z"};

ObjectTable::Number count(std::int64_t entries) {
    return {.value = static_cast<double>(entries), .isCount = true};
}

/// Ends of a cell along one axis; 0 is underflow and bins + 1 overflow.
void addEnds(Row& row, const Axis& axis, std::size_t cell) {
    double lower = -unlimited;
    double upper = unlimited;
    if (cell > 0) {
        lower = axis.edges()[cell - 1];
    }
    if (cell <= axis.bins()) {
        upper = axis.edges()[cell];
    }
    row.emplace_back().value = lower;
    row.emplace_back().value = upper;
}

/// The name of a category; empty for underflow and overflow.
void addLabel(Row& row, const Axis& axis, std::size_t cell) {
    if (!axis.labels.empty()) {
        row.push_back({.text = cell == 0 || cell > axis.bins() ? std::string() : axis.labels[cell - 1]});
    }
}

template <std::size_t dimensions>
std::vector<std::string> endNames(const Grid<dimensions>& grid) {
    if (dimensions == 1) {
        return grid.axis(0).labels.empty() ? std::vector<std::string>{"low", "high"}
                                           : std::vector<std::string>{"category", "low", "high"};
    }
    std::vector<std::string> names;
    for (std::size_t i = 0; i < dimensions; ++i) {
        names.push_back(letters[i] + "low");
        names.push_back(letters[i] + "high");
    }
    return names;
}

template <std::size_t dimensions, typename Fill>
ObjectTable gridTable(const Grid<dimensions>& grid, const std::vector<std::string>& names, const Fill& fill) {
    ObjectTable table{.columns = endNames(grid), .rows = {}};
    table.columns.insert(table.columns.end(), names.begin(), names.end());
    for (std::size_t cell = 0; cell < grid.cellCount(); ++cell) {
        Row& row = table.rows.emplace_back();
        const auto along = grid.alongAxes(cell);
        for (std::size_t i = 0; i < dimensions; ++i) {
            if (dimensions == 1) {
                addLabel(row, grid.axis(i), along[i]);
            }
            addEnds(row, grid.axis(i), along[i]);
        }
        fill(row, cell);
    }
    return table;
}

template <std::size_t axes>
ObjectTable tableOf(const Histogram<axes>& histogram) {
    std::vector<std::string> names{"entries", "height", "error"};
    if constexpr (axes == 1) {
        names.insert(names.end(), {"sumww", "sumwx", "sumwxx"});
    }
    return gridTable<axes>(histogram.grid(), names, [&](Row& row, std::size_t cell) {
        const CellSums<axes>& sums = histogram.cells()[cell];
        row.push_back(count(sums.entries));
        row.emplace_back().value = sums.w;
        row.emplace_back().value = sums.error();
        if constexpr (axes == 1) {
            for (const double sum : {sums.ww, sums.sum(0), sums.squareSum(0, 0)}) {
                row.emplace_back().value = sum;
            }
        }
    });
}

template <std::size_t axes>
ObjectTable tableOf(const Profile<axes>& profile) {
    return gridTable<axes>(profile.grid(), {"entries", "weights", "mean", "error", "rms"},
                           [&](Row& row, std::size_t cell) {
                               row.push_back(count(profile.cells()[cell].entries));
                               row.emplace_back().value = profile.cells()[cell].w;
                               row.emplace_back().value = profile.height(cell);
                               row.emplace_back().value = profile.error(cell);
                               row.emplace_back().value = profile.rms(cell);
                           });
}

ObjectTable tableOf(const Points& points) {
    ObjectTable table;
    for (std::size_t i = 0; i < points.dimension(); ++i) {
        const std::string name = points.dimension() <= letters.size() ? letters[i] : "x" + std::to_string(i + 1);
        for (const std::string ending : {"", "plus", "minus"}) {
            table.columns.push_back(name + ending);
        }
    }
    for (std::size_t point = 0; point < points.size(); ++point) {
        Row& row = table.rows.emplace_back();
        for (std::size_t i = 0; i < points.dimension(); ++i) {
            const Measurement& measured = points.measurement(point, i);
            for (const double number : {measured.value, measured.errorPlus, measured.errorMinus}) {
                row.emplace_back().value = number;
            }
        }
    }
    return table;
}

std::optional<double> numberOf(const HistogramList::Group& group) {
    double number = 0.0;
    const bool isNumber = readNumber(group.key, number) && formatNumber(number) == group.key;
    return isNumber ? std::optional(number) : std::nullopt;
}

/// The bins of all histograms, with the key before them: as a number if all keys are.
ObjectTable tableOf(const HistogramList& list) {
    const bool hasNumbers = std::all_of(list.groups().begin(), list.groups().end(),
                                        [](const HistogramList::Group& group) { return numberOf(group).has_value(); });
    ObjectTable table{.columns = {list.keyTitle()}, .rows = {}};
    for (const HistogramList::Group& group : list.groups()) {
        ObjectTable own = tableOf(*group.histogram);
        if (table.columns.size() == 1) {
            table.columns.insert(table.columns.end(), own.columns.begin(), own.columns.end());
        }
        ObjectTable::Number key{.text = group.key};
        if (hasNumbers) {
            key = {.value = *numberOf(group), .isCount = true};
        }
        for (Row& row : own.rows) {
            row.insert(row.begin(), key);
            table.rows.push_back(std::move(row));
        }
    }
    return table;
}

ObjectTable tableOf(const FunctionObject& function, const Sampling& sampling) {
    const bool hasRange = function.arguments.size() == 1 && !function.arguments.front().ranges.empty();
    const FunctionObject::Range range = hasRange ? function.arguments.front().ranges.front() : FunctionObject::Range();
    const double low = sampling.low.value_or(range.low);
    const double high = sampling.high.value_or(range.high);
    if (!std::isfinite(low) || !std::isfinite(high) || !(low < high)) {
        throw Failure("the function \"" + function.name + "\" has no range of validity; enter a range");
    }
    std::vector<double> places;
    for (std::size_t i = 0; i < sampling.count; ++i) {
        const double part = static_cast<double>(i) / static_cast<double>(sampling.count - 1);
        places.push_back(i + 1 == sampling.count ? high : low + part * (high - low));
    }
    const std::vector<double> values = FunctionValues(function)(places);
    ObjectTable table{.columns = {"x", "y"}, .rows = {}};
    for (std::size_t i = 0; i < places.size(); ++i) {
        table.rows.push_back({{.value = places[i]}, {.value = values[i]}});
    }
    return table;
}

}  // namespace

ObjectTable objectTable(const DataObject& object, const Sampling& sampling) {
    return visit(object, overloaded{
                             [&](const FunctionObject& function) { return tableOf(function, sampling); },
                             [](const DataObject& other) -> ObjectTable {
                                 throw Failure("\"" + other.name + "\" cannot be converted to a table");
                             },
                             [](const auto& known) { return tableOf(known); },
                         });
}

}  // namespace velmorak
