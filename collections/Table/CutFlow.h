#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Counts the rows that are left after each of several cuts.
class CutFlowKind : public Accumulator {
public:
    std::string name() const override { return "CutFlow"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace velmorak
