#pragma once

#include <velmorak/Expression.h>
#include <velmorak/Kind.h>

namespace velmorak {

/// What is filled from a table: an expression and its weight, evaluated chunk by chunk.
/// Shape:   a list expression gives all its values; a weight that is no list holds for all values of its row.
/// Threads: values may be called by several threads at once.
class Quantity {
public:
    /// Reads the inputs "expression" and "weight". An empty weight is 1.
    /// @throws Failure if one of them cannot be computed from these columns or is no number, or if the weight is a list
    ///         and the expression is not.
    Quantity(const Arguments& arguments, const Schema& schema);

    struct Values {
        ColumnPtr x;
        ColumnPtr weights;  ///< Null for a weight of 1 each; else as long as x.
    };
    /// @throws Failure if a row's lists of values and weights have different lengths.
    Values values(const Chunk& chunk) const;

    /// The expression, with the unit in brackets where it is a column whose unit is known.
    const std::string& label() const { return axisLabel; }

private:
    ColumnPtr weightsFor(const Chunk& chunk, const Column& x) const;

    Expression expression;
    std::optional<Expression> weight;
    std::string axisLabel;
};

/// The inputs that Quantity reads.
InputSpec expressionInput();
InputSpec weightInput();

}  // namespace velmorak
