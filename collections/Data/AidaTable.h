#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Reads a tuple or cloud of an AIDA file.
class AidaTableKind : public Source {
public:
    std::string name() const override { return "AidaTable"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    bool tellsColumns() const override { return true; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;
};

}  // namespace velmorak
