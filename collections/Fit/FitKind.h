#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Fits a function to a histogram, profile or points. The parameters of its model appear as outputs.
class FitKind : public Function {
public:
    std::string name() const override { return "Fit"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace velmorak
