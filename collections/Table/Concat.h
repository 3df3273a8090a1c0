#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Puts tables one after the other.
class ConcatKind : public Concatenation {
public:
    std::string name() const override { return "Concat"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::vector<std::unique_ptr<RowOperation>> prepare(const Arguments& arguments, const std::vector<Schema>& schemas,
                                                       RunContext& context) const override;
};

}  // namespace velmorak
