#include "Gradient.h"
#include "kinds.h"
#include "shared/AppendInputs.h"

#include <velmorak/Expression.h>
#include <velmorak/NamedNumbers.h>
#include <velmorak/Text.h>

#include <cmath>

namespace velmorak {

namespace {

std::vector<InputSpec> functionInputs() {
    return {{.name = "expression",
             .description =
                 "Formula of numbers, for example passed / all. Each name in it becomes an input that can be "
                 "entered or wired.",
             .type = ValueType::Text}};
}

NamedNumbers numbersOf(const std::string& expression) {
    return {{{"expression", expression}}, functionInputs()};
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

/// The numbers of an expression; some have errors.
struct Operands {
    std::map<std::string, double> exact;
    std::vector<Variable> variables;
    std::vector<NumberWithError> numbers;  ///< Parallel to the variables.
};

Operands operandsOf(const Arguments& arguments, const std::map<std::string, double>& values) {
    Operands operands;
    for (const auto& [name, value] : values) {
        const NumberWithError number = arguments.numberWithError(NamedNumbers::inputOf(name));
        if (number.hasError()) {
            operands.variables.push_back({.name = name, .value = value, .error = number.error()});
            operands.numbers.push_back(number);
        } else {
            operands.exact.emplace(name, value);
        }
    }
    return operands;
}

NumberWithError resultOf(double value, const std::string& text, const Operands& operands, RunContext& context) {
    const std::vector<double> derivatives = gradientOf(text, operands.exact, operands.variables);
    std::vector<std::pair<NumberWithError, double>> dependences;
    for (std::size_t i = 0; i < derivatives.size(); ++i) {
        const Variable& variable = operands.variables[i];
        if (std::isfinite(value) && !std::isfinite(derivatives[i])) {
            context.warn("the error of the value is unknown, because the expression has no finite derivative by " +
                         velmorak::quoted(variable.name) + " at " + textOf(variable.value));
        }
        dependences.emplace_back(operands.numbers[i], derivatives[i]);
    }
    return withPropagatedError(value, dependences);
}

/// Computes a number from an expression of other numbers; each of them is an input.
class FunctionKind : public Function {
public:
    std::string name() const override { return "Function"; }
    std::string summary() const override;
    std::string notes() const override;
    int version() const override { return 2; }
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string FunctionKind::summary() const {
    return "Computes a number and its error from an expression of other numbers.";
}

std::string FunctionKind::notes() const {
    return R"(The syntax is that of [expressions](../expressions.md). A name in back quotes, or the name `expression`, does not become an
input and cannot be used. True gives 1, false 0.

**Error.** Numbers that come by wire may have errors: the parameters of a `Fit`, a `Measurement`, and numbers computed from
them. The value then has an error, to first order: error² = gᵀ C g, with g the derivatives of the expression by these
numbers at their values, and C their covariance. Numbers of the same fit are correlated as its covariance matrix says, also
if they come through other `Function`s or sums, products and so on; numbers of different fits are independent. First
order is exact for a linear expression, and good if the derivatives change little within the errors.

The derivatives are central differences, extrapolated to a step of 0 (C. J. F. Ridders, Advances in Engineering Software 4
(1982) 75). At a kink, such as that of `abs`, they are the mean of the slopes on both sides. Where there is no finite
derivative, as for `sqrt(x)` at 0, the error is NaN, with a warning.)";
}

Ports FunctionKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = functionInputs();
    if (const auto expression = values.find("expression"); expression != values.end()) {
        appendInputs(ports.inputs, numbersOf(expression->second).inputs());
    }
    ports.outputs = {
        {.name = "value", .description = "Value of the expression, in its unit, with its error."},
        {.name = "error",
         .description =
             "Standard deviation of the value, to first order, in its unit; 0 if no number of the expression has an "
             "error."}};
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
    const std::map<std::string, double> values = numbersOf(text).values(arguments, noColumns, context);
    const double value = valueOf(Expression(text, noColumns, values), text);
    const Operands operands = operandsOf(arguments, values);
    const NumberWithError result =
        operands.variables.empty() ? NumberWithError(value) : resultOf(value, text, operands, context);
    results.set("value", result);
    results.set("error", result.error());
}

std::unique_ptr<Kind> makeFunction() {
    return std::make_unique<FunctionKind>();
}

}  // namespace velmorak
