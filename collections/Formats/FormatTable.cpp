#include "FormatTable.h"

#include "shared/ColumnList.h"
#include "shared/FileInputs.h"
#include "shared/OwnTypesOpener.h"

#include <utility>

namespace velmorak {
namespace {

class FormatTableKind : public Source {
public:
    FormatTableKind(FormatTableTexts texts, std::unique_ptr<const FileFormat> format);

    std::string name() const override { return texts.name; }
    std::string summary() const override { return texts.summary; }
    std::string notes() const override { return texts.notes; }
    Ports ports(const ValueTexts& values) const override;
    bool tellsColumns() const override { return true; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;

private:
    const FormatTableTexts texts;
    const std::unique_ptr<const FileFormat> format;
};

FormatTableKind::FormatTableKind(FormatTableTexts texts, std::unique_ptr<const FileFormat> format)
    : texts(std::move(texts)), format(std::move(format)) {}

std::unique_ptr<TableReader> FormatTableKind::open(const Arguments& arguments, RunContext& context) const {
    auto opener = format->tableOpener(arguments.text("object"), columnNames("columns", arguments.text("columns")));
    return openFilesOf(filesOf(arguments, context), std::move(opener), arguments, context);
}

std::vector<std::filesystem::path> FormatTableKind::files(const Arguments& arguments, RunContext& context) const {
    return pathsOf(filesOf(arguments, context));
}

Ports FormatTableKind::ports(const ValueTexts&) const {
    return fileTablePorts({
        fileListInput(texts.files),
        {.name = "object", .description = texts.object, .type = ValueType::Text},
        columnsInput(),
    });
}

class FormatOfTables : public FileFormat {
public:
    explicit FormatOfTables(TableFormat format) : format(std::move(format)) {}

    std::string name() const override { return format.name; }
    std::string description() const override { return format.description; }
    std::string tableKind() const override { return format.kind; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override;

private:
    const TableFormat format;
};

Recognition FormatOfTables::recognise(const FileStart& start) const {
    return format.hasSignature(start) ? Recognition::Certain : Recognition::No;
}

std::vector<FileObject> FormatOfTables::objects(const std::filesystem::path& file, RunContext& context) const {
    return format.list(file, context);
}

std::shared_ptr<const FileOpener> FormatOfTables::tableOpener(const std::string& object,
                                                              const std::vector<std::string>& columns) const {
    return openerWith([open = format.open, object, columns](const std::filesystem::path& file, RunContext& context) {
        return open(file, object, columns, context);
    });
}

}  // namespace

std::unique_ptr<Kind> makeFormatTable(FormatTableTexts texts, std::unique_ptr<const FileFormat> format) {
    return std::make_unique<FormatTableKind>(std::move(texts), std::move(format));
}

std::unique_ptr<FileFormat> makeTableFormat(TableFormat format) {
    return std::make_unique<FormatOfTables>(std::move(format));
}

}  // namespace velmorak
