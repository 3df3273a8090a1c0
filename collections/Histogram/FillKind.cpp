#include "FillKind.h"

#include "Binning.h"
#include "FillExpression.h"

#include <array>

namespace velmorak {

std::string FillKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "expression" || input == "key" || input == "x" || input == "y" || input == "z" || input == "weight") {
        return expressionRefusal(value);
    }
    if (input == "edges" || input == "keyedges" || input == "xedges" || input == "yedges" || input == "zedges") {
        return edgesRefusal(value);
    }
    return {};
}

std::unique_ptr<Accumulation> FillKind::prepare(const Arguments& arguments, const Schema* schema,
                                                RunContext& context) const {
    if (!schema) {
        throw Failure("table", "nothing is wired");
    }
    return description.prepare(arguments, *schema, context);
}

InputSpec tableInput() {
    return {.name = "table", .description = "Table whose rows are filled.", .type = ValueType::Table};
}

std::vector<InputSpec> quantityInputs(const std::vector<std::string>& meanings) {
    constexpr std::array<const char*, 3> names{"x", "y", "z"};
    std::vector<InputSpec> inputs{tableInput()};
    for (std::size_t i = 0; i < meanings.size(); ++i) {
        InputSpec input = expressionInput();
        input.name = names[i];
        input.description =
            meanings[i] + ": a column or an expression of columns, in their unit. Of a list, all values are filled.";
        inputs.push_back(std::move(input));
    }
    inputs.push_back(weightInput());
    return inputs;
}

}  // namespace velmorak
