#include "kinds.h"

#include "AidaFile.h"
#include "FileInputs.h"

#include <velmorak/Aida.h>

namespace velmorak {

namespace {

FileList aidaFilesOf(const Arguments& arguments, RunContext& context) {
    if (!arguments.text("file").empty()) {
        return filesOf(arguments, context);
    }
    const std::filesystem::path file = aidaFileOf(arguments, context);
    FileList list;
    list.files.push_back({file.string(), file});
    return list;
}

/// Reads a tuple or cloud of AIDA files.
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
    return "Reads a tuple or cloud of AIDA files as a table.";
}

Ports AidaTableKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = aidaInputs("tuple or cloud", "/run1/events");
    ports.inputs.front() = fileListInput("AIDA file, plain or compressed; the format is recognised by content",
                                         " Empty: the file given with -a on the command line.");
    for (InputSpec& input : fileChainInputs()) {
        ports.inputs.push_back(std::move(input));
    }
    ports.outputs = {
        {.name = "table",
         .description = "The rows of the tuple with its columns, or of the cloud with columns x, y, z and weight.",
         .type = ValueType::Table},
    };
    return ports;
}

std::unique_ptr<TableReader> AidaTableKind::open(const Arguments& arguments, RunContext& context) const {
    const auto openFile = [object = arguments.text("object"), &context](const std::filesystem::path& file,
                                                                        const Schema* /*wanted*/) {
        return openAidaTable(file, object, context);
    };
    return openFilesOf(aidaFilesOf(arguments, context), openFile, arguments, context);
}

std::vector<std::filesystem::path> AidaTableKind::files(const Arguments& arguments, RunContext& context) const {
    return pathsOf(aidaFilesOf(arguments, context));
}

std::unique_ptr<Kind> makeAidaTable() {
    return std::make_unique<AidaTableKind>();
}

}  // namespace velmorak
