#include "kinds.h"

#include "AidaFile.h"

#include <velmorak/Aida.h>

namespace velmorak {

namespace {

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

}  // namespace

std::string AidaTableKind::summary() const {
    return "Reads a tuple or cloud of an AIDA file as a table.";
}

Ports AidaTableKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = aidaInputs("tuple or cloud", "/run1/events");
    ports.outputs = {
        {.name = "table",
         .description = "The rows of the tuple with its columns, or of the cloud with columns x, y, z and weight.",
         .type = ValueType::Table},
    };
    return ports;
}

std::unique_ptr<TableReader> AidaTableKind::open(const Arguments& arguments, RunContext& context) const {
    return openAidaTable(aidaFileOf(arguments, context), arguments.text("object"), context);
}

std::vector<std::filesystem::path> AidaTableKind::files(const Arguments& arguments, RunContext& context) const {
    return {aidaFileOf(arguments, context)};
}

std::unique_ptr<Kind> makeAidaTable() {
    return std::make_unique<AidaTableKind>();
}

}  // namespace velmorak
