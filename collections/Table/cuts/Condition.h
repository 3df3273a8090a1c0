#pragma once

#include <velmorak/Expression.h>

#include <cstdint>
#include <string>
#include <vector>

namespace velmorak {

/// An expression that is true or false in each row; a number is true if it is neither 0 nor NaN.
class Condition {
public:
    /// @param input of the expression, for messages.
    /// @throws Failure if the expression is invalid, or gives lists or texts.
    Condition(const std::string& input, const std::string& text, const Schema& schema,
              const std::map<std::string, double>& numbers);

    /// @return 1 or 0 for each row.
    std::vector<std::uint8_t> truthIn(const Chunk& chunk) const;
    /// Sets the entries of the columns that are used to true. @param needed by column of the schema.
    void markColumns(std::vector<bool>& needed) const { expression.markColumns(needed); }

private:
    Expression expression;
};

/// Number of rows that are true.
std::size_t countTrue(const std::vector<std::uint8_t>& truth);

/// @return the chunk with only the rows for which keep is 1; columns that are null stay so.
Chunk onlyRows(const Chunk& chunk, const std::vector<std::uint8_t>& keep);

}  // namespace velmorak
