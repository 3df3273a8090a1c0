#include "kinds.h"

#include <velmorak/Expression.h>
#include <velmorak/NamedNumbers.h>

#include <utility>

namespace velmorak {

namespace {

std::vector<InputSpec> ownInputs() {
    return {
        {.name = "table", .description = "Table whose columns the expression uses.", .type = ValueType::Table},
        {.name = "column",
         .description = "Name of the new column, one word. A column of that name is replaced in its place.",
         .type = ValueType::Text,
         .value = "result"},
        {.name = "expression",
         .description = "Formula of the columns, for example sqrt(px*px + py*py); evaluated for each row. A name that "
                        "is no column is a number that comes by an input of that name.",
         .type = ValueType::Text},
        {.name = "unit",
         .description = "Unit of the new column, for example GeV; shown on axes. Nothing is converted.",
         .type = ValueType::Text},
    };
}

NamedNumbers numbersOf(const std::string& expression) {
    return {{{"expression", expression}}, ownInputs()};
}

/// A column of the new one's name is replaced where it stands; else the new one comes last.
class FormulaOperation : public RowOperation {
public:
    FormulaOperation(const Schema& schema, Expression formula, const std::string& column, const std::string& unit);

    const Schema& schema() const override { return result; }

    Chunk apply(const Chunk& chunk) const override;

private:
    Expression expression;
    std::size_t place;
    Schema result;
};

FormulaOperation::FormulaOperation(const Schema& schema, Expression formula, const std::string& column,
                                   const std::string& unit)
    : expression(std::move(formula)), place(schema.find(column).value_or(schema.size())) {
    std::vector<ColumnInfo> columns = schema.columns();
    if (place == columns.size()) {
        columns.emplace_back();
    }
    columns[place] = {.name = column, .type = expression.type(), .isList = expression.isList(), .unit = unit};
    result = Schema(std::move(columns));
}

Chunk FormulaOperation::apply(const Chunk& chunk) const {
    Chunk out = chunk;
    out.columns.resize(result.size());
    out.columns[place] = expression.evaluate(chunk);
    return out;
}

std::string columnRefusal(const std::string& column) {
    if (column.empty() || isColumnName(column)) {
        return {};
    }
    return "\"" + column + "\" cannot be the name of a column: no expression could use it.";
}

/// Computes a column from the others.
class FormulaKind : public RowWise {
public:
    std::string name() const override { return "Formula"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string FormulaKind::summary() const {
    return "Computes a new column of a table from an expression of the others.";
}

Ports FormulaKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = ownInputs();
    if (const auto expression = values.find("expression"); expression != values.end()) {
        for (InputSpec& input : numbersOf(expression->second).inputs()) {
            ports.inputs.push_back(std::move(input));
        }
    }
    ports.outputs = {{.name = "table", .description = "The table with the new column.", .type = ValueType::Table}};
    return ports;
}

std::string FormulaKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "expression") {
        return expressionRefusal(value);
    }
    if (input == "column") {
        return columnRefusal(value);
    }
    return {};
}

std::unique_ptr<RowOperation> FormulaKind::prepare(const Arguments& arguments, const Schema& schema,
                                                   RunContext& context) const {
    const std::string& column = arguments.text("column");
    if (column.empty()) {
        throw Failure("column", "the new column has no name");
    }
    if (std::string reason = columnRefusal(column); !reason.empty()) {
        throw Failure("column", reason);
    }
    const std::string& text = arguments.text("expression");
    if (text.empty()) {
        throw Failure("expression", "there is no expression to compute the column from");
    }
    Expression expression(text, schema, numbersOf(text).values(arguments, schema, context));
    return std::make_unique<FormulaOperation>(schema, std::move(expression), column, arguments.text("unit"));
}

std::unique_ptr<Kind> makeFormula() {
    return std::make_unique<FormulaKind>();
}

}  // namespace velmorak
