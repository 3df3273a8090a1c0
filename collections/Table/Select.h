#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Keeps, or leaves out, some of a table's columns.
class SelectKind : public RowWise {
public:
    std::string name() const override { return "Select"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace velmorak
