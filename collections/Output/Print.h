#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Shows values to the user, among the messages of the run and in a text file.
class PrintKind : public Accumulator {
public:
    std::string name() const override { return "Print"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace velmorak
