#include "FillExpression.h"

#include <velmorak/StateBytes.h>

#include <utility>

namespace velmorak {

namespace {

/// An expression that gives numbers, or nothing where the input is empty.
std::optional<Expression> numbersFrom(const std::string& input, const Arguments& arguments, const Schema& schema) {
    const std::string& text = arguments.text(input);
    if (text.empty()) {
        return std::nullopt;
    }
    Expression expression(text, schema);
    if (expression.type() == ColumnType::Text) {
        throw Failure(input, "\"" + text + "\" is a text, not a number");
    }
    return expression;
}

Expression neededNumbers(const std::string& input, const Arguments& arguments, const Schema& schema) {
    std::optional<Expression> expression = numbersFrom(input, arguments, schema);
    if (!expression) {
        throw Failure(input, "the expression is empty");
    }
    return std::move(*expression);
}

std::string labelOf(const std::string& text, const Schema& schema) {
    const std::optional<std::size_t> column = schema.find(text);
    return column && !schema[*column].unit.empty() ? text + " [" + schema[*column].unit + "]" : text;
}

/// Repeats the number of each row for every value of its list.
ColumnPtr spread(const Column& ofRows, const Column& list) {
    Column::Reals values;
    values.reserve(list.valueCount());
    for (std::size_t row = 0; row + 1 < list.offsets.size(); ++row) {
        values.insert(values.end(), list.offsets[row + 1] - list.offsets[row], ofRows.reals()[row]);
    }
    return std::make_shared<const Column>(Column{.values = std::move(values), .offsets = {}});
}

/// The column, as long as the list.
ColumnPtr alongside(const ColumnPtr& column, const Column& list, const std::string& input, const Chunk& chunk) {
    if (!column->isList()) {
        return spread(*column, list);
    }
    if (column->offsets != list.offsets) {
        throw Failure(input, "a row between " + std::to_string(chunk.firstRow) +
                                 " and the end of its chunk has lists of different lengths");
    }
    return column;
}

/// The first list among the columns; null where each row has one number.
ColumnPtr firstList(const std::vector<ColumnPtr>& columns) {
    for (const ColumnPtr& column : columns) {
        if (column->isList()) {
            return column;
        }
    }
    return nullptr;
}

void saveColumn(StateWriter& writer, const ColumnPtr& column) {
    writer.number<bool>(column != nullptr);
    if (column) {
        writer.list(column->reals());
    }
}

ColumnPtr loadedColumn(StateReader& reader) {
    if (!reader.number<bool>()) {
        return nullptr;
    }
    Column column;
    column.values = reader.list<Column::Reals>();
    return std::make_shared<const Column>(std::move(column));
}

}  // namespace

FillExpression::FillExpression(const Arguments& arguments, const Schema& schema,
                               const std::vector<std::string>& inputs) {
    for (const std::string& input : inputs) {
        parts.push_back({.input = input,
                         .expression = neededNumbers(input, arguments, schema),
                         .label = labelOf(arguments.text(input), schema)});
        hasList = hasList || parts.back().expression.isList();
    }
    weight = numbersFrom("weight", arguments, schema);
    if (weight && weight->isList() && !hasList) {
        throw Failure("weight", "the weight is a list in each row, but the expression is a single number");
    }
}

FillBatch FillExpression::Values::batch() const {
    const auto column = [this](std::size_t i) {
        return coordinates.size() > i ? coordinates[i]->reals().data() : nullptr;
    };
    return {.x = column(0),
            .y = column(1),
            .z = column(2),
            .weights = weights ? weights->reals().data() : nullptr,
            .count = coordinates.front()->reals().size()};
}

void FillExpression::Values::save(StateWriter& writer) const {
    saveColumn(writer, weights);
    for (const ColumnPtr& column : coordinates) {
        saveColumn(writer, column);
    }
}

void FillExpression::Values::load(StateReader& reader, std::size_t count) {
    weights = loadedColumn(reader);
    coordinates.clear();
    for (std::size_t i = 0; i < count; ++i) {
        coordinates.push_back(loadedColumn(reader));
        const ColumnPtr& column = coordinates.back();
        reader.require(column && column->valueCount() == coordinates.front()->valueCount(),
                       "its columns have different lengths");
    }
    reader.require(!weights || weights->valueCount() == coordinates.front()->valueCount(),
                   "it does not have a weight for each value");
}

void FillExpression::markColumns(std::vector<bool>& needed) const {
    for (const Factor& part : parts) {
        part.expression.markColumns(needed);
    }
    if (weight) {
        weight->markColumns(needed);
    }
}

FillExpression::Values FillExpression::values(const Chunk& chunk) const {
    Values values;
    for (const Factor& part : parts) {
        values.coordinates.push_back(asReals(part.expression.evaluate(chunk)));
    }
    if (weight) {
        values.weights = asReals(weight->evaluate(chunk));
    }
    const ColumnPtr list = firstList(values.coordinates);
    if (!list) {
        return values;
    }
    for (std::size_t i = 0; i < parts.size(); ++i) {
        values.coordinates[i] = alongside(values.coordinates[i], *list, parts[i].input, chunk);
    }
    if (weight) {
        values.weights = alongside(values.weights, *list, "weight", chunk);
    }
    return values;
}

InputSpec expressionInput() {
    return {.name = "expression",
            .description =
                "Quantity to fill: a column or an expression of columns, in their unit. Of a list, all "
                "values are filled.",
            .type = ValueType::Text};
}

InputSpec weightInput() {
    return {.name = "weight",
            .description = "Weight of each fill: an expression of columns, without unit. Empty: 1.",
            .type = ValueType::Text};
}

}  // namespace velmorak
