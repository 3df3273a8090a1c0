#include "Table/groups/GroupPlan.h"

#include "Table/cuts/Cuts.h"
#include "Table/groups/GroupTable.h"
#include "shared/ColumnList.h"
#include "shared/KeyBins.h"
#include "shared/KeyBytes.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace velmorak {

namespace {

Expression compiled(const std::string& input, const std::string& text, const Schema& schema) {
    try {
        Expression expression(text, schema);
        if (expression.isList()) {
            throw Failure(
                input, velmorak::quoted(text) + " is a list in each row; use Explode before, or first(" + text + ")");
        }
        return expression;
    } catch (const Failure& failure) {
        throw Failure(input, failure.what(), failure.cause());
    }
}

std::string unitOf(const std::string& expression, const Schema& schema) {
    const std::optional<std::size_t> place = schema.find(plainColumn(expression));
    return place ? schema[*place].unit : std::string();
}

Axis axisOf(const std::string& text) {
    std::vector<double> edges;
    for (const std::string& word : columnNames("edges", text)) {
        double edge = 0.0;
        if (!readNumber(word, edge) || !std::isfinite(edge)) {
            throw Failure("edges", velmorak::quoted(word) + " is not a finite number");
        }
        edges.push_back(edge);
    }
    try {
        return Axis(std::move(edges));
    } catch (const std::invalid_argument&) {
        throw Failure("edges", velmorak::quoted(text) + " must be at least two ascending numbers");
    }
}

bool isNumber(ColumnType type) {
    return type != ColumnType::Text;
}

}  // namespace

GroupPlan::GroupPlan(const Arguments& arguments, const Schema& schema) {
    addKeys(arguments.text("keys"), schema);
    addBins(arguments.text("edges"));
    for (std::size_t i = 0; i < keys.size(); ++i) {
        ColumnInfo column{.name = keys[i].name, .type = types[i], .unit = unitOf(keys[i].text, schema)};
        if (!keys[i].bins) {
            addColumn("keys", column);
            continue;
        }
        for (const char* end : {"_low", "_high"}) {
            column.name = keys[i].name + end;
            addColumn("keys", column);
        }
    }
    const std::vector<AggregateText> aggregates = aggregatesIn(arguments.text("aggregates"));
    if (aggregates.empty()) {
        throw Failure("aggregates", "nothing is to be computed; write for example count; mean(x)");
    }
    for (const AggregateText& aggregate : aggregates) {
        addAggregate(aggregate, schema);
    }
}

void GroupPlan::addKeys(const std::string& text, const Schema& schema) {
    for (const Cut& entry : cutsIn(text)) {
        const std::string column = plainColumn(entry.condition);
        const bool isNamed = entry.name != entry.condition;
        if (!isNamed && column.empty()) {
            throw Failure("keys", velmorak::quoted(entry.condition) + " needs a name; write name: " + entry.condition);
        }
        keys.push_back(
            {isNamed ? entry.name : column, entry.condition, compiled("keys", entry.condition, schema), std::nullopt});
        types.push_back(keys.back().expression.type());
    }
}

void GroupPlan::addBins(const std::string& text) {
    for (const Cut& entry : cutsIn(text)) {
        const bool isNamed = entry.name != entry.condition;
        if (!isNamed && keys.size() != 1) {
            throw Failure("edges", "say which key the edges are of, as in pt: 0 10 20");
        }
        bin(isNamed ? entry.name : keys.front().name, entry.condition);
    }
}

void GroupPlan::bin(const std::string& name, const std::string& edges) {
    const auto key = std::find_if(keys.begin(), keys.end(), [&](const Key& each) { return each.name == name; });
    if (key == keys.end()) {
        throw Failure("edges", "there is no key " + velmorak::quoted(name));
    }
    if (!isNumber(key->expression.type())) {
        throw Failure("edges", "the key " + velmorak::quoted(name) + " is a text, which has no bins");
    }
    key->bins = axisOf(edges);
    types[static_cast<std::size_t>(key - keys.begin())] = ColumnType::Real;
}

void GroupPlan::addColumn(const std::string& input, ColumnInfo column) {
    if (result.find(column.name)) {
        throw Failure(input,
                      "two columns of the result are called " + velmorak::quoted(column.name) + "; name one of them");
    }
    result.add(std::move(column));
}

void GroupPlan::addAggregate(const AggregateText& text, const Schema& schema) {
    Output output{text.function, std::nullopt};
    ColumnInfo column{.name = text.name, .type = ColumnType::Real, .unit = unitOf(text.expression, schema)};
    if (!text.expression.empty()) {
        output.quantity = quantityFor(text, schema);
    }
    const bool isSame = text.function == Aggregate::Min || text.function == Aggregate::Max ||
                        text.function == Aggregate::First || text.function == Aggregate::Last;
    if (text.function == Aggregate::Count) {
        column = {.name = text.name, .type = ColumnType::Integer};
    } else if (isSame) {
        column.type = all[*output.quantity].type;
    }
    outputs.push_back(output);
    addColumn("aggregates", column);
    if (text.function == Aggregate::Mean) {
        column.name += "_error";
        addColumn("aggregates", column);
    }
}

std::size_t GroupPlan::quantityFor(const AggregateText& text, const Schema& schema) {
    auto found =
        std::find_if(all.begin(), all.end(), [&](const Quantity& known) { return known.text == text.expression; });
    if (found == all.end()) {
        Quantity quantity{text.expression, compiled("aggregates", text.expression, schema)};
        const ColumnType type = quantity.expression.type();
        quantity.type = type == ColumnType::Boolean ? ColumnType::Integer : type;
        all.push_back(std::move(quantity));
        found = all.end() - 1;
    }
    const bool isForText =
        text.function == Aggregate::Count || text.function == Aggregate::First || text.function == Aggregate::Last;
    if (found->type == ColumnType::Text && !isForText) {
        throw Failure("aggregates", velmorak::quoted(text.name) + ": " + velmorak::quoted(text.expression) +
                                        " is a text; of texts there are only count, first and last");
    }
    found->isKept = found->isKept || text.function == Aggregate::Median;
    return static_cast<std::size_t>(found - all.begin());
}

void GroupPlan::markColumns(std::vector<bool>& needed) const {
    for (const Key& key : keys) {
        key.expression.markColumns(needed);
    }
    for (const Quantity& quantity : all) {
        quantity.expression.markColumns(needed);
    }
}

std::vector<ColumnPtr> GroupPlan::keysOf(const Chunk& chunk) const {
    std::vector<ColumnPtr> columns;
    for (const Key& key : keys) {
        ColumnPtr column = key.expression.evaluate(chunk);
        columns.push_back(key.bins ? lowerEdges(*key.bins, *asReals(column)) : std::move(column));
    }
    return columns;
}

ColumnPtr GroupPlan::valuesOf(std::size_t quantity, const Chunk& chunk) const {
    ColumnPtr column = all[quantity].expression.evaluate(chunk);
    if (column->type() == ColumnType::Boolean) {
        const Column::Booleans& values = column->booleans();
        return std::make_shared<const Column>(Column{Column::Integers(values.begin(), values.end()), {}});
    }
    return column;
}

std::vector<ColumnPtr> GroupPlan::rowsOf(const GroupTable& table, const std::vector<std::uint32_t>& groups) const {
    std::vector<ColumnPtr> columns;
    const std::vector<ColumnPtr> ofKeys = columnsOfKeys(types, table.keysOf(groups));
    for (std::size_t key = 0; key < keys.size(); ++key) {
        columns.push_back(ofKeys[key]);
        if (keys[key].bins) {
            columns.push_back(upperEdges(*keys[key].bins, *ofKeys[key]));
        }
    }
    for (const Output& output : outputs) {
        if (output.quantity) {
            table.values(*output.quantity).finish(output.function, groups, columns);
        } else {
            columns.push_back(table.rowCounts(groups));
        }
    }
    return columns;
}

namespace {

std::string aggregatesRefusal(const std::string& text) {
    for (const AggregateText& aggregate : aggregatesIn(text)) {
        if (std::string reason = expressionRefusal(aggregate.expression); !reason.empty()) {
            return reason;
        }
    }
    return {};
}

std::string keysRefusal(const std::string& text) {
    for (const Cut& entry : cutsIn(text)) {
        if (std::string reason = expressionRefusal(entry.condition); !reason.empty()) {
            return reason;
        }
    }
    return {};
}

/// @throws Failure for edges that are none.
void checkEdges(const std::string& text) {
    for (const Cut& entry : cutsIn(text)) {
        axisOf(entry.condition);
    }
}

}  // namespace

std::string groupingRefusal(const std::string& input, const std::string& text) {
    try {
        if (input == "aggregates") {
            return aggregatesRefusal(text);
        }
        if (input == "edges") {
            checkEdges(text);
            return {};
        }
        return keysRefusal(text);
    } catch (const Failure& failure) {
        return failure.what();
    }
}

}  // namespace velmorak
