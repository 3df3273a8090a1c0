#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Makes random numbers. Each is a function of seed, row and column alone.
class RandomTableKind : public Source {
public:
    std::string name() const override { return "RandomTable"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    bool tellsColumns() const override { return true; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
};

}  // namespace velmorak
