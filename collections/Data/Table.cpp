#include "kinds.h"

#include "shared/ColumnList.h"
#include "shared/FileInputs.h"
#include "shared/FormatOfFile.h"

#include <velmorak/FileFormat.h>

#include <optional>
#include <utility>

namespace velmorak {
namespace {

/// @throws Failure if the file does not have the format that the other files of the list have.
void requireFormat(const std::filesystem::path& file, const FileFormat& format, const FileFormats& formats) {
    const FileFormat* own = formats.recognise(startOf(file));
    if (!own) {
        throw Failure(file.string() + " has no known format");
    }
    if (own != &format) {
        throw Failure("file", file.string() + " is " + own->description() + ", but another file of the list is " +
                                  format.description() + "; read the files of each format with a Table of their own");
    }
}

/// Reads a table of files of any format.
class AnyTableKind : public Source {
public:
    explicit AnyTableKind(const FileFormats& formats) : formats(formats) {}

    std::string name() const override { return "Table"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    bool tellsColumns() const override { return true; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;

private:
    const FileFormat& formatOf(const FileList& list) const;
    const FileFormat* recognised(const std::filesystem::path& file, std::optional<Failure>& failure) const;

    const FileFormats& formats;
};

}  // namespace

std::string AnyTableKind::summary() const {
    return "Reads a table from files of any known format, recognised by their first bytes.";
}

std::string AnyTableKind::notes() const {
    return R"(The rows are those that the kind for the format gives, with its usual settings; see [files of
data](../formats.md). All files of a list must have the same format. `velmorak-run --look FILE` prints the contents of a file.

A text file is read as values separated by commas, with a header; `CsvTable` has settings for others.)";
}

Ports AnyTableKind::ports(const ValueTexts&) const {
    return fileTablePorts({
        fileListInput("File of any format that velmorak-run --look knows"),
        {.name = "object",
         .description = "Path of the table in the file, for example run1/events. Empty: the only one in the file.",
         .type = ValueType::Text},
        columnsInput(),
    });
}

const FileFormat* AnyTableKind::recognised(const std::filesystem::path& file, std::optional<Failure>& failure) const {
    try {
        const FileFormat* format = formats.recognise(startOf(file));
        if (!format && !failure) {
            failure.emplace(file.string() + " has no known format");
        }
        return format;
    } catch (const Failure& thrown) {
        failure = failure ? failure : std::optional<Failure>(thrown);
        return nullptr;
    }
}

/// The first file that can be recognised decides; one that cannot is left to the opener, which may skip it.
const FileFormat& AnyTableKind::formatOf(const FileList& list) const {
    std::optional<Failure> failure;
    for (const ListedFile& file : list.files) {
        if (const FileFormat* format = recognised(file.path, failure)) {
            return *format;
        }
    }
    throw Failure(failure.value());
}

std::unique_ptr<TableReader> AnyTableKind::open(const Arguments& arguments, RunContext& context) const {
    FileList list = filesOf(arguments, context);
    const FileFormat& format = formatOf(list);
    auto opener = format.tableOpener(arguments.text("object"), columnNames("columns", arguments.text("columns")));
    if (!opener) {
        throw Failure("file", list.files.front().path.string() + " is " + format.description() +
                                  ", which has no tables" +
                                  (format.objectKind().empty() ? "" : "; use " + format.objectKind()));
    }
    const auto check = [&all = formats, &format](const std::filesystem::path& file) {
        requireFormat(file, format, all);
    };
    return openFilesOf(std::move(list), checkedOpener(std::move(opener), check), arguments, context);
}

std::vector<std::filesystem::path> AnyTableKind::files(const Arguments& arguments, RunContext& context) const {
    return pathsOf(filesOf(arguments, context));
}

std::unique_ptr<Kind> makeAnyTable(const FileFormats& formats) {
    return std::make_unique<AnyTableKind>(formats);
}

}  // namespace velmorak
