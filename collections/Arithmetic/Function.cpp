#include "kinds.h"

#include <velmorak/Expression.h>
#include <velmorak/NamedNumbers.h>

namespace velmorak {

namespace {

std::vector<InputSpec> ownInputs() {
    return {{.name = "expression",
             .description =
                 "Formula of numbers, for example passed / all. Each name in it becomes an input that can be "
                 "entered or wired.",
             .type = ValueType::Text}};
}

NamedNumbers numbersOf(const std::string& expression) {
    return {{{"expression", expression}}, ownInputs()};
}

/// Evaluates the expression for one row of a table without columns: all names are numbers.
double valueOf(const Expression& expression, const std::string& text) {
    if (expression.type() == ColumnType::Text) {
        throw Failure("expression", "\"" + text + "\" is a text, not a number");
    }
    Chunk row;
    row.rows = 1;
    return asReals(expression.evaluate(row))->reals().front();
}

/// Computes a number from an expression of other numbers; each of them is an input.
class FunctionKind : public Function {
public:
    std::string name() const override { return "Function"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string FunctionKind::summary() const {
    return "Computes a number from an expression of other numbers.";
}

std::string FunctionKind::notes() const {
    return "The syntax is that of [expressions](../expressions.md). A name in back quotes, or the name "
           "`expression`, does not become an input and cannot be used. True gives 1, false 0.";
}

Ports FunctionKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = ownInputs();
    if (const auto expression = values.find("expression"); expression != values.end()) {
        for (InputSpec& input : numbersOf(expression->second).inputs()) {
            ports.inputs.push_back(std::move(input));
        }
    }
    ports.outputs = {{.name = "value", .description = "Value of the expression, in its unit."}};
    return ports;
}

std::string FunctionKind::refusal(const std::string& input, const std::string& value) const {
    return input == "expression" ? expressionRefusal(value) : std::string();
}

void FunctionKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const std::string& text = arguments.text("expression");
    if (text.empty()) {
        throw Failure("expression", "the expression is empty");
    }
    const Schema noColumns;
    const Expression expression(text, noColumns, numbersOf(text).values(arguments, noColumns, context));
    results.set("value", valueOf(expression, text));
}

std::unique_ptr<Kind> makeFunction() {
    return std::make_unique<FunctionKind>();
}

}  // namespace velmorak
