#include "Filter.h"

#include "Parameters.h"

#include <velmorak/Expression.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

std::vector<std::string> ownInputs() {
    return {"table", "condition", "parameters"};
}

/// @return 1 for each row whose value is true: a number that is neither 0 nor NaN.
std::vector<std::uint8_t> truthOf(const Column& column) {
    if (column.type() == ColumnType::Boolean)
        return column.booleans();
    std::vector<std::uint8_t> truth(column.valueCount());
    if (column.type() == ColumnType::Integer)
        std::transform(column.integers().begin(), column.integers().end(), truth.begin(),
                       [](std::int64_t value) { return static_cast<std::uint8_t>(value != 0); });
    else
        std::transform(column.reals().begin(), column.reals().end(), truth.begin(),
                       [](double value) { return static_cast<std::uint8_t>(value < 0.0 || value > 0.0); });
    return truth;
}

class FilterOperation : public RowOperation {
public:
    FilterOperation(Schema schema, Expression condition)
        : columns(std::move(schema)), expression(std::move(condition)) {}

    const Schema& schema() const override { return columns; }

    Chunk apply(const Chunk& chunk) const override {
        const std::vector<std::uint8_t> keep = truthOf(*expression.evaluate(chunk));
        const auto kept =
            static_cast<std::size_t>(std::count_if(keep.begin(), keep.end(), [](auto k) { return k != 0; }));
        if (kept == chunk.rows)
            return chunk;
        Chunk out{.number = chunk.number, .firstRow = chunk.firstRow, .rows = kept, .columns = {}};
        for (const ColumnPtr& column : chunk.columns)
            out.columns.push_back(keepRows(*column, keep));
        return out;
    }

private:
    Schema columns;
    Expression expression;
};

}  // namespace

std::string FilterKind::summary() const {
    return "Keeps the rows of a table for which a condition is true.";
}

Ports FilterKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = {
        {.name = "table", .description = "Table whose rows are judged.", .type = ValueType::Table},
        {.name = "condition",
         .description =
             "Expression of the columns, for example pt > 20 and abs(eta) < 2.4. A number counts as true when "
             "it is neither 0 nor NaN.",
         .type = ValueType::Text,
         .value = "true"},
        parameterListInput(),
    };
    addParameterInputs(ports, values);
    ports.outputs = {
        {.name = "table", .description = "The rows that passed, with all their columns.", .type = ValueType::Table}};
    return ports;
}

std::string FilterKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "condition")
        return expressionRefusal(value);
    if (input == "parameters")
        return parameterRefusal(value, ownInputs());
    return {};
}

std::unique_ptr<RowOperation> FilterKind::prepare(const Arguments& arguments, const Schema& schema, RunContext&) const {
    const std::string& condition = arguments.text("condition");
    if (condition.empty())
        throw Failure("condition", "there is no condition to judge the rows by");
    Expression expression(condition, schema, parameterNumbers(arguments, schema, ownInputs()));
    if (expression.isList())
        throw Failure("condition",
                      "\"" + condition + "\" gives a list in each row, and a row is kept or not as a whole");
    if (expression.type() == ColumnType::Text)
        throw Failure("condition", "\"" + condition + "\" is a text, which is neither true nor false");
    return std::make_unique<FilterOperation>(schema, std::move(expression));
}

}  // namespace velmorak
