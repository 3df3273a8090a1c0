#include "ObjectTable.h"

#include <velmorak/Failure.h>
#include <velmorak/FunctionValues.h>
#include <velmorak/Histogram1D.h>
#include <velmorak/HistogramGrid.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <array>
#include <cmath>
#include <limits>

namespace velmorak {

namespace {

using Row = std::vector<ObjectTable::Number>;

constexpr double unlimited = std::numeric_limits<double>::infinity();
const std::array<std::string, 3> letters = {"x", "y", "z"};

ObjectTable::Number count(std::int64_t entries) {
    return {.value = static_cast<double>(entries), .isCount = true};
}

/// Ends of a cell along one axis; 0 and bins + 1 are under- and overflow.
void addEnds(Row& row, const Axis& axis, std::size_t cell) {
    double lower = -unlimited;
    double upper = unlimited;
    if (cell > 0) {
        lower = axis.edges()[cell - 1];
    }
    if (cell <= axis.bins()) {
        upper = axis.edges()[cell];
    }
    row.push_back({.value = lower});
    row.push_back({.value = upper});
}

template <std::size_t dimensions>
std::vector<std::string> endNames() {
    if (dimensions == 1) {
        return {"low", "high"};
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
    ObjectTable table{.columns = endNames<dimensions>(), .rows = {}};
    table.columns.insert(table.columns.end(), names.begin(), names.end());
    for (std::size_t cell = 0; cell < grid.cellCount(); ++cell) {
        Row& row = table.rows.emplace_back();
        const auto along = grid.alongAxes(cell);
        for (std::size_t i = 0; i < dimensions; ++i) {
            addEnds(row, grid.axis(i), along[i]);
        }
        fill(row, cell);
    }
    return table;
}

ObjectTable tableOf(const Histogram1D& histogram) {
    const Grid<1> grid({histogram.axis()});
    return gridTable<1>(grid, {"entries", "height", "error", "sumww", "sumwx", "sumwxx"},
                        [&](Row& row, std::size_t cell) {
                            const BinSums& sums = histogram.cells()[cell];
                            row.push_back(count(sums.entries));
                            for (const double sum : {sums.w, std::sqrt(sums.ww), sums.ww, sums.wx, sums.wxx}) {
                                row.push_back({.value = sum});
                            }
                        });
}

template <std::size_t dimensions>
ObjectTable tableOf(const HistogramGrid<dimensions>& histogram) {
    return gridTable<dimensions>(histogram.grid(), {"entries", "height", "error"}, [&](Row& row, std::size_t cell) {
        row.push_back(count(histogram.cells()[cell].entries));
        row.push_back({.value = histogram.cells()[cell].w});
        row.push_back({.value = histogram.error(cell)});
    });
}

template <std::size_t dimensions>
ObjectTable tableOf(const Profile<dimensions>& profile) {
    return gridTable<dimensions>(profile.grid(), {"entries", "weights", "mean", "error", "rms"},
                                 [&](Row& row, std::size_t cell) {
                                     row.push_back(count(profile.cells()[cell].entries));
                                     row.push_back({.value = profile.cells()[cell].w});
                                     row.push_back({.value = profile.height(cell)});
                                     row.push_back({.value = profile.error(cell)});
                                     row.push_back({.value = profile.rms(cell)});
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
                row.push_back({.value = number});
            }
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
        throw Failure("the function \"" + function.name + "\" does not say where it holds; give a range");
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

template <typename Class>
bool fillFrom(const DataObject& object, ObjectTable& table) {
    const auto* found = dynamic_cast<const Class*>(&object);
    if (found) {
        table = tableOf(*found);
    }
    return found != nullptr;
}

}  // namespace

ObjectTable objectTable(const DataObject& object, const Sampling& sampling) {
    ObjectTable table;
    if (fillFrom<Histogram1D>(object, table) || fillFrom<Histogram2D>(object, table) ||
        fillFrom<Histogram3D>(object, table) || fillFrom<Profile1D>(object, table) ||
        fillFrom<Profile2D>(object, table) || fillFrom<Points>(object, table)) {
        return table;
    }
    if (const auto* function = dynamic_cast<const FunctionObject*>(&object)) {
        return tableOf(*function, sampling);
    }
    throw Failure("\"" + object.name + "\" has no table of numbers");
}

}  // namespace velmorak
