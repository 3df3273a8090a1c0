#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Computes a column from the others.
class FormulaKind : public RowWise {
public:
    std::string name() const override { return "Formula"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace velmorak
