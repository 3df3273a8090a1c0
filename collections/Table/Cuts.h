#pragma once

#include <string>
#include <vector>

namespace velmorak {

/// One line of a list of cuts: "name: condition". Without a name the condition is the name.
struct Cut {
    std::string name;
    std::string condition;
};

/// Cuts stand on lines of their own, or with semicolons between them; empty lines are left out. A colon inside of a
/// choice (a ? b : c), in quotes or in brackets begins no condition.
std::vector<Cut> cutsIn(const std::string& text);

}  // namespace velmorak
