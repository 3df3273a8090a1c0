#pragma once

#include <velmorak/Expression.h>
#include <velmorak/FunctionObject.h>

#include <vector>

namespace velmorak {

/// Computes a function of one argument at many places, with the parameters that it carries.
/// Understood are codelets "codelet:TITLE:verbatim:jel : 1 : EXPRESSION : NAMES : GRADIENT", where the argument is x[0]
/// and the rest is written as docs/expressions.md says, and the names of the catalogue, with their parameters taken in
/// this order: G (amplitude, mean, sigma), E (amplitude, exponent), P0, P1, ... (coefficients from the constant on),
/// also joined by + and *.
/// Threads: may be called by several threads at once.
class FunctionValues {
public:
    /// @throws Failure with the name of the function where it is not understood, or has not one argument.
    explicit FunctionValues(const FunctionObject& function);

    double operator()(double x) const;
    /// One value for each place, the same as it has alone.
    std::vector<double> operator()(const std::vector<double>& x) const;

private:
    Expression expression;
};

}  // namespace velmorak
