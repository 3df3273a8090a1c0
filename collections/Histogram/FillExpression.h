#pragma once

#include <velmorak/Expression.h>
#include <velmorak/Kind.h>

namespace velmorak {

/// Quantities and weights of fills, in order; all arrays have count values.
struct FillBatch {
    const double* x = nullptr;
    const double* y = nullptr;        ///< Null for one quantity.
    const double* z = nullptr;        ///< Null for two.
    const double* weights = nullptr;  ///< Null for a weight of 1 each.
    std::size_t count = 0;
};

/// The quantities of a fill: one to three expressions of columns and their weight, evaluated chunk by chunk.
/// Shape:   a list expression gives all its values; a single value applies to all values of the list in its row.
/// Threads: values may be called by several threads at once.
class FillExpression {
public:
    /// Reads the inputs with these names and the input "weight". An empty weight is 1.
    /// @throws Failure if one of them cannot be computed from these columns or is not a number, or if the weight is a
    ///         list and no expression is.
    FillExpression(const Arguments& arguments, const Schema& schema,
                   const std::vector<std::string>& inputs = {"expression"});

    struct Values {
        std::vector<ColumnPtr> coordinates;  ///< As many as inputs, all of one length.
        ColumnPtr weights;                   ///< Null for a weight of 1 each; else as long as they are.

        FillBatch batch() const;
        void save(StateWriter& writer) const;
        /// @param count number of expressions.
        void load(StateReader& reader, std::size_t count);
    };
    /// @throws Failure if a row's lists have different lengths.
    Values values(const Chunk& chunk) const;

    /// Sets the entries of the columns that are used to true. @param needed by column of the schema.
    void markColumns(std::vector<bool>& needed) const;

    /// Number of expressions.
    std::size_t count() const { return parts.size(); }
    /// The expression, followed by its unit in brackets if it is a column whose unit is known.
    const std::string& label(std::size_t coordinate = 0) const { return parts[coordinate].label; }

private:
    struct Factor {
        std::string input;
        Expression expression;
        std::string label;
    };
    std::vector<Factor> parts;
    std::optional<Expression> weight;
    bool hasList = false;
};

/// The inputs that FillExpression reads.
InputSpec expressionInput();
InputSpec weightInput();

}  // namespace velmorak
