#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Reads a table from a text file with a row on each line.
class CsvTableKind : public Source {
public:
    std::string name() const override { return "CsvTable"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    bool tellsColumns() const override { return true; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;
};

}  // namespace velmorak
