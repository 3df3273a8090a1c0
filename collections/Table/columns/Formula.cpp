#include "Table/kinds.h"
#include "shared/AppendInputs.h"

#include <velmorak/Expression.h>
#include <velmorak/NamedNumbers.h>

#include <utility>

namespace velmorak {

namespace {

std::vector<InputSpec> formulaInputs() {
    return {
        {.name = "table", .description = "Table whose columns the expression uses.", .type = ValueType::Table},
        {.name = "column",
         .description = "Name of the new column, one word. An existing column of that name is replaced.",
         .type = ValueType::Text,
         .value = "result"},
        {.name = "expression",
         .description = "Formula of the columns, for example sqrt(px*px + py*py), evaluated for each row. A number at "
                        "an input of its own is written @name.",
         .type = ValueType::Text},
        {.name = "unit",
         .description = "Unit of the new column, for example GeV; shown on axes. Nothing is converted.",
         .type = ValueType::Text},
    };
}

NamedNumbers formulaNumbers(const std::string& expression) {
    return {{{"expression", expression}}, formulaInputs()};
}

/// Replaces an existing column of the same name at its position; otherwise appends the new one.
class FormulaOperation : public RowOperation {
public:
    FormulaOperation(const Schema& schema, Expression formula, const std::string& column, const std::string& unit);

    const Schema& schema() const override { return result; }

    Chunk apply(const Chunk& chunk) const override;
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override;

private:
    Expression expression;
    std::size_t place;
    Schema result;
    bool isWanted = true;  ///< Somebody uses the new column.
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
    out.columns[place] = isWanted ? expression.evaluate(chunk) : nullptr;
    return out;
}

void FormulaOperation::markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) {
    isWanted = wanted[place];
    for (std::size_t i = 0; i < needed.size(); ++i) {
        needed[i] = i != place && wanted[i];
    }
    if (isWanted) {
        expression.markColumns(needed);
    }
}

std::string columnRefusal(const std::string& column) {
    if (column.empty() || isColumnName(column)) {
        return {};
    }
    return "\"" + column + "\" is not a valid name for a column: expressions could not refer to it.";
}

/// Computes a column from others.
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
    return "Computes a new column of a table from an expression of its columns.";
}

Ports FormulaKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = formulaInputs();
    if (const auto expression = values.find("expression"); expression != values.end()) {
        appendInputs(ports.inputs, formulaNumbers(expression->second).inputs(values));
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
        throw Failure("expression", "the expression is empty");
    }
    Expression expression(text, schema, formulaNumbers(text).values(arguments, schema, context));
    return std::make_unique<FormulaOperation>(schema, std::move(expression), column, arguments.text("unit"));
}

std::unique_ptr<Kind> makeFormula() {
    return std::make_unique<FormulaKind>();
}

}  // namespace velmorak
