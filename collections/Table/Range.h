#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Keeps the rows between two positions, or every n-th of them.
class RangeKind : public RowWise {
public:
    std::string name() const override { return "Range"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace velmorak
