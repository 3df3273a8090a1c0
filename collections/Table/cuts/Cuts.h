#pragma once

#include <string>
#include <vector>

namespace velmorak {

/// One line of a list of cuts: "name: condition". Without a name the condition is the name.
struct Cut {
    std::string name;
    std::string condition;
};

/// Parses cuts, one a line or separated by semicolons; empty lines are skipped. A colon within a choice (a ? b : c), in
/// quotes or in brackets does not end a name.
std::vector<Cut> cutsIn(const std::string& text);

}  // namespace velmorak
