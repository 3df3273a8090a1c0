#include "Quantity.h"

#include <utility>

namespace velmorak {

namespace {

/// An expression that gives numbers, or nothing where the input is empty.
std::optional<Expression> numbersFrom(const std::string& input, const Arguments& arguments, const Schema& schema) {
    const std::string& text = arguments.text(input);
    if (text.empty())
        return std::nullopt;
    Expression expression(text, schema);
    if (expression.type() == ColumnType::Text)
        throw Failure(input, "\"" + text + "\" is a text, not a number");
    return expression;
}

Expression neededNumbers(const std::string& input, const Arguments& arguments, const Schema& schema) {
    std::optional<Expression> expression = numbersFrom(input, arguments, schema);
    if (!expression)
        throw Failure(input, "there is no expression to fill from");
    return std::move(*expression);
}

/// A weight for each value of a list, from one for each row.
ColumnPtr spread(const Column& rowWeights, const Column& list) {
    Column::Reals weights;
    weights.reserve(list.valueCount());
    for (std::size_t row = 0; row + 1 < list.offsets.size(); ++row)
        weights.insert(weights.end(), list.offsets[row + 1] - list.offsets[row], rowWeights.reals()[row]);
    return std::make_shared<const Column>(Column{.values = std::move(weights), .offsets = {}});
}

}  // namespace

Quantity::Quantity(const Arguments& arguments, const Schema& schema)
    : expression(neededNumbers("expression", arguments, schema)),
      weight(numbersFrom("weight", arguments, schema)),
      axisLabel(arguments.text("expression")) {
    if (weight && weight->isList() && !expression.isList())
        throw Failure("weight", "the weight is a list in each row, but the expression is a single number");
    const std::optional<std::size_t> column = schema.find(axisLabel);
    if (column && !schema[*column].unit.empty())
        axisLabel += " [" + schema[*column].unit + "]";
}

ColumnPtr Quantity::weightsFor(const Chunk& chunk, const Column& x) const {
    ColumnPtr weights = asReals(weight->evaluate(chunk));
    if (!x.isList())
        return weights;
    if (!weight->isList())
        return spread(*weights, x);
    if (weights->offsets != x.offsets)
        throw Failure("weight", "a row between " + textOf(static_cast<double>(chunk.firstRow)) +
                                    " and the end of its chunk has more or fewer weights than values");
    return weights;
}

Quantity::Values Quantity::values(const Chunk& chunk) const {
    Values values{.x = asReals(expression.evaluate(chunk)), .weights = nullptr};
    if (weight)
        values.weights = weightsFor(chunk, *values.x);
    return values;
}

InputSpec expressionInput() {
    return {.name = "expression",
            .description =
                "What is filled: a column or an expression of columns, in their unit. A list gives all its "
                "values.",
            .type = ValueType::Text};
}

InputSpec weightInput() {
    return {.name = "weight",
            .description = "Weight of each fill, an expression of columns without unit. Empty: 1.",
            .type = ValueType::Text};
}

}  // namespace velmorak
