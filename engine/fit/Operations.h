#pragma once

#include "fit/simd/FitKernels.h"

#include <string>
#include <string_view>
#include <vector>

namespace velmorak::fitting {

/// A function or operator of the expression language that a step of its own computes; Program.h lists the functions of
/// one argument.
struct Operation {
    std::string_view name;
    Op op;
    std::size_t arguments;
    bool takesMore;  ///< Any number of arguments from this one on, applied in pairs.
};

/// @return null for an unknown name.
const Operation* findOperation(std::string_view name);

/// @return the names of all functions and shapes that a model may call, for suggestions.
std::vector<std::string> callableNames();

}  // namespace velmorak::fitting
