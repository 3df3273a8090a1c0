#pragma once

#include <map>
#include <string>
#include <vector>

namespace velmorak {

/// A number of an expression by which the expression is differentiated.
struct Variable {
    std::string name;
    double value = 0.0;
    double error = 0.0;  ///< The distance over which the expression is expected to change smoothly.
};

/// @param numbers the other numbers of the expression.
/// @return the derivatives of an expression by its variables: central differences, extrapolated to a step of 0 (C. J.
/// F.
///         Ridders, Advances in Engineering Software 4 (1982) 75). At a kink it is the mean of the slopes on both
///         sides; NaN where the expression jumps, is not finite, or is infinitely steep.
/// @throws Failure as Expression does.
std::vector<double> gradientOf(const std::string& expression, const std::map<std::string, double>& numbers,
                               const std::vector<Variable>& variables);

}  // namespace velmorak
