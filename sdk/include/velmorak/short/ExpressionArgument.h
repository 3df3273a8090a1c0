#pragma once

#include <velmorak/Expression.h>
#include <velmorak/Kind.h>
#include <velmorak/short/Describe.h>

#include <string>
#include <vector>

namespace velmorak::shortkinds {

inline InputSpec expressionInput(const InputDescription& about) {
    return {.name = about.name,
            .description = about.description,
            .type = ValueType::Text,
            .value = about.value.empty() ? about.name : about.value};
}

/// What is common to parameters that are expressions of columns.
template <ColumnType type, bool isList>
class ExpressionArgument {
public:
    static constexpr bool isExpression = true;
    static InputSpec input(const InputDescription& about) { return expressionInput(about); }

    ExpressionArgument(const std::string& input, const velmorak::Arguments& arguments, const Schema& schema)
        : expression(textOf(input, arguments), schema) {
        if (isList != expression.isList()) {
            throw Failure(input, isList ? "expected a list in each row" : "expected one value in each row, not a list");
        }
        constexpr bool isReal = type == ColumnType::Real;
        if (isReal ? expression.type() == ColumnType::Text : expression.type() != type) {
            throw Failure(input, "expected " + std::string(nameOf(type)) + " values, but the expression is " +
                                     std::string(nameOf(expression.type())));
        }
    }
    void markColumns(std::vector<bool>& needed) const {
        for (const std::size_t column : expression.usedColumns()) {
            needed[column] = true;
        }
    }

protected:
    ColumnPtr valuesIn(const Chunk& chunk) const {
        ColumnPtr values = expression.evaluate(chunk);
        return type == ColumnType::Real ? asReals(values) : values;
    }

private:
    static const std::string& textOf(const std::string& input, const velmorak::Arguments& arguments) {
        if (arguments.text(input).empty()) {
            throw Failure(input, "the expression is empty");
        }
        return arguments.text(input);
    }

    Expression expression;
};

}  // namespace velmorak::shortkinds
