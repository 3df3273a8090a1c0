#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Keeps the rows for which a condition holds.
class FilterKind : public RowWise {
public:
    std::string name() const override { return "Filter"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace velmorak
