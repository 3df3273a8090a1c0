#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Computes a number from an expression of numbers, each of which is an input.
class FunctionKind : public Function {
public:
    std::string name() const override { return "Function"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace velmorak
