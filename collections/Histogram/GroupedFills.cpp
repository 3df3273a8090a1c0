#include "GroupedFills.h"

#include "Binning.h"
#include "shared/KeyBins.h"
#include "shared/KeyBytes.h"
#include "shared/RowGroups.h"

#include <velmorak/FormatMeasurement.h>
#include <velmorak/StateBytes.h>
#include <velmorak/Text.h>

#include <cmath>
#include <stdexcept>
#include <utility>

namespace velmorak {

namespace {

Expression keyFrom(const Arguments& arguments, const Schema& schema) {
    const std::string& text = arguments.text("key");
    if (text.empty()) {
        throw Failure("key", "the expression is empty");
    }
    try {
        Expression key(text, schema);
        if (key.isList()) {
            throw Failure(velmorak::quoted(text) + " is a list in each row; use Explode before, or first(" + text +
                          ")");
        }
        return key;
    } catch (const Failure& failure) {
        throw Failure("key", failure.what());
    }
}

std::optional<Axis> binsFrom(const Arguments& arguments, const Expression& key) {
    const std::string& edges = arguments.text("keyedges");
    if (isBlank(edges)) {
        return std::nullopt;
    }
    if (key.type() == ColumnType::Text) {
        throw Failure("keyedges",
                      "the key " + velmorak::quoted(arguments.text("key")) + " is a text, which has no bins");
    }
    return Axis(edgesIn(edges, "keyedges"));
}

std::string unitOf(const std::string& expression, const Schema& schema) {
    const std::optional<std::size_t> column = schema.find(expression);
    return column && !schema[*column].unit.empty() ? " " + schema[*column].unit : std::string();
}

bool isMissing(const Column& keys, std::size_t row) {
    if (keys.type() == ColumnType::Text) {
        return keys.texts()[row].empty();
    }
    return keys.type() == ColumnType::Real && std::isnan(keys.reals()[row]);
}

/// The fills of some rows: one each, or all values of their lists.
class Gathering {
public:
    Gathering(const FillBatch& batch, const std::vector<std::uint64_t>& offsets) : batch(batch), offsets(offsets) {}

    FillList of(const std::uint32_t* begin, const std::uint32_t* end);

private:
    void take(std::size_t fill);

    const FillBatch& batch;
    const std::vector<std::uint64_t>& offsets;  ///< Of lists; else empty.
    std::vector<double> x;
    std::vector<double> weights;
};

FillList Gathering::of(const std::uint32_t* begin, const std::uint32_t* end) {
    x.clear();
    weights.clear();
    for (const std::uint32_t* row = begin; row != end; ++row) {
        const std::size_t first = offsets.empty() ? *row : offsets[*row];
        const std::size_t last = offsets.empty() ? *row + std::size_t{1} : offsets[*row + std::size_t{1}];
        for (std::size_t fill = first; fill < last; ++fill) {
            take(fill);
        }
    }
    const FillBatch fills{.x = x.data(), .weights = batch.weights ? weights.data() : nullptr, .count = x.size()};
    return FillList(fills);
}

void Gathering::take(std::size_t fill) {
    x.push_back(batch.x[fill]);
    if (batch.weights) {
        weights.push_back(batch.weights[fill]);
    }
}

std::string textOfKey(const Column& column) {
    switch (column.type()) {
        case ColumnType::Real:
            return formatNumber(column.reals().front());
        case ColumnType::Integer:
            return std::to_string(column.integers().front());
        case ColumnType::Boolean:
            return column.booleans().front() != 0 ? "true" : "false";
        case ColumnType::Text:
            break;
    }
    return column.texts().front();
}

}  // namespace

GroupedQuantity::GroupedQuantity(const Arguments& arguments, const Schema& schema)
    : key(keyFrom(arguments, schema)),
      bins(binsFrom(arguments, key)),
      unit(unitOf(arguments.text("key"), schema)),
      quantity(arguments, schema) {}

void GroupedQuantity::markColumns(std::vector<bool>& needed) const {
    key.markColumns(needed);
    quantity.markColumns(needed);
}

ColumnPtr GroupedQuantity::keysOf(const Chunk& chunk) const {
    ColumnPtr keys = key.evaluate(chunk);
    return bins ? lowerEdges(*bins, *asReals(keys)) : keys;
}

GroupedQuantity::Fills GroupedQuantity::fillsOf(const Chunk& chunk) const {
    const std::vector<ColumnPtr> keys = {keysOf(chunk)};
    const FillExpression::Values values = quantity.values(chunk);
    const FillBatch batch = values.batch();
    const RowGroups groups = groupRows(keys, chunk.rows);
    const RowsByGroup sorted = rowsByGroup(groups);
    Gathering gathering(batch, values.coordinates.front()->offsets);
    Fills fills;
    for (std::size_t group = 0; group < groups.size(); ++group) {
        const std::uint32_t first = groups.firstRow[group];
        if (isMissing(*keys.front(), first)) {
            fills.rowsWithoutKey += sorted.offsets[group + 1] - sorted.offsets[group];
            continue;
        }
        if (fills.groups.size() == maxGroups) {
            refuseGroups(maxGroups);
        }
        fills.groups.push_back({keyBytes(keys, first), gathering.of(sorted.rows.data() + sorted.offsets[group],
                                                                    sorted.rows.data() + sorted.offsets[group + 1])});
    }
    return fills;
}

HistogramList::Group GroupedQuantity::describe(const std::string& bytes, const std::string& title) const {
    const ColumnPtr column = columnsOfKeys({bins ? ColumnType::Real : key.type()}, {bytes}).front();
    if (!bins) {
        const std::string text = textOfKey(*column);
        return {.key = text, .label = title + " = " + text + unit, .histogram = {}};
    }
    const double lower = column->reals().front();
    const double upper = upperEdges(*bins, *column)->reals().front();
    const std::string low = formatNumber(lower);
    const std::string high = formatNumber(upper);
    if (std::isinf(lower)) {
        return {.key = "below " + high, .label = title + " < " + high + unit, .histogram = {}};
    }
    if (std::isinf(upper)) {
        return {.key = "from " + low, .label = title + " ≥ " + low + unit, .histogram = {}};
    }
    return {.key = low + " to " + high, .label = low + " ≤ " + title + " < " + high + unit, .histogram = {}};
}

void GroupedQuantity::Fills::save(StateWriter& writer) const {
    writer.number(rowsWithoutKey);
    writer.number<std::uint64_t>(groups.size());
    for (const Group& group : groups) {
        writer.text(group.key);
        group.fills.save(writer);
    }
}

void GroupedQuantity::Fills::load(StateReader& reader) {
    rowsWithoutKey = reader.count();
    groups.clear();
    for (std::size_t count = reader.length(4 * sizeof(std::uint64_t)); count > 0; --count) {
        groups.push_back({.key = reader.text(), .fills = {}});
        groups.back().fills.load(reader, false);
    }
}

void refuseGroups(std::size_t most) {
    throw Failure("key", "it has more than " + std::to_string(most) +
                             " different values, and each would get a histogram; bin the key with keyedges, fill a "
                             "Histogram2D, or use GroupBy");
}

}  // namespace velmorak
