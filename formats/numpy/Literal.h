#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::numpy {

/// A value written as in Python, as far as the header of an array needs it.
struct Literal {
    enum class Kind { Nothing, Truth, Integer, Text, Sequence, Dictionary };

    Kind kind = Kind::Nothing;
    std::int64_t integer = 0;  ///< 1 for True.
    std::string text{};
    std::vector<Literal> items{};  ///< Of a list or tuple; of a dictionary, keys and values in turn.

    /// @return the value of a key in a dictionary; null if there is none.
    const Literal* find(std::string_view key) const;
};

/// @throws Failure if the text is anything else.
Literal literalIn(std::string_view text);

}  // namespace velmorak::numpy
