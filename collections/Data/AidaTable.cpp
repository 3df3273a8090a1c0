#include "AidaTable.h"

#include <velmorak/Aida.h>

namespace velmorak {

namespace {

std::filesystem::path fileOf(const Arguments& arguments, const RunContext& context) {
    const std::string& file = arguments.text("file");
    if (!file.empty())
        return context.inputFile(file);
    std::filesystem::path fromCommandLine = context.commandLineAida();
    if (fromCommandLine.empty())
        throw Failure("file", "there is no file to read: name one here, or give one with -a on the command line");
    return fromCommandLine;
}

}  // namespace

std::string AidaTableKind::summary() const {
    return "Reads a table, a tuple or a cloud of an AIDA file, from front to back.";
}

Ports AidaTableKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "file",
         .description =
             "AIDA file, plain or gzip. A relative name is looked for beside the document, then in the current "
             "folder. Empty: the file given with -a on the command line.",
         .type = ValueType::Text},
        {.name = "object",
         .description =
             "Path of the tuple or cloud in the file, for example /run1/events. Empty: the only one that the "
             "file holds.",
         .type = ValueType::Text},
    };
    ports.outputs = {
        {.name = "table",
         .description = "The rows of the tuple with its columns, or of the cloud with columns x, y, z and weight.",
         .type = ValueType::Table},
    };
    return ports;
}

std::unique_ptr<TableReader> AidaTableKind::open(const Arguments& arguments, RunContext& context) const {
    return openAidaTable(fileOf(arguments, context), arguments.text("object"), context);
}

std::vector<std::filesystem::path> AidaTableKind::files(const Arguments& arguments, RunContext& context) const {
    return {fileOf(arguments, context)};
}

}  // namespace velmorak
