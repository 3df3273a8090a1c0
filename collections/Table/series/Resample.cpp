#include "Table/kinds.h"

#include "Table/series/TimeGrid.h"
#include "shared/AppendInputs.h"
#include "shared/ColumnList.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/Expression.h>
#include <velmorak/NamedNumbers.h>
#include <velmorak/StoredTable.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>

namespace velmorak {

namespace {

std::vector<InputSpec> resampleInputs() {
    return {
        {.name = "table", .description = "Table of measurements, each at a time.", .type = ValueType::Table},
        {.name = "time",
         .description = "Time of each row, for example a column. A number at an input of its own is written @name.",
         .type = ValueType::Text,
         .value = "time"},
        {.name = "columns",
         .description =
             "Names of columns to resample, separated by blanks or commas; a name with blanks in back quotes. "
             "Empty: all columns of numbers but the time.",
         .type = ValueType::Text},
        {.name = "step", .description = "Distance of the new times, in the unit of the time.", .value = "1"},
        {.name = "method",
         .description = "Mean: of the rows in each step, at its middle. Interpolate: on the straight line between the "
                        "rows before and after each new time; the times of the rows must not fall.",
         .type = ValueType::Choice,
         .value = "mean",
         .choices = {"mean", "interpolate"}},
        {.name = "origin", .description = "A time at which a step begins.", .value = "0"},
    };
}

NamedNumbers resampleNumbers(const std::string& time) {
    return {{{"time", time}}, resampleInputs()};
}

/// Shared by all chunks.
struct Series {
    Expression time;
    std::vector<std::size_t> places;
    TimeGrid grid;
    bool isMean = true;
    Schema schema{};

    TimedRows rowsOf(const Chunk& chunk) const;
};

TimedRows Series::rowsOf(const Chunk& chunk) const {
    TimedRows rows{asReals(time.evaluate(chunk))->reals(), {}, chunk.firstRow};
    for (const std::size_t place : places) {
        rows.values.push_back(asReals(chunk.columns[place])->reals());
    }
    return rows;
}

/// A short table in memory.
class SeriesTable : public StoredTable {
public:
    SeriesTable(Schema schema, std::vector<ColumnPtr> columns) : info(std::move(schema)), columns(std::move(columns)) {}

    const Schema& schema() const override { return info; }
    std::unique_ptr<TableReader> open() const override;

private:
    class Reader;

    Schema info;
    std::vector<ColumnPtr> columns;
};

class SeriesTable::Reader : public TableReader {
public:
    explicit Reader(const SeriesTable& table) : table(table) {}

    const Schema& schema() const override { return table.info; }
    bool next(Chunk& chunk) override;

private:
    const SeriesTable& table;
    std::size_t at = 0;
};

template <typename Values>
ColumnPtr slice(const Values& values, std::size_t first, std::size_t count) {
    const auto begin = values.begin() + static_cast<std::ptrdiff_t>(first);
    return std::make_shared<const Column>(Column{Values(begin, begin + static_cast<std::ptrdiff_t>(count)), {}});
}

bool SeriesTable::Reader::next(Chunk& chunk) {
    chunk.rows = std::min(rowsInChunk(table.info), table.columns.front()->valueCount() - at);
    for (const ColumnPtr& column : table.columns) {
        chunk.columns.push_back(
            std::visit([&](const auto& values) { return slice(values, at, chunk.rows); }, column->values));
    }
    at += chunk.rows;
    return chunk.rows > 0;
}

std::unique_ptr<TableReader> SeriesTable::open() const {
    return std::make_unique<Reader>(*this);
}

class ResampleState : public AccumulatorState {
public:
    ResampleState(const Series& series, std::shared_ptr<MemoryBudget> budget);

    void fill(const Chunk& chunk) override { rows = series.rowsOf(chunk); }
    void merge(AccumulatorState& other) override;
    const Resampling& made();

    std::uint64_t missing = 0;

private:
    Resampling& resampling();

    const Series& series;
    std::shared_ptr<MemoryBudget> budget;
    TimedRows rows;  ///< Until they are merged.
    std::unique_ptr<Resampling> whole;
};

ResampleState::ResampleState(const Series& series, std::shared_ptr<MemoryBudget> budget)
    : series(series), budget(std::move(budget)) {}

Resampling& ResampleState::resampling() {
    if (!whole) {
        whole = series.isMean ? resamplingByMeans(series.grid, series.places.size(), budget)
                              : resamplingByLines(series.grid, series.places.size(), budget);
    }
    return *whole;
}

void ResampleState::merge(AccumulatorState& other) {
    const TimedRows next = std::exchange(static_cast<ResampleState&>(other).rows, {});
    missing += static_cast<std::uint64_t>(
        std::count_if(next.times.begin(), next.times.end(), [](double time) { return !std::isfinite(time); }));
    resampling().add(next);
}

const Resampling& ResampleState::made() {
    return resampling();
}

class ResampleAccumulation : public Accumulation {
public:
    ResampleAccumulation(Series series, std::shared_ptr<MemoryBudget> budget);

    std::unique_ptr<AccumulatorState> newState() const override;
    void markColumns(std::vector<bool>& needed) const override;
    void finish(AccumulatorState& state, Results& results) override;

private:
    Series series;
    std::shared_ptr<MemoryBudget> budget;
};

ResampleAccumulation::ResampleAccumulation(Series series, std::shared_ptr<MemoryBudget> budget)
    : series(std::move(series)), budget(std::move(budget)) {}

std::unique_ptr<AccumulatorState> ResampleAccumulation::newState() const {
    return std::make_unique<ResampleState>(series, budget);
}

void ResampleAccumulation::markColumns(std::vector<bool>& needed) const {
    series.time.markColumns(needed);
    for (const std::size_t place : series.places) {
        needed[place] = true;
    }
}

void ResampleAccumulation::finish(AccumulatorState& state, Results& results) {
    auto& whole = static_cast<ResampleState&>(state);
    results.set("table",
                Value(DataObjectPtr(std::make_shared<const SeriesTable>(series.schema, whole.made().columns()))));
    results.set("missing", whole.missing);
}

/// Makes a time series regular.
class ResampleKind : public Accumulator {
public:
    std::string name() const override { return "Resample"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

/// The name that the time has in the result: that of its column, if it is one.
std::string nameOfTime(const std::string& text) {
    const bool isQuoted = text.size() > 2 && text.front() == '`' && text.find('`', 1) == text.size() - 1;
    if (isQuoted) {
        return text.substr(1, text.size() - 2);
    }
    return isColumnName(text) ? text : "time";
}

std::vector<std::size_t> placesOf(const std::string& list, const Schema& schema, const std::string& time) {
    std::vector<std::size_t> places = columnPositions("columns", list, schema);
    for (const std::size_t place : places) {
        const ColumnInfo& column = schema[place];
        if (column.isList || column.type == ColumnType::Text) {
            throw Failure("columns", "column \"" + column.name + "\" holds " + (column.isList ? "lists" : "texts") +
                                         ", which have no mean");
        }
    }
    const bool takesAll = places.empty();
    for (std::size_t place = 0; place < schema.size() && takesAll; ++place) {
        const ColumnInfo& column = schema[place];
        if (!column.isList && column.type != ColumnType::Text && column.name != time) {
            places.push_back(place);
        }
    }
    return places;
}

Schema schemaOf(const Series& series, const Schema& from, const std::string& time) {
    const std::optional<std::size_t> place = from.find(time);
    Schema schema;
    schema.add({.name = time, .type = ColumnType::Real, .isList = false, .unit = place ? from[*place].unit : ""});
    for (const std::size_t column : series.places) {
        schema.add({.name = from[column].name, .type = ColumnType::Real, .isList = false, .unit = from[column].unit});
    }
    if (series.isMean) {
        schema.add({.name = schema.find("rows") ? "rows_in_step" : "rows", .type = ColumnType::Integer});
    }
    return schema;
}

}  // namespace

std::string ResampleKind::summary() const {
    return "Makes a time series with regular steps from rows at any times.";
}

std::string ResampleKind::notes() const {
    return "The steps are [origin + n step, origin + (n + 1) step). A mean lies at the middle of its step; a step "
           "without values gives NaN, and the column rows has the number of rows in each step. Interpolated values lie "
           "at the times origin + n step, from the first row to the last; a column is NaN before its first value and "
           "after its last. Missing values (NaN) are left out; rows whose time is NaN or infinite are counted in the "
           "output missing.";
}

Ports ResampleKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = resampleInputs();
    if (const auto time = values.find("time"); time != values.end()) {
        appendInputs(ports.inputs, resampleNumbers(time->second).inputs(values));
    }
    ports.outputs = {{.name = "table",
                      .description = "One row for each step: the time, the columns, and for means the number of rows.",
                      .type = ValueType::Table},
                     {.name = "missing", .description = "Number of rows without a time, which are left out."}};
    return ports;
}

std::string ResampleKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "columns") {
        return columnListRefusal(input, value);
    }
    return input == "time" ? expressionRefusal(value) : std::string();
}

std::unique_ptr<Accumulation> ResampleKind::prepare(const Arguments& arguments, const Schema* schema,
                                                    RunContext& context) const {
    const TimeGrid grid{arguments.number("origin"), arguments.number("step")};
    if (!(grid.step > 0.0) || !std::isfinite(grid.step) || !std::isfinite(grid.origin)) {
        throw Failure("step", "step and origin must be finite, and the step larger than 0");
    }
    const std::string& text = arguments.text("time");
    if (text.empty()) {
        throw Failure("time", "the expression is empty");
    }
    Expression time(text, *schema, resampleNumbers(text).values(arguments, *schema, context));
    if (time.isList() || time.type() == ColumnType::Text) {
        throw Failure("time", "\"" + text + "\" is not a number in each row");
    }
    const std::string name = nameOfTime(text);
    Series series{std::move(time), placesOf(arguments.text("columns"), *schema, name), grid,
                  arguments.text("method") == "mean"};
    series.schema = schemaOf(series, *schema, name);
    return std::make_unique<ResampleAccumulation>(std::move(series), memoryOf(context));
}

std::unique_ptr<Kind> makeResample() {
    return std::make_unique<ResampleKind>();
}

}  // namespace velmorak
