#include "Filter.h"

#include "Condition.h"
#include "Parameters.h"

#include <utility>

namespace velmorak {

namespace {

std::vector<std::string> ownInputs() {
    return {"table", "condition", "parameters"};
}

class FilterOperation : public RowOperation {
public:
    FilterOperation(Schema schema, Condition judge) : columns(std::move(schema)), condition(std::move(judge)) {}

    const Schema& schema() const override { return columns; }

    Chunk apply(const Chunk& chunk) const override { return onlyRows(chunk, condition.truthIn(chunk)); }

private:
    Schema columns;
    Condition condition;
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
    return std::make_unique<FilterOperation>(
        schema, Condition("condition", condition, schema, parameterNumbers(arguments, schema, ownInputs())));
}

}  // namespace velmorak
