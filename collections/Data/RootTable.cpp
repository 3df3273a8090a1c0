#include "kinds.h"

#include "shared/ColumnList.h"
#include "shared/FileInputs.h"
#include "shared/OwnTypesOpener.h"

#include <root/RootFile.h>

#include <utility>

namespace velmorak {
namespace {

/// Reads a tree, ntuple or RNTuple of ROOT files.
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

}  // namespace

std::string RootTableKind::summary() const {
    return "Reads a tree, an ntuple or an RNTuple from ROOT files.";
}

std::string RootTableKind::notes() const {
    return R"(Branches of numbers, texts, arrays, standard containers and split objects become columns; see [ROOT
files](../root.md). An array or a container is a list column; a list of lists is flattened into one list for
each row. Branches of the same name under different parents are distinguished by the names of the parents. An unsigned 64-bit
integer that is too large for a signed one becomes negative.

Columns that cannot be read are left out, with one warning that names them; if `columns` names one, the run fails with the reason.
A file that was not closed is searched record by record, with a warning.)";
}

Ports RootTableKind::ports(const ValueTexts&) const {
    return fileTablePorts(
        {
            fileListInput("ROOT file"),
            {.name = "object",
             .description =
                 "Path of the tree, ntuple or RNTuple in the file, for example run1/events. Empty: the only one "
                 "in the file.",
             .type = ValueType::Text},
            columnsInput(),
        },
        "The entries, with a column for each branch or field.");
}

std::unique_ptr<TableReader> RootTableKind::open(const Arguments& arguments, RunContext& context) const {
    auto opener = rootTableOpener(arguments.text("object"), columnNames("columns", arguments.text("columns")));
    return openFilesOf(filesOf(arguments, context), std::move(opener), arguments, context);
}

std::vector<std::filesystem::path> RootTableKind::files(const Arguments& arguments, RunContext& context) const {
    return pathsOf(filesOf(arguments, context));
}

std::shared_ptr<const FileOpener> rootTableOpener(const std::string& object, const std::vector<std::string>& columns) {
    return openerWith([object, columns](const std::filesystem::path& file, RunContext& context) {
        return openRootTable(file, object, columns, context);
    });
}

std::unique_ptr<Kind> makeRootTable() {
    return std::make_unique<RootTableKind>();
}

}  // namespace velmorak
