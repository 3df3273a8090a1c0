#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Gives the moments and quantiles of one quantity as numbers.
class StatisticsKind : public Accumulator {
public:
    std::string name() const override { return "Statistics"; }
    std::string summary() const override;
    std::string notes() const override;
    int version() const override { return 2; }
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace velmorak
