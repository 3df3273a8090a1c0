#pragma once

#include <velmorak/Expression.h>
#include <velmorak/FunctionObject.h>

#include <vector>

namespace velmorak {

/// Evaluates a FunctionObject of one argument with the parameters that it carries.
/// Supported are codelets "codelet:TITLE:verbatim:jel : 1 : EXPRESSION : NAMES : GRADIENT", whose expression follows
/// docs/expressions.md with x[0] as the argument, and names of the catalogue, joined by + and *, which take parameters
/// in this order: G (amplitude, mean, sigma), E (amplitude, exponent), P0, P1, ... (coefficients from the constant
/// term on).
/// Threads: may be called by several threads at once.
class FunctionValues {
public:
    /// @throws Failure with the name of the function if its codelet is not supported or it has several arguments.
    explicit FunctionValues(const FunctionObject& function);

    double operator()(double x) const;
    /// @return one value for each x, with the same bits as the call for a single x.
    std::vector<double> operator()(const std::vector<double>& x) const;

private:
    Expression expression;
};

}  // namespace velmorak
