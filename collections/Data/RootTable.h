#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// RootTable: a tree, ntuple or RNTuple of a ROOT file.
class RootTableKind : public Source {
public:
    std::string name() const override { return "RootTable"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;
    bool tellsColumns() const override { return true; }
};

}  // namespace velmorak
