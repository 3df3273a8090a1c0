#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Writes a page about the whole run.
class ReportKind : public Function {
public:
    std::string name() const override { return "Report"; }
    std::string summary() const override;
    std::string notes() const override;
    bool isRunReporter() const override { return true; }
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace velmorak
