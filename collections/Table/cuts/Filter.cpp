#include "Table/kinds.h"

#include "Table/cuts/Condition.h"
#include "shared/AppendInputs.h"

#include <velmorak/NamedNumbers.h>
#include <velmorak/RowBounds.h>

#include <map>
#include <utility>

namespace velmorak {

namespace {

std::vector<InputSpec> filterInputs() {
    return {
        {.name = "table", .description = "Table whose rows are tested.", .type = ValueType::Table},
        {.name = "condition",
         .description = "Expression of the columns, for example pt > 20 and abs(eta) < 2.4. A number counts as true if "
                        "it is neither 0 nor NaN. A number at an input of its own is written "
                        "@name.",
         .type = ValueType::Text,
         .value = "true"},
    };
}

NamedNumbers filterNumbers(const std::string& condition) {
    return {{{"condition", condition}}, filterInputs()};
}

class FilterOperation : public RowOperation, public BoundedOperation {
public:
    FilterOperation(Schema columns, Condition condition, std::vector<ColumnBound> bounds);

    const Schema& schema() const override { return columns; }

    Chunk apply(const Chunk& chunk) const override { return onlyRows(chunk, condition.truthIn(chunk)); }
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override;
    std::vector<ColumnBound> bounds() const override { return all; }

private:
    Schema columns;
    Condition condition;
    std::vector<ColumnBound> all;
};

FilterOperation::FilterOperation(Schema columns, Condition condition, std::vector<ColumnBound> bounds)
    : columns(std::move(columns)), condition(std::move(condition)), all(std::move(bounds)) {}

void FilterOperation::markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) {
    needed = wanted;
    condition.markColumns(needed);
}

/// Keeps the rows for which a condition is true.
class FilterKind : public RowWise {
public:
    std::string name() const override { return "Filter"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string FilterKind::summary() const {
    return "Keeps the rows of a table for which a condition is true.";
}

Ports FilterKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = filterInputs();
    if (const auto condition = values.find("condition"); condition != values.end()) {
        appendInputs(ports.inputs, filterNumbers(condition->second).inputs(values));
    }
    ports.outputs = {
        {.name = "table", .description = "The rows that passed, with all their columns.", .type = ValueType::Table}};
    return ports;
}

std::string FilterKind::refusal(const std::string& input, const std::string& value) const {
    return input == "condition" ? expressionRefusal(value) : std::string();
}

std::unique_ptr<RowOperation> FilterKind::prepare(const Arguments& arguments, const Schema& schema,
                                                  RunContext& context) const {
    const std::string& condition = arguments.text("condition");
    if (condition.empty()) {
        throw Failure("condition", "the condition is empty");
    }
    const std::map<std::string, double> numbers = filterNumbers(condition).values(arguments, schema, context);
    return std::make_unique<FilterOperation>(schema, Condition("condition", condition, schema, numbers),
                                             boundsIn(condition, schema, numbers));
}

std::unique_ptr<Kind> makeFilter() {
    return std::make_unique<FilterKind>();
}

}  // namespace velmorak
