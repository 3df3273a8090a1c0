#include "ColumnarTables.h"

#include "shared/ColumnList.h"
#include "shared/FileInputs.h"

#include <arrow/ArrowFile.h>
#include <parquet/ParquetFile.h>

#include <utility>

namespace velmorak {
namespace {

/// What differs between the formats.
struct Columnar {
    const char* format;
    const char* description;
    const char* kind;
    const char* summary;
    const char* notes;
    const char* files;  ///< For the description of the input "file".
    Recognition (*recognise)(const FileStart& start);
    columnar::TableSummary (*look)(const std::filesystem::path& file);
    std::unique_ptr<TableReader> (*open)(const std::filesystem::path& file, const std::vector<std::string>& columns,
                                         const Schema* wanted, RunContext& context);
};

constexpr const char* missingValues = R"(
A missing value is NaN in a column of reals and an empty text in one of texts; a missing list is an empty list. A column
of integers or booleans in which values may be missing is read as reals, with 0 and 1 for booleans; the file says which
ones those are. A list of lists is flattened into one list for each row, with two more that say how it is nested,
`name.count` and `name.row`. The values of a structure become columns with a dot in their names, and a map becomes two
lists, `name.key` and `name.value`.

Columns that cannot be read are left out, with one warning that names them; if `columns` names one, the run fails with the reason.)";

Recognition recogniseParquet(const FileStart& start) {
    return isParquet(start.bytes) ? Recognition::Certain : Recognition::No;
}

Recognition recogniseArrow(const FileStart& start) {
    return isArrowFile(start.bytes) || isArrowStream(start.bytes) ? Recognition::Certain : Recognition::No;
}

constexpr Columnar parquetTables{
    .format = "Parquet",
    .description = "a Parquet file",
    .kind = "ParquetTable",
    .summary = "Reads Parquet files.",
    .notes =
        "See [Parquet files](../parquet.md). Dates and times are reals: seconds since 1970, or of the "
        "day. Decimal numbers are reals, rounded once.\n",
    .files = "Parquet file",
    .recognise = recogniseParquet,
    .look = summariseParquet,
    .open = openParquet};

constexpr Columnar arrowTables{
    .format = "Arrow",
    .description = "an Arrow file",
    .kind = "ArrowTable",
    .summary = "Reads files and streams of Arrow (IPC), also known as Feather 2.",
    .notes =
        "See [Arrow files](../arrow.md). Dates and times are reals: seconds since 1970, or of the day. "
        "Decimal numbers are reals, rounded once.\n",
    .files = "Arrow file or stream",
    .recognise = recogniseArrow,
    .look = summariseArrow,
    .open = openArrow};

class ColumnarOpener : public FileOpener {
public:
    ColumnarOpener(const Columnar& format, std::vector<std::string> columns);

    FileColumns columnsOf(const std::filesystem::path& file, RunContext& context) const override;
    std::unique_ptr<TableReader> open(const std::filesystem::path& file, const Schema* wanted,
                                      RunContext& context) const override;

private:
    const Columnar& format;
    const std::vector<std::string> columns;
};

ColumnarOpener::ColumnarOpener(const Columnar& format, std::vector<std::string> columns)
    : format(format), columns(std::move(columns)) {}

FileColumns ColumnarOpener::columnsOf(const std::filesystem::path& file, RunContext& context) const {
    return {open(file, nullptr, context)->schema()};
}

std::unique_ptr<TableReader> ColumnarOpener::open(const std::filesystem::path& file, const Schema* wanted,
                                                  RunContext& context) const {
    return format.open(file, columns, wanted, context);
}

class ColumnarTableKind : public Source {
public:
    explicit ColumnarTableKind(const Columnar& format) : format(format) {}

    std::string name() const override { return format.kind; }
    std::string summary() const override { return format.summary; }
    std::string notes() const override { return std::string(format.notes) + missingValues; }
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;
    bool tellsColumns() const override { return true; }

private:
    const Columnar& format;
};

std::string ColumnarTableKind::refusal(const std::string& input, const std::string& value) const {
    return input == "columns" ? columnListRefusal(input, value) : std::string();
}

std::vector<std::filesystem::path> ColumnarTableKind::files(const Arguments& arguments, RunContext& context) const {
    return pathsOf(filesOf(arguments, context));
}

Ports ColumnarTableKind::ports(const ValueTexts&) const {
    return fileTablePorts({
        fileListInput(format.files),
        columnsInput(),
    });
}

std::unique_ptr<TableReader> ColumnarTableKind::open(const Arguments& arguments, RunContext& context) const {
    auto opener = std::make_shared<const ColumnarOpener>(format, columnNames("columns", arguments.text("columns")));
    return openFilesOf(filesOf(arguments, context), std::move(opener), arguments, context);
}

class ColumnarFormat : public FileFormat {
public:
    explicit ColumnarFormat(const Columnar& format) : format(format) {}

    std::string name() const override { return format.format; }
    std::string description() const override { return format.description; }
    std::string tableKind() const override { return format.kind; }
    Recognition recognise(const FileStart& start) const override { return format.recognise(start); }
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override;

private:
    const Columnar& format;
};

std::vector<FileObject> ColumnarFormat::objects(const std::filesystem::path& file, RunContext&) const {
    const columnar::TableSummary summary = format.look(file);
    FileObject object{
        .path = {}, .type = "table", .rows = summary.rows, .description = summary.description, .isTable = true};
    for (const auto& [info, complaint] : summary.columns) {
        object.columns.push_back({info, complaint});
    }
    return {object};
}

std::shared_ptr<const FileOpener> ColumnarFormat::tableOpener(const std::string& object,
                                                              const std::vector<std::string>& columns) const {
    if (!object.empty()) {
        throw Failure("object",
                      std::string(format.description) + " has one table without a name; leave the value empty");
    }
    return std::make_shared<const ColumnarOpener>(format, columns);
}

}  // namespace

std::unique_ptr<Kind> makeParquetTable() {
    return std::make_unique<ColumnarTableKind>(parquetTables);
}

std::unique_ptr<Kind> makeArrowTable() {
    return std::make_unique<ColumnarTableKind>(arrowTables);
}

std::unique_ptr<FileFormat> makeParquetFormat() {
    return std::make_unique<ColumnarFormat>(parquetTables);
}

std::unique_ptr<FileFormat> makeArrowFormat() {
    return std::make_unique<ColumnarFormat>(arrowTables);
}

}  // namespace velmorak
