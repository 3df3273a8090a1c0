#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Writes a table, or the numbers of an object, as lines of text. A table is written while it passes, so it may be
/// larger than memory.
class CsvWriterKind : public Accumulator {
public:
    std::string name() const override { return "CsvWriter"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace velmorak
