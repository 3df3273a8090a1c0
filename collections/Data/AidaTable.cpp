#include "AidaTable.h"

#include "AidaFile.h"

#include <velmorak/Aida.h>

namespace velmorak {

std::string AidaTableKind::summary() const {
    return "Reads a table, a tuple or a cloud of an AIDA file, from front to back.";
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

}  // namespace velmorak
