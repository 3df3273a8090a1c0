#pragma once

#include <velmorak/Expression.h>

#include <cstdint>
#include <string>
#include <vector>

namespace velmorak {

/// An expression that is true or false in each row; a number is true when it is neither 0 nor NaN.
class Condition {
public:
    /// @param input that the expression came by.
    /// @throws Failure with the mistake, or when the expression gives lists or texts.
    Condition(const std::string& input, const std::string& text, const Schema& schema,
              const std::map<std::string, double>& numbers);

    /// @return for each row 1 or 0.
    std::vector<std::uint8_t> truthIn(const Chunk& chunk) const;

private:
    Expression expression;
};

/// How many rows are true.
std::size_t countTrue(const std::vector<std::uint8_t>& truth);

/// The chunk with only those rows that keep has a 1 for.
Chunk onlyRows(const Chunk& chunk, const std::vector<std::uint8_t>& keep);

}  // namespace velmorak
