#include "kinds.h"

#include "shared/FileInputs.h"
#include "shared/FormatOfFile.h"

#include "csv/CsvReader.h"

#include <velmorak/Text.h>

#include <utility>

namespace velmorak {

namespace {

char delimiterNamed(const std::string& name) {
    const std::map<std::string, char> delimiters = {
        {"comma", ','}, {"semicolon", ';'}, {"tabulator", '\t'}, {"blanks", ' '}, {"bar", '|'}};
    return delimiters.at(name);
}

/// Rows of each file but the first that the types of the columns are inferred from.
constexpr std::size_t rowsToInferOfMore = 100;

CsvEncoding encodingNamed(const std::string& name) {
    const std::map<std::string, CsvEncoding> encodings = {{"auto", CsvEncoding::Automatic},
                                                          {"UTF-8", CsvEncoding::Utf8},
                                                          {"ISO-8859-1", CsvEncoding::Latin1},
                                                          {"UTF-16", CsvEncoding::Utf16}};
    return encodings.at(name);
}

char thousandsNamed(const std::string& name) {
    const std::map<std::string, char> signs = {
        {"none", '\0'}, {"comma", ','}, {"point", '.'}, {"blank", ' '}, {"apostrophe", '\''}};
    return signs.at(name);
}

CsvOptions optionsOf(const Arguments& arguments) {
    CsvTypes given = csvTypesIn(arguments.text("types"));
    return {.file = {},
            .form = {.delimiter = delimiterNamed(arguments.text("delimiter")), .comment = arguments.text("comment")},
            .hasHeader = arguments.text("header") != "no",
            .isSkipping = arguments.text("errors") == "skip",
            .missing = arguments.text("missing"),
            .types = std::move(given.types),
            .dates = std::move(given.dates),
            .readsInOrder = arguments.text("damaged_files") == "skip",
            .encoding = encodingNamed(arguments.text("encoding")),
            .hasUnits = arguments.text("header") == "names and units",
            .decimal = arguments.text("decimal") == "comma" ? ',' : '.',
            .thousands = thousandsNamed(arguments.text("thousands"))};
}

/// Opens files with the same options. A type that the user gives holds for each file that has the column.
class CsvOpener : public FileOpener {
public:
    CsvOpener(CsvOptions options, std::filesystem::path first) : options(std::move(options)), first(std::move(first)) {}

    FileColumns columnsOf(const std::filesystem::path& file, RunContext& context) const override;

    std::unique_ptr<TableReader> open(const std::filesystem::path& file, const Schema* wanted,
                                      RunContext& context) const override;

    void checkNames(const std::set<std::string>& names) const override;

private:
    const CsvOptions options;
    const std::filesystem::path first;
};

FileColumns CsvOpener::columnsOf(const std::filesystem::path& file, RunContext& context) const {
    CsvOptions own = options;
    own.file = file;
    own.ignoresOtherTypes = true;
    own.readsColumnsOnly = true;
    own.rowsToInfer = file == first ? own.rowsToInfer : rowsToInferOfMore;
    const CsvReader reader(std::move(own), context);
    return {reader.schema(), reader.columnsWithoutValues()};
}

std::unique_ptr<TableReader> CsvOpener::open(const std::filesystem::path& file, const Schema* wanted,
                                             RunContext& context) const {
    CsvOptions own = options;
    own.file = file;
    own.ignoresOtherTypes = wanted != nullptr;
    for (std::size_t i = 0; wanted && i < wanted->size(); ++i) {
        own.types[(*wanted)[i].name] = (*wanted)[i].type;
    }
    return std::make_unique<CsvReader>(std::move(own), context);
}

void CsvOpener::checkNames(const std::set<std::string>& names) const {
    for (const auto& given : options.types) {
        if (!names.contains(given.first)) {
            throw Failure("types", "there is no column \"" + given.first + "\"" +
                                       columnsThere(given.first, {names.begin(), names.end()}));
        }
    }
}

std::vector<InputSpec> formInputs() {
    return {
        {.name = "delimiter",
         .description = "Separator of the fields in a line; blanks: any number of spaces and tabs.",
         .type = ValueType::Choice,
         .value = "comma",
         .choices = {"comma", "semicolon", "tabulator", "blanks", "bar"}},
        {.name = "header",
         .description = "Yes: the first line names the columns. Names and units: the second line has their units. No: "
                        "they are called c1, c2 and so on.",
         .type = ValueType::Choice,
         .value = "yes",
         .choices = {"yes", "no", "names and units"}},
        {.name = "comment",
         .description = "Lines that begin with this text are skipped. Empty: there are no comments.",
         .type = ValueType::Text,
         .value = "#"},
        {.name = "types",
         .description = "Types of columns, for example run: integer, comment: text, begin: date. A date of ISO 8601 "
                        "becomes the seconds since 1970. The type of any other column is inferred from the first 10000 "
                        "rows: integer, real, boolean or text; an integer becomes real if a later row needs it.",
         .type = ValueType::Text},
        {.name = "missing",
         .description = "Text that marks a missing value, besides an empty field; it becomes NaN or an empty text.",
         .type = ValueType::Text,
         .value = "NA"},
        {.name = "decimal",
         .description = "Sign between a number and its fraction.",
         .type = ValueType::Choice,
         .value = "point",
         .choices = {"point", "comma"}},
        {.name = "thousands",
         .description = "Sign between groups of three digits.",
         .type = ValueType::Choice,
         .value = "none",
         .choices = {"none", "comma", "point", "blank", "apostrophe"}},
        {.name = "encoding",
         .description = "Encoding of the text; auto: UTF-8, or UTF-16 if the file begins with its mark.",
         .type = ValueType::Choice,
         .value = "auto",
         .choices = {"auto", "UTF-8", "UTF-16", "ISO-8859-1"}},
        {.name = "errors",
         .description = "A row that cannot be read stops the run (fail), or is skipped, counted and reported "
                        "(skip).",
         .type = ValueType::Choice,
         .value = "fail",
         .choices = {"fail", "skip"}},
    };
}

/// Reads a table from a text file with one row on each line.
class CsvTableKind : public Source {
public:
    explicit CsvTableKind(const FileFormats& formats) : formats(formats) {}

    std::string name() const override { return "CsvTable"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    bool tellsColumns() const override { return true; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;

private:
    const FileFormats& formats;
};

}  // namespace

std::string CsvTableKind::summary() const {
    return "Reads a table from text files with one row on each line, such as CSV.";
}

Ports CsvTableKind::ports(const ValueTexts&) const {
    std::vector<InputSpec> inputs{
        fileListInput("Text file, plain or compressed with gzip, bzip2 or zip; the format is recognised by content")};
    for (InputSpec& input : formInputs()) {
        inputs.push_back(std::move(input));
    }
    return fileTablePorts(std::move(inputs));
}

std::string CsvTableKind::refusal(const std::string& input, const std::string& value) const {
    if (input != "types") {
        return {};
    }
    try {
        csvTypesIn(value);
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
}

std::unique_ptr<TableReader> CsvTableKind::open(const Arguments& arguments, RunContext& context) const {
    FileList list = filesOf(arguments, context);
    auto opener = std::make_shared<CsvOpener>(optionsOf(arguments), list.files.front().path);
    return openFilesOf(std::move(list), refusingOthers(std::move(opener), name(), formats), arguments, context);
}

std::vector<std::filesystem::path> CsvTableKind::files(const Arguments& arguments, RunContext& context) const {
    return pathsOf(filesOf(arguments, context));
}

std::shared_ptr<const FileOpener> csvTableOpener() {
    CsvOptions options;
    options.form.comment = "#";
    options.missing = "NA";
    return std::make_shared<CsvOpener>(std::move(options), std::filesystem::path());
}

std::unique_ptr<Kind> makeCsvTable(const FileFormats& formats) {
    return std::make_unique<CsvTableKind>(formats);
}

}  // namespace velmorak
