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
    Ports ports;
    ports.inputs = {
        fileListInput(texts.files),
        {.name = "object", .description = texts.object, .type = ValueType::Text},
        {.name = "columns",
         .description =
             "Names of the columns to read, separated by blanks or commas; a name with other characters in back "
             "quotes. Empty: all columns that can be read.",
         .type = ValueType::Text},
    };
    for (InputSpec& input : fileChainInputs()) {
        ports.inputs.push_back(std::move(input));
    }
    ports.outputs = {{.name = "table", .description = "The rows of the files.", .type = ValueType::Table}};
    return ports;
}

}  // namespace

std::unique_ptr<Kind> makeFormatTable(FormatTableTexts texts, std::unique_ptr<const FileFormat> format) {
    return std::make_unique<FormatTableKind>(std::move(texts), std::move(format));
}

std::shared_ptr<const FileOpener> openerFor(OpenObject open, const std::string& object,
                                            const std::vector<std::string>& columns) {
    return openerWith([open, object, columns](const std::filesystem::path& file, RunContext& context) {
        return open(file, object, columns, context);
    });
}

}  // namespace velmorak
