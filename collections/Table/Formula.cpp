#include "Formula.h"

#include "Parameters.h"

#include <velmorak/Expression.h>

#include <utility>

namespace velmorak {

namespace {

std::vector<std::string> ownInputs() {
    return {"table", "column", "expression", "unit", "parameters"};
}

/// A column of the new one's name is replaced where it stands; else the new one comes last.
class FormulaOperation : public RowOperation {
public:
    FormulaOperation(const Schema& schema, Expression formula, const std::string& column, const std::string& unit)
        : expression(std::move(formula)), place(schema.find(column).value_or(schema.size())) {
        std::vector<ColumnInfo> columns = schema.columns();
        if (place == columns.size())
            columns.emplace_back();
        columns[place] = {.name = column, .type = expression.type(), .isList = expression.isList(), .unit = unit};
        result = Schema(std::move(columns));
    }

    const Schema& schema() const override { return result; }

    Chunk apply(const Chunk& chunk) const override {
        Chunk out = chunk;
        out.columns.resize(result.size());
        out.columns[place] = expression.evaluate(chunk);
        return out;
    }

private:
    Expression expression;
    std::size_t place;
    Schema result;
};

std::string columnRefusal(const std::string& column) {
    // "e" and "pi" are constants only where no column has the name.
    if (column.empty() || column == "e" || column == "pi" || isColumnName(column))
        return {};
    return "\"" + column + "\" cannot be the name of a column: no expression could use it.";
}

}  // namespace

std::string FormulaKind::summary() const {
    return "Computes a new column of a table from an expression of the others.";
}

Ports FormulaKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = {
        {.name = "table", .description = "Table whose columns the expression uses.", .type = ValueType::Table},
        {.name = "column",
         .description = "Name of the new column, one word. A column of that name is replaced in its place.",
         .type = ValueType::Text,
         .value = "result"},
        {.name = "expression",
         .description = "Formula of the columns, for example sqrt(px*px + py*py); evaluated for each row.",
         .type = ValueType::Text},
        {.name = "unit",
         .description = "Unit of the new column, for example GeV; shown on axes. Nothing is converted.",
         .type = ValueType::Text},
        parameterListInput(),
    };
    addParameterInputs(ports, values);
    ports.outputs = {{.name = "table", .description = "The table with the new column.", .type = ValueType::Table}};
    return ports;
}

std::string FormulaKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "expression")
        return expressionRefusal(value);
    if (input == "column")
        return columnRefusal(value);
    if (input == "parameters")
        return parameterRefusal(value, ownInputs());
    return {};
}

std::unique_ptr<RowOperation> FormulaKind::prepare(const Arguments& arguments, const Schema& schema,
                                                   RunContext&) const {
    const std::string& column = arguments.text("column");
    if (column.empty())
        throw Failure("column", "the new column has no name");
    if (std::string reason = columnRefusal(column); !reason.empty())
        throw Failure("column", reason);
    if (arguments.text("expression").empty())
        throw Failure("expression", "there is no expression to compute the column from");
    Expression expression(arguments.text("expression"), schema, parameterNumbers(arguments, schema, ownInputs()));
    return std::make_unique<FormulaOperation>(schema, std::move(expression), column, arguments.text("unit"));
}

}  // namespace velmorak
